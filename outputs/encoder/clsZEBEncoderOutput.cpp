#include "outputs/encoder/clsZEBEncoderOutput.h"

#include <array>
#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "outputs/http/CBase64.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr const char* kSettingsKey = "\\Encoder";
constexpr std::size_t kLongestCommandType = 50;  // characters, with the ":"
constexpr std::int32_t kMetadataEvent = 2;
constexpr std::size_t kMaxProblemCharacters = 200;

// The blanks inside "en -gb" and "gzip , deflate" belong there: servers have been sent them for decades.
constexpr std::string_view kFixedHeaders =
    "Accept: */*\r\n"
    "Accept-Language: en -gb\r\n"
    "Accept-Encoding: gzip , deflate\r\n"
    "User-Agent: Mozilla/4.0 (compatible; MSIE 5.5; Windows NT 5.0)\r\n";

// How servers say no, also under a status that says yes.
constexpr std::array<std::string_view, 8> kRefusals = {
    "will not accept", "invalid pass", "does not exist", "invalid resource",
    "not connected",   "authenticate", "unauthorized",   "<return>0</return>"};

std::string BlanksEncoded(std::string_view text) {
  std::string encoded;
  for (const char c : text) {
    if (c == ' ')
      encoded += "%20";
    else
      encoded += c;
  }
  return encoded;
}

std::string PercentEncoded(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kKept = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
  std::string encoded;
  for (const char byte : bytes) {
    if (kKept.find(byte) != std::string_view::npos) {
      encoded += byte;
      continue;
    }
    const auto value = static_cast<unsigned char>(byte);
    encoded += '%';
    encoded += kDigits[value >> 4];
    encoded += kDigits[value & 15u];
  }
  return encoded;
}

// What the server says in words: the text of its <message> or its page's <b>, else its status line.
std::string MessageOf(const ExchangeResult& result) {
  for (const std::string_view opening : {"<message>", "<b>"}) {
    const std::size_t start = FindIgnoringAsciiCase(result.reply, opening);
    if (start == std::string::npos) continue;
    const std::string_view rest = std::string_view(result.reply).substr(start + opening.size());
    return std::string(FirstCharacters(DecodeLenient(rest.substr(0, rest.find('<'))), kMaxProblemCharacters));
  }
  return result.StatusLine();
}

const Failure kNotAvailable{"encoders of this kind are not available on this platform"};

}  // namespace

EncoderCommand SplitCommand(std::string_view piece) {
  constexpr std::string_view kSeparator = "####";
  if (piece.substr(0, kSeparator.size()) == kSeparator) piece.remove_prefix(kSeparator.size());
  EncoderCommand command{"", std::string(piece)};
  const std::size_t colon = piece.find(':');
  if (colon != std::string_view::npos && CountCharacters(piece.substr(0, colon)) < kLongestCommandType)
    command = {std::string(piece.substr(0, colon)), std::string(piece.substr(colon + 1))};
  if (command.type.empty()) command.type = "TEXT";
  return command;
}

// ---- The contract

bool clsZEBEncoderOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("Encoder.StartOutput");
  control_ = std::move(control);
  ++starts_;
  const Outcome started = StartEncoder();
  problem_ = started.Reason();
  return started.Ok();
}

Outcome clsZEBEncoderOutput::StartEncoder() {
  EncoderAutomation* automation = environment_.encoders;
  switch (settings.EncoderType) {
    case kShoutcast:
      SetStatus(kStatusOK);
      return {};
    case kRealProducer: {
      if (!automation) return kNotAvailable;
      auto made = automation->CreateRealProducer();
      if (!made) return Failure{made.Reason()};
      realProducer_ = std::move(made.Value());
      return {};
    }
    case kAsfEncoder: {
      if (!automation) return kNotAvailable;
      auto made = automation->CreateAsfEncoder();
      if (!made) return Failure{made.Reason()};
      asfEncoder_ = std::move(made.Value());
      return asfEncoder_->LoadASD(settings.ASDFileLocation);
    }
    case kWindowsMediaEncoder7:
      return automation ? FindMediaEncoder(*automation) : Outcome(kNotAvailable);
    default:
      return Failure{"No Encoder type selected"};
  }
}

Outcome clsZEBEncoderOutput::FindMediaEncoder(EncoderAutomation& automation) {
  auto agent = automation.CreateEncoderAgent(settings.WME7ComputerName);
  if (!agent) return Failure{agent.Reason()};
  const std::string wanted = LowerCase(settings.WME7StreamIDName);
  for (const std::string& name : agent.Value()->EncoderNames()) {
    if (LowerCase(name) != wanted) continue;
    auto encoder = agent.Value()->Encoder(name);
    if (!encoder) return Failure{encoder.Reason()};
    mediaEncoder_ = std::move(encoder.Value());
    return {};
  }
  return Failure{"the encoder agent on '" + settings.WME7ComputerName + "' has no encoder '" +
                 settings.WME7StreamIDName + "'"};
}

bool clsZEBEncoderOutput::StopOutput() {
  const Trace trace("Encoder.StopOutput");
  if (auto* client = dynamic_cast<TcpClientControl*>(control_.get())) client->Close();
  control_.reset();
  ++starts_;
  realProducer_.reset();
  asfEncoder_.reset();
  mediaEncoder_.reset();
  SetStatus(kStatusOff);
  return true;
}

std::int32_t clsZEBEncoderOutput::Status() {
  switch (settings.EncoderType) {
    case kRealProducer:
      return realProducer_ && realProducer_->IsEncoding() ? kStatusOK : kStatusOff;
    case kShoutcast:
      return control_ ? clsZEBTemplate::Status() : kStatusOff;
    case kAsfEncoder:
      return asfEncoder_ && asfEncoder_->Started() ? kStatusOK : kStatusOff;
    case kWindowsMediaEncoder7:
      if (!mediaEncoder_) return kStatusOff;
      switch (mediaEncoder_->RunState()) {
        case 1:
          return kStatusStarting;
        case 2:
          return kStatusOK;
        case 3:
          return kStatusPaused;
        case 4:
          return kStatusStopping;
        case 5:
          return kStatusStopped;
        default:
          return kStatusError;
      }
    default:
      return kStatusError;
  }
}

std::string clsZEBEncoderOutput::GetStatusString(std::uint32_t& colour) {
  const std::int32_t status = Status();
  colour = kColourBlack;
  if (const char* text = RunStatusText(status)) return text;
  if (status == kStatusOff || status == kStatusOK || status == kStatusError)
    return clsZEBTemplate::GetStatusString(colour);
  colour = kColourRed;
  return "Unknown";
}

std::string clsZEBEncoderOutput::GetInformationString() const {
  switch (settings.EncoderType) {
    case kRealProducer:
      return "RealProducer";
    case kShoutcast:
      return "SHOUTcast (" + settings.SHOUTCastServerName + ":" +
             std::to_string(settings.SHOUTCastServerPort) + settings.IcecastMount + ")";
    case kAsfEncoder:
      return "Windows Media (" + settings.ASDFileLocation + ")";
    case kWindowsMediaEncoder7:
      return "Windows Media Encoder 7 (" + settings.WME7StreamIDName + ")";
    default:
      return "No Encoder type selected";
  }
}

// ---- Settings

void clsZEBEncoderOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  const Trace trace("Encoder.StoreOutputInformation");
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string k = std::to_string(outputIndex);
  hive.WriteNumber(key, "EncoderType" + k, settings.EncoderType);
  hive.WriteText(key, "SimpleTextFormat" + k, settings.SimpleTextFormat);
  hive.WriteText(key, "SendEmptyStrings" + k, settings.SendEmptyStrings ? "1" : "0");
  hive.WriteText(key, "ASDFileLocation" + k, settings.ASDFileLocation);
  hive.WriteText(key, "WME7ComputerName" + k, settings.WME7ComputerName);
  hive.WriteText(key, "WME7StreamIDName" + k, settings.WME7StreamIDName);
  hive.WriteText(key, "SHOUTCastServerName" + k, settings.SHOUTCastServerName);
  hive.WriteNumber(key, "SHOUTCastServerPort" + k, settings.SHOUTCastServerPort);
  hive.WriteText(key, "SHOUTCastServerPassword" + k, settings.SHOUTCastServerPassword);
  hive.WriteText(key, "CharacterSet" + k, std::string(CharacterSetName(settings.characterSet)));
  hive.WriteText(key, "IcecastMount" + k, settings.IcecastMount);
  hive.WriteText(key, "IcecastUsername" + k, settings.IcecastUsername);
}

void clsZEBEncoderOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  const Trace trace("Encoder.GetOutputInformation");
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string k = std::to_string(outputIndex);
  EncoderSettings read;
  read.EncoderType = hive.ReadNumber(key, "EncoderType" + k, 0);
  read.SimpleTextFormat = hive.ReadText(key, "SimpleTextFormat" + k, read.SimpleTextFormat);
  read.SendEmptyStrings = hive.ReadNumber(key, "SendEmptyStrings" + k, 0) != 0;
  read.ASDFileLocation = hive.ReadText(key, "ASDFileLocation" + k, "");
  read.WME7ComputerName = hive.ReadText(key, "WME7ComputerName" + k, "");
  read.WME7StreamIDName = hive.ReadText(key, "WME7StreamIDName" + k, "");
  read.SHOUTCastServerName = hive.ReadText(key, "SHOUTCastServerName" + k, read.SHOUTCastServerName);
  read.SHOUTCastServerPort = hive.ReadNumber(key, "SHOUTCastServerPort" + k, read.SHOUTCastServerPort);
  read.SHOUTCastServerPassword = hive.ReadText(key, "SHOUTCastServerPassword" + k, "");
  read.characterSet = CharacterSetByName(hive.ReadText(key, "CharacterSet" + k, ""), CharacterSet::kUtf8);
  read.IcecastMount = hive.ReadText(key, "IcecastMount" + k, "");
  if (!read.IcecastMount.empty() && read.IcecastMount.front() != '/')
    read.IcecastMount.insert(read.IcecastMount.begin(), '/');
  read.IcecastUsername = hive.ReadText(key, "IcecastUsername" + k, read.IcecastUsername);
  settings = std::move(read);
}

// ---- Commands

bool clsZEBEncoderOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  const Trace trace("Encoder.UpdateOutput");
  if (settings.EncoderType != kShoutcast && Status() != kStatusOK) {
    trace.ExitAs("the encoder is not running");
    return false;
  }
  try {
    SendCommands(*snapshot);
  } catch (const std::exception& error) {
    SetStatus(kStatusError);
    problem_ = std::string("sending to the encoder failed: ") + error.what();
    ReportException("sending to the encoder", true);
  }
  return Status() == kStatusOK;
}

void clsZEBEncoderOutput::SendCommands(const ServiceSnapshot& snapshot) {
  UploadFileList unused;
  const std::string text =
      ExpandTemplate(settings.SimpleTextFormat, snapshot, settings.SimpleTextFormat, unused);
  const std::uint64_t start = starts_;
  std::string firstProblem;
  bool sent = false;
  for (const std::string& piece : SplitPieces(text)) {
    const EncoderCommand command = SplitCommand(piece);
    if (command.value.empty() && !settings.SendEmptyStrings) continue;
    if (std::exchange(sent, true)) environment_.loop.Wait(kRequestPause);
    if (starts_ != start) return;
    const std::string problem = Send(command.type, command.value);
    if (starts_ != start) return;
    if (firstProblem.empty()) firstProblem = problem;
  }
  if (sent) problem_ = firstProblem;
}

void clsZEBEncoderOutput::SendScriptCommand(const std::string& commandType, const std::string& text) {
  const Trace trace("Encoder.SendScriptCommand");
  try {
    const std::uint64_t start = starts_;
    std::string problem = Send(commandType, text);
    if (starts_ == start) problem_ = std::move(problem);
  } catch (const std::exception& error) {
    SetStatus(kStatusError);
    problem_ = std::string("sending to the encoder failed: ") + error.what();
    ReportException("sending to the encoder", true);
  }
}

// The problem, if there was one.
std::string clsZEBEncoderOutput::Send(const std::string& commandType, const std::string& text) {
  if (settings.EncoderType == kShoutcast) return SendToServer(text);
  Outcome sent;
  if (realProducer_)
    sent = realProducer_->SendRealMediaEvent(kMetadataEvent, text);
  else if (asfEncoder_)
    sent = asfEncoder_->SendScript(commandType, text);
  else if (mediaEncoder_)
    sent = mediaEncoder_->SendScript(0, commandType, text);
  else
    return problem_;  // it never started, and says why
  SetStatus(kStatusOK);
  return sent.Reason();
}

RequestTarget clsZEBEncoderOutput::Target() const {
  return {settings.SHOUTCastServerName, settings.SHOUTCastServerPort, false};
}

std::string clsZEBEncoderOutput::SendToServer(const std::string& text) {
  const std::shared_ptr<Control> held = control_;  // it may be taken away while we wait
  auto* client = dynamic_cast<TcpClientControl*>(held.get());
  if (!client) {
    SetStatus(kStatusError);
    return "there is no socket to send the title with";
  }
  const std::uint64_t start = starts_;
  const RequestTarget target = Target();
  const ExchangeResult result = SendRequest(environment_.loop, *client, target, BuildRequest(text));
  if (starts_ != start) return {};  // stopped meanwhile: its status is that of a stopped output
  if (result.end != ExchangeResult::kSent) {
    SetStatus(result.end == ExchangeResult::kNotClosed ? kStatusError : kStatusConnecting);
    DebugLine("Encoder.SendScriptCommand: ", result.problem);
    return result.problem;
  }
  SetStatus(kStatusOK);
  DebugLine("Encoder.SendScriptCommand: ", ServerText(target), " answered '", result.StatusLine(), "'");
  return ProblemInReply(result, target);
}

std::string clsZEBEncoderOutput::BuildRequest(const std::string& text) const {
  const std::string title = WithoutLineEnds(text);
  std::string request = "GET ";
  if (settings.IcecastMount.empty())
    request += "/admin.cgi?pass=" + WithoutLineEnds(settings.SHOUTCastServerPassword) +
               "&mode=updinfo&song=" + BlanksEncoded(EncodeFor(title, settings.characterSet));
  else
    request += "/admin/metadata?mount=" + PercentEncoded(settings.IcecastMount) +
               "&mode=updinfo&charset=UTF-8&song=" + PercentEncoded(title);
  request += " HTTP/1.1\r\n";
  request += kFixedHeaders;
  request += "Host: " + ServerText(Target()) + "\r\n";
  if (!settings.IcecastMount.empty())
    request += "Authorization: Basic " +
               CBase64::EncodeString(settings.IcecastUsername + ":" + settings.SHOUTCastServerPassword) +
               "\r\n";
  request += "\r\n";
  return request;
}

std::string clsZEBEncoderOutput::ProblemInReply(const ExchangeResult& result, const RequestTarget& target) {
  const std::string server = ServerText(target);
  if (result.reply.empty())
    return server + (result.connectionLost ? " closed the connection without an answer"
                                           : " took the title, but did not answer within a second");
  const int code = result.StatusCode();
  if (code == 0) return server + " is no streaming server: it answered '" + result.StatusLine() + "'";
  bool refused = code >= 300;
  for (const std::string_view words : kRefusals)
    refused = refused || FindIgnoringAsciiCase(result.reply, words) != std::string::npos;
  return refused ? server + " did not take the title: " + MessageOf(result) : std::string();
}

}  // namespace zeb
