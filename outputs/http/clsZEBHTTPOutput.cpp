#include "outputs/http/clsZEBHTTPOutput.h"

#include <utility>

#include "core/SettingFields.h"
#include "diagnostics/hxGeneral.h"
#include "outputs/http/CBase64.h"
#include "outputs/wire/WireCharacters.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr std::int32_t kHttpPort = 80, kHttpsPort = 443;
constexpr const char* kSettingsKey = "\\HTTPRequest";

// As servers in the field have come to expect it.
constexpr std::string_view kFixedHeaders =
    "User-Agent: Mozilla/4.0 (compatible; MSIE 5.5; Windows NT 5.0)\r\n"
    "Accept: */*\r\n"
    "Accept-Language: en-gb,en;q=0.5\r\n"
    "Accept-Encoding: gzip,deflate\r\n"
    "Accept-Charset: ISO-8859-1,utf-8;q=0.7,*;q=0.7\r\n";

bool IsBlank(const std::string& text) {
  return TrimBlanks(text).empty();
}

// A server that takes longer than we listen has the request all the same.
Verdict VerdictOn(const ExchangeResult& result, const RequestTarget& target) {
  const std::string server = ServerText(target);
  if (result.reply.empty())
    return {result.connectionLost ? server + " closed the connection without an answer" : std::string()};
  const int code = result.StatusCode();
  if (code == 0) return {server + " does not speak HTTP: it answered '" + result.StatusLine() + "'", false};
  if (code < 400) return {};
  return {server + " answered '" + result.StatusLine() + "'", StatusMayPass(code)};
}

using S = HTTPSettings;
constexpr SettingRow<S> kRows[] = {
    {.name = "RequestType", .member = &S::RequestType, .entry = {.least = kGetRequest, .most = kPostRequest}},
    {"URL", &S::URL},
    {"SimpleTextFormat", &S::SimpleTextFormat},
    {"ServerName", &S::ServerName},
    {.name = "ServerPort", .member = &S::ServerPort, .storedAs = StoredAs::kNumber, .entry = kPortEntry},
    {"HTTPAuthenticate", &S::HTTPAuthenticate, StoredAs::kNumber},
    {"HTTPUsername", &S::HTTPUsername},
    {"HTTPPassword", &S::HTTPPassword, StoredAs::kText, true},
    {"CharacterSet", &S::characterSet},
    {"UseTLS", &S::UseTLS, StoredAs::kNumber},
    {.name = "EscapeValues", .member = &S::EscapeValues, .entry = kEscapeEntry},
    {"VerifyURL", &S::VerifyURL},
};
constexpr SettingTable<S> kTable = kRows;

}  // namespace

const char* RunStatusText(std::int32_t status) {
  switch (status) {
    case kStatusStarting:
      return "Starting";
    case kStatusPaused:
      return "Paused";
    case kStatusStopping:
      return "Stopping";
    case kStatusStopped:
      return "Stopped";
    default:
      return nullptr;
  }
}

SettingTable<HTTPSettings> HTTPSettingTable() {
  return kTable;
}

// ---- The contract

bool clsZEBHTTPOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("HTTP.StartOutput");
  run_.Next();
  control_ = std::move(control);
  started_ = true;
  problem_.clear();
  SetStatus(kStatusOK);
  return true;
}

bool clsZEBHTTPOutput::StopOutput() {
  const Trace trace("HTTP.StopOutput");
  run_.Next();
  if (auto* client = dynamic_cast<TcpClientControl*>(control_.get())) client->Close();
  control_.reset();
  started_ = false;
  problem_.clear();
  SetStatus(kStatusOff);
  return true;
}

bool clsZEBHTTPOutput::PrepareOutput(const SnapshotPtr&) {
  if (started_ && (Status() == kStatusConnecting || Status() == kStatusError)) SetStatus(kStatusOK);
  return false;
}

bool clsZEBHTTPOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  const Trace trace("HTTP.UpdateOutput");
  if (Status() != kStatusOK) {
    trace.ExitAs("the output is not running");
    return false;
  }
  mayPass_ = true;
  counted_ = false;
  const std::shared_ptr<Control> held = control_;  // it may be taken away while we wait
  auto* client = dynamic_cast<TcpClientControl*>(held.get());
  if (!client) {
    SetStatus(kStatusError);
    problem_ = "there is no socket to send the request with";
    return false;
  }
  UploadFileList unused;
  const std::vector<std::string> pieces = SplitPieces(
      ExpandTemplate(settings.SimpleTextFormat, *snapshot, settings.SimpleTextFormat, unused, Values()));
  const Epoch::Mark mine = run_.Now();
  if (!requests_.Run(environment_.loop, snapshot, pieces.size(), mine,
                     [&](std::size_t i) { return Send(*client, pieces[i]); }))
    return false;
  problem_ = requests_.Problem();
  mayPass_ = requests_.MayPass();
  counted_ = true;
  if (requests_.Taken() > 0) {
    const ValueEncoding values = Values();
    NoteShown(requests_.TakenText(pieces), settings.SimpleTextFormat, settings.SimpleTextFormat,
              values.escape, values.urlEncode);
    shownTitle_ = snapshot->currentItem->ItemName;
  }
  return requests_.Taken() > 0;
}

std::vector<PublicPlace> clsZEBHTTPOutput::PublicPlaces() const {
  if (settings.VerifyURL.empty() || shownTitle_.empty()) return {};
  return {{PublicPlace::Kind::kTitle, settings.VerifyURL, "", shownTitle_}};
}

clsZEBTemplate::Tally clsZEBHTTPOutput::LastTally() const {
  return counted_ ? Tally{requests_.Taken(), requests_.Failed()} : clsZEBTemplate::LastTally();
}

std::string clsZEBHTTPOutput::GetStatusString(std::uint32_t& colour) {
  colour = kColourBlack;
  if (const char* text = RunStatusText(Status())) return text;
  if (Status() != kStatusLoggingOn) return clsZEBTemplate::GetStatusString(colour);
  colour = kColourRed;
  return "Unknown";
}

std::string clsZEBHTTPOutput::GetInformationString() const {
  if (settings.ServerName.empty()) return {};
  return "(" + settings.ServerName + ":" + std::to_string(Target().port) + ")";
}

// ---- Settings

void clsZEBHTTPOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  const Trace trace("HTTP.StoreOutputInformation");
  WriteSettings(environment_.hive, environment_.ServiceKey(serviceNumber) + kSettingsKey,
                std::to_string(outputIndex), kTable, settings);
}

void clsZEBHTTPOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  const Trace trace("HTTP.GetOutputInformation");
  ReadSettings(environment_.hive, environment_.ServiceKey(serviceNumber) + kSettingsKey,
               std::to_string(outputIndex), kTable, settings);
  CheckEscapeWord("HTTP output " + std::to_string(outputIndex), settings.EscapeValues);
}

std::string clsZEBHTTPOutput::SettingsText() const {
  return zeb::SettingsText(kTable, settings);
}

// ---- Requests

ValueEncoding clsZEBHTTPOutput::Values() const {
  return {.urlEncode = true,
          .characterSet = settings.characterSet,
          .escape = EscapeFor(settings.EscapeValues, {}, settings.SimpleTextFormat),
          .oneLine = true};
}

RequestTarget clsZEBHTTPOutput::Target() const {
  const bool usualTlsPort = settings.UseTLS && settings.ServerPort == kHttpPort;
  return {settings.ServerName, usualTlsPort ? kHttpsPort : settings.ServerPort, settings.UseTLS};
}

Verdict clsZEBHTTPOutput::Send(TcpClientControl& control, const std::string& requestText) {
  WarnOfAuthentication();
  const RequestTarget target = Target();
  const Epoch::Mark mine = run_.Now();
  const ExchangeResult result =
      SendRequest(environment_.loop, control, target, BuildRequest(requestText), mine);
  if (!mine.Holds()) return {};  // stopped meanwhile: its status is that of a stopped output
  if (result.end != ExchangeResult::kSent) {
    SetStatus(result.end == ExchangeResult::kNotClosed ? kStatusError : kStatusConnecting);
    DebugLine("HTTP.UpdateOutput: ", result.problem);
    return {result.problem};
  }
  SetStatus(kStatusOK);
  lastReply_ = result.StatusLine();
  DebugLine("HTTP.UpdateOutput: ", ServerText(target), " answered '", lastReply_, "'");
  return VerdictOn(result, target);
}

std::string clsZEBHTTPOutput::BuildRequest(const std::string& requestText) const {
  const bool post = settings.RequestType == kPostRequest;
  // Values are URL-encoded already; what the template has around them is put into their character set.
  const std::string text = EncodeForWire(requestText, settings.characterSet);
  const std::string url = ControlsEncoded(EncodeFor(WithoutControls(settings.URL), settings.characterSet));
  std::string request = post ? "POST " + url : "GET " + url + ControlsEncoded(text);
  request += " HTTP/1.1\r\n";
  request += kFixedHeaders;
  request += "Host: " + HostForHeader(settings.ServerName);
  if (settings.ServerPort != kHttpPort) request += ":" + std::to_string(settings.ServerPort);
  request += "\r\n";
  if (post)
    request +=
        "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " + std::to_string(text.size()) +
        "\r\n";
  if (settings.HTTPAuthenticate && AuthenticationWarning().empty())
    request += "Authorization: Basic " +
               CBase64::EncodeString(settings.HTTPUsername + ":" + settings.HTTPPassword) + "\r\n";
  request += "\r\n";
  if (post) request += text;
  return request;
}

std::string clsZEBHTTPOutput::AuthenticationWarning() const {
  if (!settings.HTTPAuthenticate) return {};
  if (IsBlank(settings.HTTPUsername)) return "The username for HTTP Authentication is blank";
  if (IsBlank(settings.HTTPPassword)) return "The password for HTTP Authentication is blank";
  return {};
}

// Once until it changes: an update may come every few seconds, and nobody may be there to read it.
void clsZEBHTTPOutput::WarnOfAuthentication() {
  std::string warning = AuthenticationWarning();
  if (warning == lastWarning_) return;
  lastWarning_ = std::move(warning);
  if (!lastWarning_.empty()) environment_.person.Show(MessageIcon::kWarning, lastWarning_);
}

}  // namespace zeb
