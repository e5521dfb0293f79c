#include "outputs/http/clsZEBHTTPOutput.h"

#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "outputs/http/CBase64.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Numbers.h"

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

std::string EncodeLineEnds(std::string_view text) {
  std::string line;
  for (const char c : text) {
    if (c == '\n')
      line += "%0A";
    else if (c == '\r')
      line += "%0D";
    else
      line += c;
  }
  return line;
}

bool IsBlank(const std::string& text) {
  return TrimBlanks(text).empty();
}

// What the answer says that the operator should know; empty when all is well. A server that takes longer than
// we listen has the request all the same.
std::string ProblemInReply(const ExchangeResult& result, const RequestTarget& target) {
  const std::string server = ServerText(target);
  if (result.reply.empty())
    return result.connectionLost ? server + " closed the connection without an answer" : std::string();
  const int code = result.StatusCode();
  if (code == 0) return server + " does not speak HTTP: it answered '" + result.StatusLine() + "'";
  return code >= 400 ? server + " answered '" + result.StatusLine() + "'" : std::string();
}

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

// ---- The contract

bool clsZEBHTTPOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("HTTP.StartOutput");
  control_ = std::move(control);
  started_ = true;
  SetStatus(kStatusOK);
  return true;
}

bool clsZEBHTTPOutput::StopOutput() {
  const Trace trace("HTTP.StopOutput");
  if (auto* client = dynamic_cast<TcpClientControl*>(control_.get())) client->Close();
  control_.reset();
  started_ = false;
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
  try {
    SendRequests(*snapshot);
  } catch (const std::exception& error) {
    SetStatus(kStatusError);
    problem_ = std::string("sending the request failed: ") + error.what();
    ReportException("sending the HTTP request", true);
  }
  return Status() == kStatusOK;
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

std::string clsZEBHTTPOutput::PropertiesProblem(std::optional<HTTPRequestType> chosen) {
  return chosen ? std::string() : "You musy choose a Request Type";
}

// ---- Settings

void clsZEBHTTPOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  const Trace trace("HTTP.StoreOutputInformation");
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string k = std::to_string(outputIndex);
  hive.WriteText(key, "RequestType" + k, settings.RequestType == HTTPRequestType::kPost ? "1" : "0");
  hive.WriteText(key, "URL" + k, settings.URL);
  hive.WriteText(key, "SimpleTextFormat" + k, settings.SimpleTextFormat);
  hive.WriteText(key, "ServerName" + k, settings.ServerName);
  hive.WriteNumber(key, "ServerPort" + k, settings.ServerPort);
  hive.WriteNumber(key, "HTTPAuthenticate" + k, settings.HTTPAuthenticate ? 1 : 0);
  hive.WriteText(key, "HTTPUsername" + k, settings.HTTPUsername);
  hive.WriteText(key, "HTTPPassword" + k, settings.HTTPPassword);
  hive.WriteText(key, "CharacterSet" + k, std::string(CharacterSetName(settings.characterSet)));
  hive.WriteNumber(key, "UseTLS" + k, settings.UseTLS ? 1 : 0);
}

void clsZEBHTTPOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  const Trace trace("HTTP.GetOutputInformation");
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string k = std::to_string(outputIndex);
  HTTPSettings read;
  if (LeadingInteger(hive.ReadText(key, "RequestType" + k, "0")) == 1)
    read.RequestType = HTTPRequestType::kPost;
  read.URL = hive.ReadText(key, "URL" + k, "");
  read.SimpleTextFormat = hive.ReadText(key, "SimpleTextFormat" + k, read.SimpleTextFormat);
  read.ServerName = hive.ReadText(key, "ServerName" + k, read.ServerName);
  read.ServerPort = hive.ReadNumber(key, "ServerPort" + k, read.ServerPort);
  read.HTTPAuthenticate = hive.ReadNumber(key, "HTTPAuthenticate" + k, 0) != 0;
  read.HTTPUsername = hive.ReadText(key, "HTTPUsername" + k, "");
  read.HTTPPassword = hive.ReadText(key, "HTTPPassword" + k, "");
  read.characterSet = CharacterSetByName(hive.ReadText(key, "CharacterSet" + k, ""), CharacterSet::kUtf8);
  read.UseTLS = hive.ReadNumber(key, "UseTLS" + k, 0) != 0;
  settings = std::move(read);
}

// ---- Requests

RequestTarget clsZEBHTTPOutput::Target() const {
  const bool usualTlsPort = settings.UseTLS && settings.ServerPort == kHttpPort;
  return {settings.ServerName, usualTlsPort ? kHttpsPort : settings.ServerPort, settings.UseTLS};
}

void clsZEBHTTPOutput::SendRequests(const ServiceSnapshot& snapshot) {
  const std::shared_ptr<Control> held = control_;  // it may be taken away while we wait
  auto* client = dynamic_cast<TcpClientControl*>(held.get());
  if (!client) {
    SetStatus(kStatusError);
    problem_ = "there is no socket to send the request with";
    return;
  }
  UploadFileList unused;
  const std::string text = ExpandTemplate(settings.SimpleTextFormat, snapshot, settings.SimpleTextFormat,
                                          unused, {true, settings.characterSet});
  std::string firstProblem;
  bool first = true;
  for (const std::string& piece : SplitPieces(text)) {
    if (!std::exchange(first, false)) environment_.loop.Wait(kRequestPause);
    if (control_ != held) return;
    const std::string problem = Send(*client, piece);
    if (control_ != held) return;
    if (firstProblem.empty()) firstProblem = problem;
  }
  problem_ = firstProblem;
}

// The problem, if there was one.
std::string clsZEBHTTPOutput::Send(TcpClientControl& control, const std::string& requestText) {
  WarnOfAuthentication();
  const RequestTarget target = Target();
  const std::shared_ptr<Control> held = control_;
  const ExchangeResult result = SendRequest(environment_.loop, control, target, BuildRequest(requestText));
  if (control_ != held) return {};  // stopped meanwhile: its status is that of a stopped output
  if (result.end != ExchangeResult::kSent) {
    SetStatus(result.end == ExchangeResult::kNotClosed ? kStatusError : kStatusConnecting);
    DebugLine("HTTP.UpdateOutput: ", result.problem);
    return result.problem;
  }
  SetStatus(kStatusOK);
  lastReply_ = result.StatusLine();
  DebugLine("HTTP.UpdateOutput: ", ServerText(target), " answered '", lastReply_, "'");
  return ProblemInReply(result, target);
}

std::string clsZEBHTTPOutput::BuildRequest(const std::string& requestText) const {
  const bool post = settings.RequestType == HTTPRequestType::kPost;
  // Values are URL-encoded already; what the template has around them is put into their character set.
  const std::string text = EncodeFor(requestText, settings.characterSet);
  const std::string url = EncodeFor(WithoutLineEnds(settings.URL), settings.characterSet);
  std::string request = post ? "POST " + url : "GET " + url + EncodeLineEnds(text);
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
