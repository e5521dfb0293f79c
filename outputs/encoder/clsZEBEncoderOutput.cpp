#include "outputs/encoder/clsZEBEncoderOutput.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "core/SettingFields.h"
#include "diagnostics/hxGeneral.h"
#include "outputs/http/CBase64.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/PercentEncoding.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr const char* kSettingsKey = "\\Encoder";
constexpr auto kLookInterval = std::chrono::seconds(2);
constexpr std::size_t kMaxProblemCharacters = 200;

// The blanks inside "en -gb" and "gzip , deflate" belong there: servers have been sent them for decades.
constexpr std::string_view kFixedHeaders =
    "Accept: */*\r\n"
    "Accept-Language: en -gb\r\n"
    "Accept-Encoding: gzip , deflate\r\n"
    "User-Agent: Mozilla/4.0 (compatible; MSIE 5.5; Windows NT 5.0)\r\n";

// How servers say no, also under a status that says yes. A source that is not there may come.
struct Refusal {
  std::string_view words;
  bool mayPass = false;
};
constexpr std::array<Refusal, 8> kRefusals = {{{"will not accept"},
                                               {"invalid pass"},
                                               {"does not exist", true},
                                               {"invalid resource"},
                                               {"not connected", true},
                                               {"authenticate"},
                                               {"unauthorized"},
                                               {"<return>0</return>"}}};

bool IsFullEncoding(std::string_view word) {
  return EqualIgnoringAsciiCase(TrimBlanks(word), "full");
}

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

// ---- The contract

bool clsZEBEncoderOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("Encoder.StartOutput");
  control_ = std::move(control);
  started_ = true;
  run_.Next();
  const Epoch::Mark mine = run_.Now();
  const Outcome started = StartEncoder();
  if (!mine.Holds()) return false;
  problem_ = started.Reason();
  if (IsAutomated() && environment_.encoders) BeginLooking();
  return started.Ok();
}

// Waits. What fails on a platform with automation may pass: the computer or the encoder comes up later.
Outcome clsZEBEncoderOutput::StartEncoder() {
  mayPass_ = false;
  if (settings.EncoderType == kShoutcast) {
    mayPass_ = true;
    SetStatus(kStatusOK);
    return {};
  }
  if (!IsAutomated()) return Failure{"choose the encoder's type (EncoderType 1, 2, 4 or 7)"};
  if (!environment_.encoders) return kNotAvailable;
  mayPass_ = true;
  const Epoch::Mark mine = run_.Now();
  const std::shared_ptr<AutomatedEncoder> encoder = encoder_;
  if (Outcome made = encoder->Start(*environment_.encoders, settings); !made) return made;
  const Result<std::int32_t> state = encoder->Look();
  if (mine.Holds()) SetStatus(state ? state.Value() : std::int32_t{kStatusError});
  return state;
}

bool clsZEBEncoderOutput::IsAutomated() const {
  return settings.EncoderType == kRealProducer || settings.EncoderType == kAsfEncoder ||
         settings.EncoderType == kWindowsMediaEncoder7;
}

// Waits. Makes the encoder if there is none, or none any more that answers.
bool clsZEBEncoderOutput::EncoderRuns() {
  if (!IsAutomated() || !started_ || !environment_.encoders) return false;
  const Epoch::Mark mine = run_.Now();
  const std::shared_ptr<AutomatedEncoder> encoder = encoder_;
  Outcome ready;
  if (encoder->Attached()) {
    const Result<std::int32_t> state = encoder->Look();
    if (!mine.Holds()) return false;
    ready = state;
    SetStatus(state ? state.Value() : std::int32_t{kStatusError});
  }
  if (!encoder->Attached() || (!ready && !encoder->Hangs())) ready = StartEncoder();
  if (!mine.Holds()) return false;
  problem_ = ready.Reason();
  mayPass_ = true;
  return ready.Ok() && Status() == kStatusOK;
}

// Nobody tells when an encoder is started, paused or gone.
void clsZEBEncoderOutput::BeginLooking() {
  look_ = environment_.loop.Every(kLookInterval, [this] {
    if (!encoder_->Attached() || encoder_->Busy()) return;
    environment_.loop.Start("looking at an encoder", [this, encoder = encoder_, mine = run_.Now()] {
      const Result<std::int32_t> state = encoder->Look();
      if (mine.Holds() && encoder->Attached()) TakeLook(state);
    });
  });
}

// An encoder that begins to run, or is another one from now on, does not show what it should.
void clsZEBEncoderOutput::TakeLook(const Result<std::int32_t>& state) {
  const std::int32_t before = Status();
  SetStatus(state ? state.Value() : std::int32_t{kStatusError});
  if (Status() == before) return;
  if (!state || before == kStatusError) problem_ = state ? "" : state.Reason();
  if (!state || Status() == kStatusOK)
    if (const auto tell = onShownLost) tell();
}

bool clsZEBEncoderOutput::StopOutput() {
  const Trace trace("Encoder.StopOutput");
  run_.Next();
  watch_.Stop();
  if (auto* client = dynamic_cast<TcpClientControl*>(control_.get())) client->Close();
  control_.reset();
  problem_.clear();
  look_.Stop();
  encoder_->Drop();
  started_ = false;
  SetStatus(kStatusOff);
  return true;
}

std::int32_t clsZEBEncoderOutput::Status() {
  if (settings.EncoderType == kShoutcast) return control_ ? clsZEBTemplate::Status() : kStatusOff;
  if (!IsAutomated()) return kStatusError;
  return encoder_->Attached() ? clsZEBTemplate::Status() : kStatusOff;
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
  WriteSettings(environment_.hive, environment_.ServiceKey(serviceNumber) + kSettingsKey,
                std::to_string(outputIndex), EncoderSettingTable(), settings);
}

void clsZEBEncoderOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  const Trace trace("Encoder.GetOutputInformation");
  ReadSettings(environment_.hive, environment_.ServiceKey(serviceNumber) + kSettingsKey,
               std::to_string(outputIndex), EncoderSettingTable(), settings);
  CheckEscapeWord("Encoder output " + std::to_string(outputIndex), settings.EscapeValues);
  CheckEncodingWord(outputIndex);
  std::string& mount = settings.IcecastMount;
  if (!mount.empty() && mount.front() != '/') mount.insert(mount.begin(), '/');
}

void clsZEBEncoderOutput::CheckEncodingWord(int outputIndex) const {
  const std::string& word = settings.SHOUTCastEncoding;
  if (!TrimBlanks(word).empty() && !IsFullEncoding(word))
    environment_.person.Note("Encoder output " + std::to_string(outputIndex) + ": SHOUTCastEncoding: '" +
                             word + "' is not 'full'; only blanks of a title are encoded");
}

std::string clsZEBEncoderOutput::SettingsText() const {
  return zeb::SettingsText(EncoderSettingTable(), settings);
}

// ---- Commands

bool clsZEBEncoderOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  const Trace trace("Encoder.UpdateOutput");
  if (settings.EncoderType != kShoutcast && !EncoderRuns()) {
    trace.ExitAs("the encoder is not running");
    return false;
  }
  mayPass_ = true;
  UploadFileList unused;
  const ValueEncoding values{.escape = EscapeFor(settings.EscapeValues, {}, settings.SimpleTextFormat),
                             .oneLine = true};
  std::vector<EncoderCommand> commands;
  for (const std::string& piece : SplitPieces(
           ExpandTemplate(settings.SimpleTextFormat, *snapshot, settings.SimpleTextFormat, unused, values))) {
    EncoderCommand command = SplitCommand(piece);
    if (!command.value.empty() || settings.SendEmptyStrings) commands.push_back(std::move(command));
  }
  const Epoch::Mark mine = run_.Now();
  if (!commands_.Run(environment_.loop, snapshot, commands.size(), mine,
                     [&](std::size_t i) { return Send(commands[i]); }))
    return false;
  problem_ = commands_.Problem();
  mayPass_ = commands_.MayPass();
  std::vector<std::string> texts;
  texts.reserve(commands.size());
  for (const EncoderCommand& command : commands) texts.push_back(command.value);
  if (commands_.Taken() > 0) {
    NoteShown(commands_.TakenText(texts), settings.SimpleTextFormat, settings.SimpleTextFormat,
              values.escape);
    shownTitle_ = WithoutControls(texts.back());
  }
  WatchStream();
  return commands_.Taken() > 0;
}

// Its listeners see the last of the texts.
std::vector<PublicPlace> clsZEBEncoderOutput::PublicPlaces() const {
  if (settings.VerifyStreamURL.empty() || shownTitle_.empty()) return {};
  return {{PublicPlace::Kind::kStream, settings.VerifyStreamURL, "", shownTitle_, settings.characterSet,
           !settings.IcecastMount.empty()}};
}

// From the first title on: before it there is nothing to be forgotten.
void clsZEBEncoderOutput::WatchStream() {
  if (settings.IcecastMount.empty() || settings.IcecastCheckSeconds == 0 || watch_.Watching()) return;
  if (settings.EncoderType != kShoutcast || commands_.Taken() == 0) return;
  watch_.Begin(Target(), settings.IcecastMount, std::chrono::seconds(settings.IcecastCheckSeconds), [this] {
    if (const auto tell = onShownLost) tell();
  });
}

void clsZEBEncoderOutput::SendScriptCommand(const std::string& commandType, const std::string& text) {
  const Trace trace("Encoder.SendScriptCommand");
  const Epoch::Mark mine = run_.Now();
  Verdict verdict = Send({commandType, text});
  if (!mine.Holds()) return;
  problem_ = std::move(verdict.problem);
  mayPass_ = verdict.mayPass;
}

Verdict clsZEBEncoderOutput::Send(const EncoderCommand& command) {
  if (settings.EncoderType == kShoutcast) return SendToServer(command.value);
  const std::shared_ptr<AutomatedEncoder> encoder = encoder_;  // the output may go while we wait
  if (!encoder->Attached()) return {problem_, mayPass_};       // it never started, and says why
  const Epoch::Mark mine = run_.Now();
  const Outcome sent = encoder->Send(command);
  if (mine.Holds()) SetStatus(encoder->Hangs() ? kStatusError : kStatusOK);
  return {sent.Reason()};
}

RequestTarget clsZEBEncoderOutput::Target() const {
  return {settings.SHOUTCastServerName, settings.SHOUTCastServerPort, false};
}

Verdict clsZEBEncoderOutput::SendToServer(const std::string& text) {
  const std::shared_ptr<Control> held = control_;  // it may be taken away while we wait
  auto* client = dynamic_cast<TcpClientControl*>(held.get());
  if (!client) {
    SetStatus(kStatusError);
    return {"there is no socket to send the title with", false};
  }
  const Epoch::Mark mine = run_.Now();
  const RequestTarget target = Target();
  const ExchangeResult result = SendRequest(environment_.loop, *client, target, BuildRequest(text), mine);
  if (!mine.Holds()) return {};  // stopped meanwhile: its status is that of a stopped output
  if (result.end != ExchangeResult::kSent) {
    SetStatus(result.end == ExchangeResult::kNotClosed ? kStatusError : kStatusConnecting);
    DebugLine("Encoder.SendScriptCommand: ", result.problem);
    return {result.problem};
  }
  SetStatus(kStatusOK);
  DebugLine("Encoder.SendScriptCommand: ", ServerText(target), " answered '", result.StatusLine(), "'");
  return VerdictOn(result, target);
}

std::string clsZEBEncoderOutput::SongValue(const std::string& title) const {
  const std::string bytes = EncodeFor(title, settings.characterSet);
  return IsFullEncoding(settings.SHOUTCastEncoding) ? PercentEncoded(bytes)
                                                    : ControlsEncoded(BlanksEncoded(bytes));
}

std::string clsZEBEncoderOutput::BuildRequest(const std::string& text) const {
  const std::string title = WithoutControls(text);
  std::string request = "GET ";
  if (settings.IcecastMount.empty())
    request += "/admin.cgi?pass=" + WithoutControls(settings.SHOUTCastServerPassword) +
               "&mode=updinfo&song=" + SongValue(title);
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

Verdict clsZEBEncoderOutput::VerdictOn(const ExchangeResult& result, const RequestTarget& target) {
  const std::string server = ServerText(target);
  if (result.reply.empty())
    return {server + (result.connectionLost ? " closed the connection without an answer"
                                            : " took the title, but did not answer within a second")};
  const int code = result.StatusCode();
  if (code == 0)
    return {server + " is no streaming server: it answered '" + result.StatusLine() + "'", false};
  const auto refusal = std::find_if(kRefusals.begin(), kRefusals.end(), [&](const Refusal& one) {
    return FindIgnoringAsciiCase(result.reply, one.words) != std::string::npos;
  });
  if (refusal == kRefusals.end() && code < 300) return {};
  const bool mayPass = StatusMayPass(code) || (refusal != kRefusals.end() && refusal->mayPass);
  return {server + " did not take the title: " + MessageOf(result), mayPass};
}

}  // namespace zeb
