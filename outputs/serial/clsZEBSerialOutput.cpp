#include "outputs/serial/clsZEBSerialOutput.h"

#include <algorithm>
#include <utility>

#include "core/ProgramSettings.h"
#include "core/SettingFields.h"
#include "diagnostics/hxGeneral.h"
#include "outputs/wire/WireCharacters.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kSlowSendPace = 10ms;
constexpr Duration kDrainLimit = 10s;  // without a byte leaving
constexpr Duration kOpenLimit = 5s;    // of a device on the network
constexpr const char* kSettingsKey = "\\Serial";

std::string DeviceOf(Environment& environment, std::int32_t commPort) {
  std::string device =
      environment.hive.ReadText(environment.settingsRoot, kCommPortDevice + std::to_string(commPort), "");
  return device.empty() ? UsualCommPortDevice(commPort) : device;
}

// Where the control characters begin that end the text.
std::size_t LineEndOf(std::string_view bytes) {
  const auto last = std::find_if(bytes.rbegin(), bytes.rend(),
                                 [](char c) { return static_cast<unsigned char>(c) >= 0x20; });
  return static_cast<std::size_t>(bytes.rend() - last);
}

using S = SerialSettings;
constexpr SettingRow<S> kRows[] = {
    {.name = "CommPort",
     .member = &S::CommPort,
     .storedAs = StoredAs::kNumber,
     .entry = {.least = 1, .most = kMostCommPorts}},
    {"Settings", &S::Settings},
    {.name = "Handshaking",
     .member = &S::Handshaking,
     .storedAs = StoredAs::kNumber,
     .entry = {.least = SerialPortControl::kNoHandshaking, .most = SerialPortControl::kRtsXOn}},
    {"SimpleTextFormat", &S::simpleText},
    {"AppendCharsFormat", &S::append},
    {"AlternateStrings", &S::alternates},
    {"AlternateStringsWhenEmpty", &S::alternatesWhenEmpty},
    {"TravelActivateFormat", &S::TravelActivateFormat},
    {"TravelDeactivateFormat", &S::TravelDeactivateFormat},
    {.name = "MaxNumberChars", .member = &S::MaxNumberChars, .entry = kCountEntry},
    {"UseSlowSend", &S::UseSlowSend},
    {"CharacterSet", &S::characterSet},
    {.name = "EscapeValues", .member = &S::EscapeValues, .entry = kEscapeEntry},
};
constexpr SettingTable<S> kTable = kRows;

}  // namespace

SettingTable<SerialSettings> SerialSettingTable() {
  return kTable;
}

clsZEBSerialOutput::~clsZEBSerialOutput() {
  if (!port_) return;
  port_->onComm = nullptr;
  port_->onLost = nullptr;
}

// ---- Settings

void clsZEBSerialOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  ReadSettings(environment_.hive, environment_.ServiceKey(serviceNumber) + kSettingsKey,
               std::to_string(outputIndex), kTable, settings);
  CheckEscapeWord("Serial output " + std::to_string(outputIndex), settings.EscapeValues);
  simpleTextFormat_ = settings.simpleText;
  device_ = DeviceOf(environment_, settings.CommPort);
  devicePort_ = settings.CommPort;
  SetStatus(kStatusOK);
}

void clsZEBSerialOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  WriteSettings(environment_.hive, environment_.ServiceKey(serviceNumber) + kSettingsKey,
                std::to_string(outputIndex), kTable, settings);
}

std::string clsZEBSerialOutput::SettingsText() const {
  return zeb::SettingsText(kTable, settings) + "device=" + device_ + "\n";
}

// ---- The port

bool clsZEBSerialOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("Serial.StartOutput");
  run_.Next();
  port_ = std::dynamic_pointer_cast<SerialPortControl>(control);
  control_ = std::move(control);
  if (!port_) {
    Fail("this program has no serial ports");
    return false;
  }
  port_->onComm = [this](std::int32_t event, std::string_view data) { OnComm(event, data); };
  port_->onLost = [this] { OnPortLost(); };
  const Outcome opened = OpenPort();
  DebugLine(opened ? "Serial: Port Opened OK" : "Serial: Error opening Port " + opened.Reason());
  return opened.Ok();
}

Outcome clsZEBSerialOutput::OpenPort() {
  const PortPtr port = port_;
  const Epoch::Mark mine = run_.Now();
  Outcome opened = TryToOpen(port, mine);
  if (!mine.Holds()) return Failure{"the output was stopped"};
  if (opened) {
    problem_.clear();
    SetStatus(kStatusOK);
  } else {
    Fail(opened.Reason());
  }
  return opened;
}

SerialPortControl::Line clsZEBSerialOutput::Line() const {
  const bool known = !device_.empty() && devicePort_ == settings.CommPort;
  const std::string device = known ? device_ : DeviceOf(environment_, settings.CommPort);
  return {settings.CommPort, device, settings.Settings, settings.Handshaking};
}

Outcome clsZEBSerialOutput::TryToOpen(const PortPtr& port, const Epoch::Mark& mine) {
  port->SetLine(Line());
  if (Outcome opened = port->Open(); !opened) return opened;
  EventLoop& loop = environment_.loop;
  if (port->Opening() && loop.InTask())
    loop.WaitUntil([&] { return !mine.Holds() || !port->Opening(); }, kOpenLimit);
  if (!mine.Holds() || port->PortOpen()) return {};
  const std::string why = port->LastError();
  port->Close();
  return Failure{why.empty() ? "the port was closed" : why};
}

void clsZEBSerialOutput::Fail(std::string problem) {
  problem_ = std::move(problem);
  SetStatus(kStatusError);
}

bool clsZEBSerialOutput::StopOutput() {
  const Trace trace("Serial.StopOutput");
  run_.Next();
  if (port_) {
    port_->onComm = nullptr;
    port_->onLost = nullptr;
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

// An encoder that was switched off and on again shows nothing until it is sent its text once more.
void clsZEBSerialOutput::OnPortLost() {
  const std::string why = port_->LastError();
  Fail(why.empty() ? "the port was closed" : why);
  DebugLine("Serial: port lost: ", problem_);
  if (const auto tell = onShownLost) tell();
}

bool clsZEBSerialOutput::PrepareOutput(const SnapshotPtr&) {
  const Trace trace("Serial.PrepareOutput");
  if (!port_ || port_->PortOpen()) return false;
  DebugLine("Serial: Port is closed, attempting to open");
  const Outcome opened = OpenPort();
  if (!opened) DebugLine("Serial: failed to open: ", opened.Reason());
  return false;
}

bool clsZEBSerialOutput::FinishOutput(const SnapshotPtr&) {
  const Trace trace("Serial.FinishOutput");
  return false;
}

// ---- Sending

bool clsZEBSerialOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  const Trace trace("Serial.UpdateOutput");
  const auto exitAs = [&trace](const char* reason) {
    trace.ExitAs(reason);
    return false;
  };
  if (!port_ || !port_->PortOpen()) return exitAs("Port closed");
  const Epoch::Mark mine = run_.Now();
  const auto candidates = chooser_.Candidates(settings, *snapshot, LineBreaks::kKept);
  if (!mine.Holds()) return exitAs("the output was stopped");
  if (!candidates) {
    Fail(candidates.Reason());
    return exitAs("a schedule file does not answer");
  }
  if (!port_->PortOpen()) return exitAs("Port closed");  // it went while a file was read
  problem_.clear();
  SetStatus(kStatusOK);
  if (candidates.Value().empty()) return exitAs("no strings to choose from");
  std::string text = chooser_.Pick(candidates.Value());
  if (text.empty()) return exitAs("nothing to send");
  const std::string appended = ConvertHexEscapes(settings.append);
  if (settings.MaxNumberChars > 0) {
    const auto most = static_cast<std::size_t>(settings.MaxNumberChars);
    const std::size_t taken = std::min(most, CountInSet(appended, settings.characterSet));
    text = std::string(CutInSet(text, settings.characterSet, most - taken));
  }
  const Sent sent = Send(*snapshot, text + appended, Purpose::kUpdate);
  if (sent == Sent::kGivenUp) SetTally({.givenUp = 1});
  if (sent == Sent::kWhole)
    NoteShown(text + appended, settings.alternates.empty() ? settings.simpleText : "", settings.simpleText,
              settings.Values(settings.simpleText).escape);
  return sent == Sent::kWhole;
}

bool clsZEBSerialOutput::SendString(const ServiceSnapshot& snapshot, const std::string& text) {
  return Send(snapshot, text, Purpose::kNearEnd) == Sent::kWhole;
}

// One text on its way.
struct clsZEBSerialOutput::SlowSend {
  const ServiceSnapshot& snapshot;
  Purpose purpose;
  Epoch::Mark mine, notCancelled;
  SnapshotPtr seen{};          // the newest items that were looked at, which do not overtake it
  std::size_t characters = 0;  // that have left
  bool givenUp = false, cancelled = false;
};

clsZEBSerialOutput::Sent clsZEBSerialOutput::Send(const ServiceSnapshot& snapshot, const std::string& text,
                                                  Purpose purpose) {
  const Trace trace("Serial.SendString");
  const auto exitAs = [&trace](const char* reason) {
    trace.ExitAs(reason);
    return Sent::kNot;
  };
  const PortPtr port = port_;  // StopOutput may come during a wait
  if (snapshot.serviceNumber < 0) return exitAs("no ParentService");
  if (!port) return exitAs("no CommControl");
  if (!port->PortOpen()) return exitAs("Port Closed");
  const std::string logName = "-Serial-" + PaddedNumber(settings.CommPort, 2);
  if (!snapshot.LoggingPath.empty()) {
    DebugLine("Adding to Log File");
    log_.Append(snapshot, logName, text);
  }
  SlowSend slow{snapshot, purpose, run_.Now(), sending_.Now()};
  const Outcome sent = Transmit(port, text, slow);
  if (!sent) DebugLine("Problem sending string: ", sent.Reason());
  if (slow.givenUp) {
    const std::string note = "Given up after " + std::to_string(slow.characters) + " characters";
    DebugLine(note);
    if (!snapshot.LoggingPath.empty()) log_.Append(snapshot, logName, note);
  }
  if (!slow.mine.Holds()) return Sent::kNot;
  if (!sent) {
    Fail(sent.Reason());
    return Sent::kNot;
  }
  problem_.clear();
  SetStatus(kStatusOK);
  if (!slow.givenUp) return Sent::kWhole;
  return slow.cancelled ? Sent::kNot : Sent::kGivenUp;
}

Outcome clsZEBSerialOutput::Transmit(const PortPtr& port, const std::string& text, SlowSend& slow) {
  const std::string bytes = EncodeForWire(text, settings.characterSet);
  if (settings.UseSlowSend) {
    DebugLine("Slow sending Serial '", text, "'");
    return SendSlowly(port, bytes, text, slow);
  }
  DebugLine("Sending serial '", text, "'");
  if (Outcome sent = port->Output(bytes); !sent) return sent;
  DebugLine("Finished serial send.");
  return Drain(port);
}

Outcome clsZEBSerialOutput::SendSlowly(const PortPtr& port, const std::string& bytes, const std::string& text,
                                       SlowSend& slow) {
  EventLoop& loop = environment_.loop;
  const bool utf8 = settings.characterSet == CharacterSet::kUtf8;
  const std::size_t lineEnd = LineEndOf(bytes);
  for (std::size_t at = 0; at < bytes.size();) {
    if (!slow.givenUp && at < lineEnd && IsOvertaken(slow)) {
      slow.givenUp = true;
      slow.cancelled = !slow.notCancelled.Holds();
      if (at == 0) return {};
      // What has left is a line of its own, so that the next text does not become its end.
      at = lineEnd;
      continue;
    }
    const std::size_t next = utf8 ? SkipCharacters(text, at, 1) : at + 1;
    const MonotonicTime queued = loop.Monotonic();
    if (Outcome sent = port->Output(std::string_view(bytes).substr(at, next - at)); !sent) return sent;
    if (Outcome left = Drain(port); !left) return left;
    if (!slow.givenUp) ++slow.characters;
    const Duration rest = queued + kSlowSendPace - loop.Monotonic();
    if (rest > Duration::zero()) loop.WaitUntil([&] { return !slow.mine.Holds(); }, rest);
    if (!slow.mine.Holds()) {
      slow.givenUp = slow.cancelled = next < bytes.size();
      return {};
    }
    at = next;
  }
  return {};
}

bool clsZEBSerialOutput::IsOvertaken(SlowSend& slow) const {
  if (!slow.notCancelled.Holds()) return true;
  const auto ask = whatWaits;
  if (!ask || slow.purpose == Purpose::kNearEnd) return false;
  const Waiting waiting = ask();
  // Of the travel flag the newest state counts; other cues, and texts, wait for it.
  if (slow.purpose == Purpose::kTravel) return waiting.travel;
  if (waiting.travel || waiting.nearEnd) return true;
  if (!waiting.news || waiting.news == slow.seen) return false;
  slow.seen = waiting.news;
  return ShowsOther(slow.snapshot, *waiting.news);
}

// Items that change nothing in the text do not overtake it, nor do those that there is no text for.
bool clsZEBSerialOutput::ShowsOther(const ServiceSnapshot& now, const ServiceSnapshot& newer) const {
  UploadFileList unused;
  const auto textOf = [&](const ServiceSnapshot& snapshot) {
    return ExpandTemplate(settings.simpleText, snapshot, settings.simpleText, unused,
                          settings.Values(settings.simpleText));
  };
  const std::string text = textOf(newer);
  return !text.empty() && text != textOf(now);
}

Outcome clsZEBSerialOutput::Drain(const PortPtr& port) {
  EventLoop& loop = environment_.loop;
  const std::string number = std::to_string(settings.CommPort);
  while (const std::size_t before = port->OutBufferCount()) {
    if (loop.WaitUntil([&] { return port->OutBufferCount() < before; }, kDrainLimit)) continue;
    // Closing drops what is stuck; the next update opens the port again.
    port->Close();
    return Failure{"port " + number + " takes no more bytes; check its cable and handshaking"};
  }
  if (port->PortOpen()) return {};
  const std::string why = port->LastError();
  return Failure{why.empty() ? "the port was closed during a send" : why};
}

bool clsZEBSerialOutput::SetTravelFlagActivated(const ServiceSnapshot& snapshot) {
  const Trace trace("Serial.SetTravelFlagActivated");
  if (port_) return SendTravelFormat(snapshot, settings.TravelActivateFormat);
  trace.ExitAs("no CommControl");
  return false;
}

bool clsZEBSerialOutput::SetTravelFlagCleared(const ServiceSnapshot& snapshot) {
  const Trace trace("Serial.SetTravelFlagCleared");
  if (port_) return SendTravelFormat(snapshot, settings.TravelDeactivateFormat);
  trace.ExitAs("no CommControl");
  return false;
}

bool clsZEBSerialOutput::SendTravelFormat(const ServiceSnapshot& snapshot, const std::string& format) {
  UploadFileList unused;
  const std::string text = ExpandTemplate(ConvertHexEscapes(format), snapshot, settings.simpleText, unused,
                                          settings.Values(format));
  return Send(snapshot, text, Purpose::kTravel) == Sent::kWhole;
}

}  // namespace zeb
