// clsZEBEncoderOutput: puts the now-playing text into the metadata of an internet audio stream, by way of a
// streaming server or an encoder.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/SettingFields.h"
#include "core/clsZEBTemplate.h"
#include "outputs/encoder/IcecastWatch.h"
#include "outputs/http/RequestExchange.h"
#include "outputs/http/RequestSeries.h"
#include "platform/EncoderAutomation.h"
#include "platform/Epoch.h"
#include "text/Encodings.h"

namespace zeb {

// The codes in the settings; any other number is no encoder.
enum EncoderKind : std::int32_t {
  kRealProducer = 1,
  kShoutcast = 2,
  kAsfEncoder = 4,
  kWindowsMediaEncoder7 = 7
};

struct EncoderSettings {
  std::int32_t EncoderType = 0;
  std::string SimpleTextFormat = "####TEXT:" + std::string(kDefaultSimpleTextFormat);
  bool SendEmptyStrings = false;
  std::string ASDFileLocation;
  std::string WME7ComputerName, WME7StreamIDName;
  std::string SHOUTCastServerName = "127.0.0.1";
  std::int32_t SHOUTCastServerPort = 8000;
  std::string SHOUTCastServerPassword;
  std::string SHOUTCastEncoding;  // "full": the title is percent-encoded; "": only its blanks are
  CharacterSet characterSet = CharacterSet::kUtf8;
  // When set, the title is sent the way that present Icecast servers take it, to this mount point.
  std::string IcecastMount;
  std::string IcecastUsername = "source";
  // How often that server is asked whether the stream began anew and so lost its title, in seconds; 0: never.
  std::int32_t IcecastCheckSeconds = 10;
  std::string EscapeValues;     // a word of text/ValueEscapes.h
  std::string VerifyStreamURL;  // the stream as listeners get it; "": its titles are not looked at
};

SettingTable<EncoderSettings> EncoderSettingTable();

struct EncoderCommand {
  std::string type;
  std::string value;
};
// "TYPE:value", with the ":" among the first 50 characters; anything else is a TEXT command as a whole.
EncoderCommand SplitCommand(std::string_view piece);

class clsZEBEncoderOutput : public clsZEBTemplate, public ScriptCommandOutput {
 public:
  explicit clsZEBEncoderOutput(Environment& environment) : clsZEBTemplate(environment), watch_(environment) {}

  bool StartOutput(std::shared_ptr<Control> control) override;
  bool StopOutput() override;
  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  void SendScriptCommand(const std::string& commandType, const std::string& text) override;
  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  std::int32_t Status() override;
  std::string GetShortTypeDescription() const override { return "Encoder"; }
  std::string GetStatusString(std::uint32_t& colour) override;
  std::string GetInformationString() const override;
  std::string SettingsText() const override;
  bool MayPass() const override { return mayPass_; }
  std::vector<PublicPlace> PublicPlaces() const override;

  // The bytes that bring one title to a streaming server.
  // The title as it stands in the request of a SHOUTcast server.
  std::string SongValue(const std::string& title) const;
  std::string BuildRequest(const std::string& text) const;
  // What the server's answer says of the title that it was sent.
  static Verdict VerdictOn(const ExchangeResult& result, const RequestTarget& target);

  RequestTarget Target() const;

  EncoderSettings settings;

 private:
  void CheckEncodingWord(int outputIndex) const;
  Outcome StartEncoder();
  Outcome FindMediaEncoder(EncoderAutomation& automation);
  Verdict Send(const EncoderCommand& command);
  Verdict SendToServer(const std::string& text);
  void WatchStream();

  std::unique_ptr<RealProducerEncoder> realProducer_;
  std::unique_ptr<AsfEncoder> asfEncoder_;
  std::unique_ptr<WindowsMediaEncoder> mediaEncoder_;
  RequestSeries commands_;
  IcecastWatch watch_;
  Epoch run_;  // from a start to the stop
  bool mayPass_ = true;
  std::string shownTitle_;
};

}  // namespace zeb
