#include "outputs/serial/clsZEBSerialOutput.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "outputs/wire/WireCharacters.h"
#include "outputs/wire/WireLog.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kSlowSendPace = 10ms;
constexpr Duration kDrainLimit = 10s;  // without a byte leaving
constexpr Duration kOpenLimit = 5s;    // of a device on the network
constexpr std::int32_t kHighestPort = 16;
constexpr const char* kSettingsKey = "\\Serial";

std::string DeviceOf(Environment& environment, std::int32_t commPort) {
  const std::string number = std::to_string(commPort);
#ifdef _WIN32
  const std::string byDefault = "COM" + number;
#else
  const std::string byDefault = "/dev/ttyS" + std::to_string(static_cast<std::int64_t>(commPort) - 1);
#endif
  const std::string device =
      environment.hive.ReadText(environment.settingsRoot, "CommPortDevice" + number, byDefault);
  return device.empty() ? byDefault : device;
}

}  // namespace

clsZEBSerialOutput::~clsZEBSerialOutput() {
  if (port_) port_->onComm = nullptr;
}

// ---- Settings

void clsZEBSerialOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string k = std::to_string(outputIndex);
  const auto text = [&](const char* name, std::string_view byDefault) {
    return hive.ReadText(key, name + k, std::string(byDefault));
  };
  CommPort = hive.ReadNumber(key, "CommPort" + k, 1);
  Settings = text("Settings", "9600,n,8,1");
  Handshaking = hive.ReadNumber(key, "Handshaking" + k, 0);
  simpleTextFormat_ = formats.simpleText = text("SimpleTextFormat", kDefaultSimpleTextFormat);
  formats.append = text("AppendCharsFormat", "");
  formats.alternates = text("AlternateStrings", "");
  formats.alternatesWhenEmpty = LeadingInteger(text("AlternateStringsWhenEmpty", "1")) != 0;
  TravelActivateFormat = text("TravelActivateFormat", "TA=1{0D}{0A}");
  TravelDeactivateFormat = text("TravelDeactivateFormat", "TA=0{0D}{0A}");
  MaxNumberChars = LeadingInteger(text("MaxNumberChars", "0"));
  UseSlowSend = LeadingInteger(text("UseSlowSend", "0")) != 0;
  characterSet = CharacterSetByName(text("CharacterSet", ""), CharacterSet::kWindows1252);
  SetStatus(kStatusOK);
}

void clsZEBSerialOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string k = std::to_string(outputIndex);
  hive.WriteNumber(key, "CommPort" + k, CommPort);
  hive.WriteText(key, "Settings" + k, Settings);
  hive.WriteNumber(key, "Handshaking" + k, Handshaking);
  hive.WriteText(key, "SimpleTextFormat" + k, formats.simpleText);
  hive.WriteText(key, "AppendCharsFormat" + k, formats.append);
  hive.WriteText(key, "AlternateStrings" + k, formats.alternates);
  hive.WriteText(key, "AlternateStringsWhenEmpty" + k, formats.alternatesWhenEmpty ? "1" : "0");
  hive.WriteText(key, "TravelActivateFormat" + k, TravelActivateFormat);
  hive.WriteText(key, "TravelDeactivateFormat" + k, TravelDeactivateFormat);
  hive.WriteText(key, "MaxNumberChars" + k, std::to_string(MaxNumberChars));
  hive.WriteText(key, "UseSlowSend" + k, UseSlowSend ? "1" : "0");
  hive.WriteText(key, "CharacterSet" + k, std::string(CharacterSetName(characterSet)));
}

// ---- The port

bool clsZEBSerialOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("Serial.StartOutput");
  try {
    port_ = std::dynamic_pointer_cast<SerialPortControl>(control);
    control_ = std::move(control);
    if (!port_) {
      Fail("this program has no serial ports");
      return false;
    }
    port_->onComm = [this](std::int32_t event, std::string_view data) { OnComm(event, data); };
    const Outcome opened = OpenPort();
    DebugLine(opened ? "Serial: Port Opened OK" : "Serial: Error opening Port " + opened.Reason());
    return opened.Ok();
  } catch (const std::exception& error) {
    Fail(error.what());
    ReportException("opening the serial port", true);
    return false;
  }
}

Outcome clsZEBSerialOutput::OpenPort() {
  const PortPtr port = port_;
  port->SetLine({CommPort, DeviceOf(environment_, CommPort), Settings, Handshaking});
  Outcome opened = port->Open();
  EventLoop& loop = environment_.loop;
  if (opened && port->Opening() && loop.InTask())
    loop.WaitUntil([&port] { return !port->Opening(); }, kOpenLimit);
  if (opened && !port->PortOpen()) {
    const std::string why = port->LastError();
    port->Close();
    opened = Failure{why.empty() ? "the port was closed" : why};
  }
  if (opened) {
    problem_.clear();
    SetStatus(kStatusOK);
  } else {
    Fail(opened.Reason());
  }
  return opened;
}

void clsZEBSerialOutput::Fail(std::string problem) {
  problem_ = std::move(problem);
  SetStatus(kStatusError);
}

bool clsZEBSerialOutput::StopOutput() {
  const Trace trace("Serial.StopOutput");
  if (port_) {
    port_->onComm = nullptr;
    port_->Close();
  }
  port_.reset();
  control_.reset();
  problem_.clear();
  SetStatus(kStatusOff);
  return true;
}

void clsZEBSerialOutput::OnComm(std::int32_t event, std::string_view data) const {
  if (event == kCommReceive)
    DebugLine("Serial.Datareceived: ", DecodeLenient(data));
  else
    DebugLine("RaiseEvent CommError:Serial: ", CommEventText(event));
}

bool clsZEBSerialOutput::PrepareOutput(const SnapshotPtr&) {
  const Trace trace("Serial.PrepareOutput");
  try {
    if (!port_ || port_->PortOpen()) return false;
    DebugLine("Serial: Port is closed, attempting to open");
    const Outcome opened = OpenPort();
    if (!opened) DebugLine("Serial: failed to open: ", opened.Reason());
  } catch (const std::exception& error) {
    Fail(error.what());
    ReportException("opening the serial port", true);
  }
  return false;
}

bool clsZEBSerialOutput::FinishOutput(const SnapshotPtr&) {
  const Trace trace("Serial.FinishOutput");
  return false;
}

// ---- Sending

bool clsZEBSerialOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  try {
    Update(*snapshot);
  } catch (const std::exception& error) {
    Fail(error.what());
    ReportException("updating the serial output", true);
  }
  return Status() == kStatusOK;
}

void clsZEBSerialOutput::Update(const ServiceSnapshot& snapshot) {
  const Trace trace("Serial.UpdateOutput");
  if (!port_ || !port_->PortOpen()) return trace.ExitAs("Port closed");
  const std::vector<std::string> candidates = chooser_.Candidates(formats, snapshot, false);
  if (candidates.empty()) return trace.ExitAs("no strings to choose from");
  std::string text = chooser_.Pick(candidates);
  if (text.empty()) return trace.ExitAs("nothing to send");
  const std::string appended = ConvertHexEscapes(formats.append);
  if (MaxNumberChars > 0) {
    const auto most = static_cast<std::size_t>(MaxNumberChars);
    const std::size_t taken = std::min(most, CountInSet(appended, characterSet));
    text = std::string(CutInSet(text, characterSet, most - taken));
  }
  Send(snapshot, text + appended);
}

bool clsZEBSerialOutput::SendString(const ServiceSnapshot& snapshot, const std::string& text) {
  return Send(snapshot, text);
}

bool clsZEBSerialOutput::Send(const ServiceSnapshot& snapshot, const std::string& text) {
  const Trace trace("Serial.SendString");
  const PortPtr port = port_;  // StopOutput may come during a wait
  const auto exitAs = [&trace](const char* reason) {
    trace.ExitAs(reason);
    return false;
  };
  if (snapshot.serviceNumber < 0) return exitAs("no ParentService");
  if (!port) return exitAs("no CommControl");
  if (!port->PortOpen()) return exitAs("Port Closed");
  if (!snapshot.LoggingPath.empty()) {
    DebugLine("Adding to Log File");
    static_cast<void>(AppendToWireLog(environment_, snapshot, "-Serial-" + PaddedNumber(CommPort, 2), text));
  }
  const std::string bytes = EncodeForWire(text, characterSet);
  if (UseSlowSend) {
    DebugLine("Slow sending Serial '", text, "'");
    return SendSlowly(port, bytes, text);
  }
  DebugLine("Sending serial '", text, "'");
  if (const Outcome sent = port->Output(bytes); !sent) {
    DebugLine("Problem sending string: ", sent.Reason());
    Fail(sent.Reason());
    return false;
  }
  DebugLine("Finished serial send.");
  return Drain(port);
}

bool clsZEBSerialOutput::SendSlowly(const PortPtr& port, const std::string& bytes, const std::string& text) {
  EventLoop& loop = environment_.loop;
  const bool utf8 = characterSet == CharacterSet::kUtf8;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t next = utf8 ? SkipCharacters(text, at, 1) : at + 1;
    const MonotonicTime queued = loop.Monotonic();
    if (const Outcome sent = port->Output(std::string_view(bytes).substr(at, next - at)); !sent) {
      DebugLine("Problem sending string: ", sent.Reason());
      if (port == port_) Fail(sent.Reason());
      return false;
    }
    if (!Drain(port)) return false;
    const Duration left = queued + kSlowSendPace - loop.Monotonic();
    if (left > Duration::zero()) loop.Wait(left);
    at = next;
  }
  return true;
}

bool clsZEBSerialOutput::Drain(const PortPtr& port) {
  EventLoop& loop = environment_.loop;
  while (const std::size_t before = port->OutBufferCount()) {
    if (loop.WaitUntil([&] { return port->OutBufferCount() < before; }, kDrainLimit)) continue;
    // Closing drops what is stuck; the next update opens the port again.
    port->Close();
    const std::string problem =
        "port " + std::to_string(CommPort) + " takes no more bytes; check its cable and handshaking";
    DebugLine("Problem sending string: ", problem);
    if (port == port_) Fail(problem);
    return false;
  }
  if (port->PortOpen()) return true;
  const std::string why = port->LastError();
  if (port == port_) Fail(why.empty() ? "the port was closed during a send" : why);
  return false;
}

bool clsZEBSerialOutput::SetTravelFlagActivated(const ServiceSnapshot& snapshot) {
  const Trace trace("Serial.SetTravelFlagActivated");
  if (port_) return SendTravelFormat(snapshot, TravelActivateFormat);
  trace.ExitAs("no CommControl");
  return false;
}

bool clsZEBSerialOutput::SetTravelFlagCleared(const ServiceSnapshot& snapshot) {
  const Trace trace("Serial.SetTravelFlagCleared");
  if (port_) return SendTravelFormat(snapshot, TravelDeactivateFormat);
  trace.ExitAs("no CommControl");
  return false;
}

bool clsZEBSerialOutput::SendTravelFormat(const ServiceSnapshot& snapshot, const std::string& format) {
  UploadFileList unused;
  return SendString(snapshot,
                    ExpandTemplate(ConvertHexEscapes(format), snapshot, formats.simpleText, unused));
}

// ---- The property dialog

std::string CheckSerialProperties(std::string_view commPort, std::string_view settings) {
  const std::int32_t port = LeadingInteger(commPort);
  if (port < 1 || port > kHighestPort) return "You must enter a Com Port number from 1 to 16";
  if (TrimBlanks(settings).empty()) return "You must enter a set of Serial Settings such as '9600,n,8,1'";
  return {};
}

}  // namespace zeb
