#include "outputs/dab/clsZEBDABOutput.h"

#include <utility>

#include "core/SettingFields.h"
#include "diagnostics/hxGeneral.h"
#include "outputs/labels/LabelWords.h"
#include "outputs/wire/WireCharacters.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kStateLimit = 3s;
constexpr Duration kConnectLimit = 0s;  // deliberate: the wait ends at its first check
constexpr Duration kAnswerLimit = 3s;   // for the server to take a label or refuse it
constexpr std::int32_t kHighestTcpPort = 65535;
constexpr const char* kSettingsKey = "\\DAB";
constexpr const char* kNoControlObject = "no Control Object";
using Client = DABClientControl;

using S = DABSettings;
constexpr SettingRow<S> kRows[] = {
    {"ServerName", &S::ServerName},
    {.name = "ServerPort", .member = &S::ServerPort, .entry = kPortEntry},
    {"ServiceName", &S::ServiceName},
    {"ServicePassword", &S::ServicePassword, StoredAs::kText, true},
    {.name = "PollSeconds", .member = &S::PollSeconds, .entry = kCountEntry},
    {"SimpleTextFormat", &S::simpleText},
    {"AppendCharsFormat", &S::append},
    {"DefaultText", &S::DefaultText},
    {"AlternateStrings", &S::alternates},
    {"AlternateStringsWhenEmpty", &S::alternatesWhenEmpty},
    {.name = "MaxNumberChars", .member = &S::MaxNumberChars, .entry = kCountEntry},
    {"CharacterSet", &S::characterSet},
    {.name = "EscapeValues", .member = &S::EscapeValues, .entry = kEscapeEntry},
};
constexpr SettingTable<S> kTable = kRows;

}  // namespace

SettingTable<DABSettings> DABSettingTable() {
  return kTable;
}

clsZEBDABOutput::~clsZEBDABOutput() {
  if (client_) client_->onLost = nullptr;
}

// ---- Settings

void clsZEBDABOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  ReadSettings(environment_.hive, environment_.ServiceKey(serviceNumber) + kSettingsKey,
               std::to_string(outputIndex), kTable, settings);
  CheckEscapeWord("DAB output " + std::to_string(outputIndex), settings.EscapeValues);
  simpleTextFormat_ = settings.simpleText;
  SetStatus(kStatusOK);
}

void clsZEBDABOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  WriteSettings(environment_.hive, environment_.ServiceKey(serviceNumber) + kSettingsKey,
                std::to_string(outputIndex), kTable, settings);
}

std::string clsZEBDABOutput::SettingsText() const {
  return zeb::SettingsText(kTable, settings);
}

std::string clsZEBDABOutput::Detail() const {
  return CleanForFileName(settings.ServiceName);
}

std::string clsZEBDABOutput::GetInformationString() const {
  return (settings.ServerName.empty() ? "no server set" : settings.ServerName) + " (" + Detail() + ")";
}

std::uint16_t clsZEBDABOutput::PortNumber() const {
  const std::int32_t port = LeadingInteger(settings.ServerPort);
  return static_cast<std::uint16_t>(port >= 1 && port <= kHighestTcpPort ? port : 0);
}

// ---- State

void clsZEBDABOutput::Fail(std::string problem) {
  problem_ = std::move(problem);
  SetStatus(kStatusError);
}

bool clsZEBDABOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("DAB.StartOutput");
  run_.Next();
  client_ = std::dynamic_pointer_cast<DABClientControl>(control);
  control_ = std::move(control);
  problem_.clear();
  if (!client_) {
    Fail("this program has no DAB client");
    trace.ExitAs(kNoControlObject);
    return false;
  }
  client_->onLost = [this] { OnConnectionLost(); };
  if (client_->CurrentState() != Client::kClosed) {
    const bool same = client_->CurrentState() == Client::kLoggedOn &&
                      client_->Server() == settings.ServerName && client_->Port() == PortNumber() &&
                      client_->Service() == settings.ServiceName;
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
  DebugLine("Closing Connection to ", settings.ServerName);
  run_.Next();
  if (client_) {
    client_->onLost = nullptr;
    client_->Close();
  }
  client_.reset();
  control_.reset();
  problem_.clear();
  SetStatus(kStatusOff);
  return true;
}

// A server that was restarted has no label until it is sent one.
void clsZEBDABOutput::OnConnectionLost() {
  Fail(client_->LastError());
  DebugLine("DAB: connection lost: ", problem_);
  if (const auto tell = onShownLost) tell();
}

bool clsZEBDABOutput::WaitForState(std::int32_t state, Duration limit) {
  const Epoch::Mark mine = run_.Now();
  environment_.loop.WaitUntil(
      [this, state, &mine] {
        if (!mine.Holds() || !client_) return true;
        const std::int32_t now = client_->CurrentState();
        // A connection that has failed will not get any further.
        return state == Client::kClosed ? now == state : now >= state || now == Client::kClosed;
      },
      limit);
  return mine.Holds() && client_;
}

bool clsZEBDABOutput::PrepareOutput(const SnapshotPtr&) {
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
  DebugLine(client_->Connect(settings.ServerName, PortNumber()) ? "Connected OK" : "Failed to Connect");
}

void clsZEBDABOutput::LoginToDABServer() {
  WriteDebugLine("Started DAB.LoginToDABServer", 5, LineKind::kStarted);
  if (!client_ || client_->CurrentState() < Client::kConnected) {
    DebugLine("Exit as not connected");
    return;
  }
  client_->LogOn(settings.ServiceName, settings.ServicePassword);
  // The spelling is what log readers look for.
  WriteDebugLine("Finised DAB.LoginToDABServer", 5, LineKind::kFinished);
}

// ---- Sending

bool clsZEBDABOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  const Trace trace("DAB.UpdateOutput");
  const auto exitAs = [&trace](const char* reason) {
    trace.ExitAs(reason);
    return false;
  };
  if (!client_ || client_->CurrentState() != Client::kLoggedOn) {
    NoteNotLoggedOn();
    return exitAs("not logged on");
  }
  const Epoch::Mark mine = run_.Now();
  auto found = chooser_.Candidates(settings, *snapshot, LineBreaks::kTakenOut);
  if (!mine.Holds()) return exitAs("the output was stopped");
  if (!found) {
    Fail(found.Reason());
    return exitAs("a schedule file does not answer");
  }
  if (client_->CurrentState() != Client::kLoggedOn) return exitAs("not logged on");  // lost meanwhile
  problem_.clear();
  SetStatus(kStatusOK);
  std::vector<std::string>& candidates = found.Value();
  const bool byDefault = candidates.empty();
  if (byDefault) {
    UploadFileList unused;
    std::string text = WithoutLineBreaks(ExpandTemplate(settings.DefaultText, *snapshot, settings.simpleText,
                                                        unused, settings.Values(settings.DefaultText)));
    if (!text.empty()) candidates.push_back(std::move(text));
  }
  if (candidates.empty()) return exitAs("no strings to choose from");
  std::string text = chooser_.Pick(candidates);
  if (text.empty()) return exitAs("nothing to send");
  const std::string label = LabelOf(*snapshot, std::move(text));
  if (!SendLabel(*snapshot, label)) return false;
  const std::string& made = byDefault ? settings.DefaultText : settings.simpleText;
  NoteShown(label, byDefault || settings.alternates.empty() ? made : "", settings.simpleText,
            settings.Values(made).escape);
  return true;
}

void clsZEBDABOutput::NoteNotLoggedOn() {
  if (!client_) return;  // stopped, or it never started and has said why
  const std::int32_t state = client_->CurrentState();
  std::string why = client_->LastError();
  if (state == Client::kConnecting)
    why = settings.ServerName + " does not answer";
  else if (state == Client::kLoggingOn)
    why = settings.ServerName + ": no answer to the log-on";
  else if (why.empty())
    why = settings.ServerName + ": not logged on yet";
  Fail(std::move(why));
  if (state == Client::kConnecting) SetStatus(kStatusConnecting);
}

std::string clsZEBDABOutput::LabelOf(const ServiceSnapshot& snapshot, std::string text) const {
  UploadFileList unused;
  text += ExpandTemplate(ConvertHexEscapes(settings.append), snapshot, settings.simpleText, unused,
                         settings.Values(settings.append));
  text = WithoutLineBreaks(KeepToSet(text, settings.characterSet));
  std::string_view label = text;
  if (const std::int32_t most = LeadingInteger(settings.MaxNumberChars); most > 0)
    label = CutInSet(label, settings.characterSet, static_cast<std::size_t>(most));
  // A server refuses what no label holds, and the old text would stay.
  return std::string(FittingLabel(label));
}

bool clsZEBDABOutput::SendLabel(const ServiceSnapshot& snapshot, const std::string& label) {
  if (!snapshot.LoggingPath.empty()) {
    DebugLine("Adding to Log File");
    log_.Append(snapshot, "-DAB-(" + Detail() + ")", label);
  }
  const auto client = client_;
  DebugLine("Sending DLS '", label, "'");
  client->SendLabel(label);
  DebugLine("Finished DLS send");
  const Epoch::Mark mine = run_.Now();
  const auto onLine = [&] { return client->CurrentState() == Client::kLoggedOn; };
  const bool answered = environment_.loop.WaitUntil(
      [&] { return !mine.Holds() || client->UnansweredLabels() == 0 || !onLine(); }, kAnswerLimit);
  if (!mine.Holds()) return false;
  std::string why = client->LastError();
  if (!answered)
    why = settings.ServerName + " has not answered to the label";
  else if (!onLine() && why.empty())
    why = settings.ServerName + ": the connection was closed";
  if (why.empty()) return true;
  Fail(std::move(why));
  return false;
}

bool clsZEBDABOutput::FinishOutput(const SnapshotPtr&) {
  const Trace trace("DAB.FinishOutput");
  return false;
}

}  // namespace zeb
