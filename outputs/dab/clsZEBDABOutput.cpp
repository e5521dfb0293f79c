#include "outputs/dab/clsZEBDABOutput.h"

#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "outputs/wire/WireCharacters.h"
#include "outputs/wire/WireLog.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kStateLimit = 3s;
constexpr Duration kConnectLimit = 0s;  // deliberate: the wait ends at its first check
constexpr std::int32_t kHighestTcpPort = 65535;
constexpr const char* kSettingsKey = "\\DAB";
constexpr const char* kNoControlObject = "no Control Object";
using Client = DABClientControl;

}  // namespace

// ---- Settings

void clsZEBDABOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string k = std::to_string(outputIndex);
  const auto text = [&](const char* name, std::string_view byDefault) {
    return hive.ReadText(key, name + k, std::string(byDefault));
  };
  ServerName = text("ServerName", "");
  ServerPort = text("ServerPort", "4000");
  ServiceName = text("ServiceName", "");
  ServicePassword = text("ServicePassword", "");
  PollSeconds = LeadingInteger(text("PollSeconds", "20"));
  simpleTextFormat_ = formats.simpleText = text("SimpleTextFormat", kDefaultSimpleTextFormat);
  formats.append = text("AppendCharsFormat", "");
  DefaultText = text("DefaultText", "");
  formats.alternates = text("AlternateStrings", "");
  formats.alternatesWhenEmpty = LeadingInteger(text("AlternateStringsWhenEmpty", "1")) != 0;
  MaxNumberChars = text("MaxNumberChars", "");
  characterSet = CharacterSetByName(text("CharacterSet", ""), CharacterSet::kUtf8);
  SetStatus(kStatusOK);
}

void clsZEBDABOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string k = std::to_string(outputIndex);
  const auto write = [&](const char* name, const std::string& text) { hive.WriteText(key, name + k, text); };
  write("ServerName", ServerName);
  write("ServerPort", ServerPort);
  write("ServiceName", ServiceName);
  write("ServicePassword", ServicePassword);
  write("PollSeconds", std::to_string(PollSeconds));
  write("SimpleTextFormat", formats.simpleText);
  write("AppendCharsFormat", formats.append);
  write("DefaultText", DefaultText);
  write("AlternateStrings", formats.alternates);
  write("AlternateStringsWhenEmpty", formats.alternatesWhenEmpty ? "1" : "0");
  write("MaxNumberChars", MaxNumberChars);
  write("CharacterSet", std::string(CharacterSetName(characterSet)));
}

std::string clsZEBDABOutput::Detail() const {
  return CleanForFileName(ServiceName);
}

std::string clsZEBDABOutput::GetInformationString() const {
  return ServerName + " (" + Detail() + ")";
}

std::uint16_t clsZEBDABOutput::PortNumber() const {
  const std::int32_t port = LeadingInteger(ServerPort);
  return static_cast<std::uint16_t>(port >= 1 && port <= kHighestTcpPort ? port : 0);
}

// ---- State

// A label that was refused shows as soon as the server has said so, since sending does not wait for it.
std::int32_t clsZEBDABOutput::Status() {
  const std::int32_t status = clsZEBTemplate::Status();
  return status == kStatusOK && client_ && !client_->LastError().empty() ? kStatusError : status;
}

std::vector<clsZEBTemplate::Problem> clsZEBDABOutput::Problems() const {
  if (client_ && !client_->LastError().empty()) return {{"", client_->LastError()}};
  return clsZEBTemplate::Problems();
}

bool clsZEBDABOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("DAB.StartOutput");
  client_ = std::dynamic_pointer_cast<DABClientControl>(control);
  control_ = std::move(control);
  problem_.clear();
  if (!client_) {
    problem_ = "this program has no DAB client";
    SetStatus(kStatusError);
    trace.ExitAs(kNoControlObject);
    return false;
  }
  if (client_->CurrentState() != Client::kClosed) {
    const bool same = client_->CurrentState() == Client::kLoggedOn && client_->Server() == ServerName &&
                      client_->Port() == PortNumber() && client_->Service() == ServiceName;
    if (same) {
      DebugLine("Already Connected");
    } else {
      DebugLine("Closing existing connection to ", client_->Server());
      client_->Close();
    }
  }
  return true;
}

bool clsZEBDABOutput::StopOutput() {
  const Trace trace("DAB.StopOutput");
  DebugLine("Closing Connection to ", ServerName);
  if (client_) client_->Close();
  client_.reset();
  control_.reset();
  problem_.clear();
  SetStatus(kStatusOff);
  return true;
}

bool clsZEBDABOutput::WaitForState(std::int32_t state, Duration limit) {
  environment_.loop.WaitUntil(
      [this, state] {
        if (!client_) return true;
        const std::int32_t now = client_->CurrentState();
        // A connection that has failed will not get any further.
        return state == Client::kClosed ? now == state : now >= state || now == Client::kClosed;
      },
      limit);
  return client_ != nullptr;
}

bool clsZEBDABOutput::PrepareOutput(const SnapshotPtr&) {
  try {
    return Prepare();
  } catch (const std::exception& error) {
    problem_ = error.what();
    SetStatus(kStatusError);
    ReportException("connecting to the DAB server", true);
    return false;
  }
}

bool clsZEBDABOutput::Prepare() {
  const Trace trace("DAB.PrepareOutput");
  const auto noControl = [&trace] {
    trace.ExitAs(kNoControlObject);
    return false;
  };
  if (!client_) return noControl();
  if (client_->CurrentState() == Client::kClosing) {
    DebugLine("Connection is closing");
    if (!WaitForState(Client::kClosed, kStateLimit)) return noControl();
  }
  if (client_->CurrentState() == Client::kClosed) {
    DebugLine("Connection is closed");
    ConnectToDABServer();
    if (!WaitForState(Client::kConnected, kConnectLimit)) return noControl();
  }
  if (client_->CurrentState() == Client::kConnecting) {
    DebugLine("Connection is connecting");
    if (!WaitForState(Client::kConnected, kStateLimit)) return noControl();
  }
  if (client_->CurrentState() == Client::kConnected) {
    DebugLine("Connection is connected");
    LoginToDABServer();
    if (!WaitForState(Client::kLoggedOn, kStateLimit)) return noControl();
  }
  if (client_->CurrentState() == Client::kLoggingOn) {
    DebugLine("Connection is logging on");
    if (!WaitForState(Client::kLoggedOn, kStateLimit)) return noControl();
  }
  if (client_->CurrentState() == Client::kLoggedOn) DebugLine("Connection is logged on");
  return client_->CurrentState() == Client::kLoggedOn;
}

void clsZEBDABOutput::ConnectToDABServer() {
  const Trace trace("DAB.ConnectToDABServer");
  if (!client_) return trace.ExitAs(kNoControlObject);
  DebugLine(client_->Connect(ServerName, PortNumber()) ? "Connected OK" : "Failed to Connect");
}

void clsZEBDABOutput::LoginToDABServer() {
  WriteDebugLine("Started DAB.LoginToDABServer", 5, LineKind::kStarted);
  if (!client_ || client_->CurrentState() < Client::kConnected) {
    DebugLine("Exit as not connected");
    return;
  }
  client_->LogOn(ServiceName, ServicePassword);
  // The spelling is what log readers look for.
  WriteDebugLine("Finised DAB.LoginToDABServer", 5, LineKind::kFinished);
}

// ---- Sending

bool clsZEBDABOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  try {
    Update(*snapshot);
  } catch (const std::exception& error) {
    problem_ = error.what();
    SetStatus(kStatusError);
    ReportException("updating the DAB label", true);
  }
  return Status() == kStatusOK;
}

void clsZEBDABOutput::Update(const ServiceSnapshot& snapshot) {
  const Trace trace("DAB.UpdateOutput");
  if (!client_ || client_->CurrentState() != Client::kLoggedOn) {
    const std::int32_t state = client_ ? client_->CurrentState() : std::int32_t{Client::kClosed};
    problem_ =
        ServerName + (state == Client::kLoggingOn ? ": no answer to the log-on"
                                                  : ": not logged on yet; the next update tries again");
    // While a connection is being made nothing is wrong yet.
    SetStatus(state == Client::kClosed && client_ && client_->LastError().empty() ? kStatusConnecting
                                                                                  : kStatusError);
    if (Status() == kStatusConnecting) problem_.clear();
    return trace.ExitAs("not logged on");
  }
  problem_.clear();
  SetStatus(kStatusOK);
  std::vector<std::string> candidates = chooser_.Candidates(formats, snapshot, true);
  UploadFileList unused;
  if (candidates.empty()) {
    std::string text = WithoutLineBreaks(ExpandTemplate(DefaultText, snapshot, formats.simpleText, unused));
    if (!text.empty()) candidates.push_back(std::move(text));
  }
  if (candidates.empty()) return trace.ExitAs("no strings to choose from");
  std::string label = chooser_.Pick(candidates);
  if (label.empty()) return trace.ExitAs("nothing to send");
  label += ExpandTemplate(ConvertHexEscapes(formats.append), snapshot, formats.simpleText, unused);
  label = WithoutLineBreaks(KeepToSet(label, characterSet));
  if (const std::int32_t most = LeadingInteger(MaxNumberChars); most > 0)
    label = std::string(CutInSet(label, characterSet, static_cast<std::size_t>(most)));
  SendLabel(snapshot, label);
}

void clsZEBDABOutput::SendLabel(const ServiceSnapshot& snapshot, const std::string& label) {
  if (!snapshot.LoggingPath.empty()) {
    DebugLine("Adding to Log File");
    static_cast<void>(AppendToWireLog(environment_, snapshot, "-DAB-(" + Detail() + ")", label));
  }
  const auto client = client_;  // StopOutput may have come during the wait
  if (!client) return;
  DebugLine("Sending DLS '", label, "'");
  client->SendLabel(label);
  DebugLine("Finished DLS send");
}

bool clsZEBDABOutput::FinishOutput(const SnapshotPtr&) {
  const Trace trace("DAB.FinishOutput");
  return false;
}

// ---- The property dialog

std::string CheckDABProperties(std::string_view simpleTextFormat, std::string_view maxNumberChars) {
  if (simpleTextFormat.find_first_of("\r\n") != std::string_view::npos)
    return std::string(kNoLineBreaksInLabels);
  if (LeadingInteger(maxNumberChars) < 0 || LeadingInteger(maxNumberChars) > kMaxLabelCharacters)
    return "The maximum number of characters must be from 1 to 128";
  return {};
}

}  // namespace zeb
