// clsZEBEncoderOutput: puts the now-playing text into the metadata of an internet audio stream, by way of a
// streaming server or an encoder.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/clsZEBTemplate.h"
#include "outputs/encoder/AutomatedEncoder.h"
#include "outputs/encoder/EncoderSettings.h"
#include "outputs/encoder/IcecastWatch.h"
#include "outputs/http/RequestExchange.h"
#include "outputs/http/RequestSeries.h"
#include "platform/Epoch.h"

namespace zeb {

class clsZEBEncoderOutput : public clsZEBTemplate, public ScriptCommandOutput {
 public:
  explicit clsZEBEncoderOutput(Environment& environment)
      : clsZEBTemplate(environment),
        encoder_(std::make_shared<AutomatedEncoder>(environment.loop)),
        watch_(environment) {}

  bool StartOutput(std::shared_ptr<Control> control) override;
  bool StopOutput() override;
  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  void SendScriptCommand(const std::string& commandType, const std::string& text) override;
  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  // Of an encoder that is driven by automation: as it was when it was last asked, some seconds ago.
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
  bool IsAutomated() const;
  Outcome StartEncoder();
  bool EncoderRuns();
  void BeginLooking();
  void TakeLook(const Result<std::int32_t>& state);
  Verdict Send(const EncoderCommand& command);
  Verdict SendToServer(const std::string& text);
  void WatchStream();

  std::shared_ptr<AutomatedEncoder> encoder_;  // also held by tasks that call it
  Timer look_;
  RequestSeries commands_;
  IcecastWatch watch_;
  Epoch run_;             // from a start to the stop
  bool started_ = false;  // from StartOutput to StopOutput
  bool mayPass_ = true;
  std::string shownTitle_;
};

}  // namespace zeb
