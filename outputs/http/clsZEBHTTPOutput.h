// clsZEBHTTPOutput: tells a web server about each update with hand-built HTTP requests over the window's TCP
// client control.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/SettingFields.h"
#include "core/clsZEBTemplate.h"
#include "outputs/http/RequestExchange.h"
#include "outputs/http/RequestSeries.h"
#include "platform/Epoch.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Encodings.h"

namespace zeb {

// Beyond those that all outputs have.
enum RunStatus : std::int32_t {
  kStatusStarting = 9,
  kStatusPaused = 10,
  kStatusStopping = 11,
  kStatusStopped = 12
};
// The texts of "Starting" to "Stopped"; null for any other status.
const char* RunStatusText(std::int32_t status);

// The codes in the settings; any other number is GET.
enum HTTPRequestType : std::int32_t { kGetRequest = 0, kPostRequest = 1 };

struct HTTPSettings {
  std::int32_t RequestType = kGetRequest;
  std::string URL;  // the path on the server
  std::string SimpleTextFormat =
      "?a=<ZEB_NOW_ARTISTS>&t=<ZEB_NOW_ITEMNAME>&l=<ZEB_NOW_CARTARTISTSHREF>&p=<ZEB_NOW_PICTUREFILENAME>";
  std::string ServerName = "127.0.0.1";
  std::int32_t ServerPort = 80;
  bool HTTPAuthenticate = false;
  std::string HTTPUsername, HTTPPassword;
  CharacterSet characterSet = CharacterSet::kUtf8;
  bool UseTLS = false;
  std::string EscapeValues;  // a word of text/ValueEscapes.h
  std::string VerifyURL;     // where the public sees the item's title; "": it is not looked at
};

SettingTable<HTTPSettings> HTTPSettingTable();

class clsZEBHTTPOutput : public clsZEBTemplate {
 public:
  using clsZEBTemplate::clsZEBTemplate;

  bool StartOutput(std::shared_ptr<Control> control) override;
  bool StopOutput() override;
  // A server that failed at the last update may be back: the status is OK again until it fails.
  bool PrepareOutput(const SnapshotPtr& snapshot) override;
  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  std::string GetShortTypeDescription() const override { return "HTTP"; }
  std::string GetStatusString(std::uint32_t& colour) override;
  std::string GetInformationString() const override;
  std::string SettingsText() const override;
  bool MayPass() const override { return mayPass_; }
  Tally LastTally() const override;
  std::vector<PublicPlace> PublicPlaces() const override;

  const std::string& LastReply() const { return lastReply_; }  // the last answer's status line
  // The bytes of one request.
  std::string BuildRequest(const std::string& requestText) const;

  RequestTarget Target() const;

  HTTPSettings settings;

 private:
  Verdict Send(TcpClientControl& control, const std::string& requestText);
  std::string AuthenticationWarning() const;
  void WarnOfAuthentication();
  ValueEncoding Values() const;

  bool started_ = false;
  RequestSeries requests_;
  Epoch run_;  // from a start to the stop
  bool mayPass_ = true;
  bool counted_ = false;  // the last run was not cut short, so the requests' counts are its tally
  std::string lastWarning_;
  std::string lastReply_;
  std::string shownTitle_;
};

}  // namespace zeb
