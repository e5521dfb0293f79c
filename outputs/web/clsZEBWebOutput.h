// clsZEBWebOutput: publishes pages and the pictures that they show on a web server by FTP.
//
// Pages are sent under ".tmp" names and moved into place after all of them have arrived, so that a failure
// leaves the server's previous pages. One connection serves an update. Everything that can block runs on a
// worker thread, so that a server that hangs holds up this output only.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "outputs/file/PairOutput.h"
#include "platform/FtpSession.h"

namespace zeb {

inline constexpr std::int32_t kStatusSourceProblem = 6, kStatusUploadProblem = 7, kStatusConnectProblem = 8;

struct WebSettings {
  std::string FTPServerName;
  std::int32_t FTPServerPort = 21;
  std::string FTPUsername, FTPPassword;
  bool FTPUseProxy = false;
  std::string FTPProxyName;
  std::int32_t FTPProxyPort = 21;
  bool FTPPassiveMode = true;
  std::int32_t FTPTimeoutSeconds = 30;  // of each step
  bool FTPUseTLS = false;
  std::string FTPCaFile;  // relative to the data folder; "": the system's authorities
};

class clsZEBWebOutput : public PairOutput {
 public:
  using PairOutput::PairOutput;

  bool StartOutput(std::shared_ptr<Control> control) override;
  bool StopOutput() override;  // an upload under way is cancelled
  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  bool FinishOutput(const SnapshotPtr& snapshot) override;

  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  std::string GetShortTypeDescription() const override { return "WEB"; }
  std::string GetStatusString(std::uint32_t& colour) override;
  std::vector<Problem> Problems() const override;

  // In a task; false also while there is no connection.
  bool DestinationFileExists(const std::string& serverPath);
  int NumberDeleteFiles() const { return static_cast<int>(deleteFiles_.size()); }
  // The number must be within 1 to NumberDeleteFiles (else std::out_of_range); "": nothing to delete.
  const std::string& DeleteFileName(int number) const {
    return deleteFiles_.at(static_cast<std::size_t>(number) - 1);
  }
  const std::string& LastErrorText() const { return lastError_; }

  WebSettings settings;
  std::function<void(int percent)> onProgress;  // of the file that is being sent; on the loop's thread

 private:
  struct Page {
    std::size_t pair;
    std::string destination;
  };
  struct Additional {
    std::string local, server;
  };
  using Step = std::function<bool(FtpSession& session)>;

  void Update(const ServiceSnapshot& snapshot);
  bool ProcessPair(std::size_t pair, const clsFileParameters& parameters, const ServiceSnapshot& snapshot);
  bool SendPage(std::size_t pair, const clsFileParameters& parameters, const std::string& temp);
  void NoteAdditional(const std::string& local, const std::string& serverFolder);
  void SendAdditional(const Additional& file);
  void PlacePage(const Page& page);
  bool Connect();
  bool GiveUpConnecting(std::string text);
  bool TryStep(const Step& step);
  bool Upload(const std::string& local, const std::string& server);
  bool Replace(const std::string& fromName, const std::string& toName);
  bool Remove(const std::string& pathName);
  void Close();
  std::string Response() const;
  void Fail(std::int32_t status, std::string text);
  FtpTarget Target() const;

  std::shared_ptr<FtpSession> session_;  // null: not connected
  bool reconnected_ = false;             // in this update
  bool abandoned_ = false;               // no connection is to be had any more in this update
  int generation_ = 0;                   // of the pairs, when the update began
  std::string stepProblem_;              // of the last step, when the server said nothing
  std::string lastError_, additionalProblem_;
  std::vector<Page> sent_;
  std::vector<Additional> additional_;
  std::vector<std::string> deleteFiles_;
  std::shared_ptr<std::atomic<bool>> cancel_ = std::make_shared<std::atomic<bool>>(false);
};

// The property dialog, without the drawing.
std::string UpdateRulesSummary(const clsFileParameters& pair);
struct WebOutputCheck {
  std::string message;  // "" when all is well
  bool warning = true;  // else an information box
};
WebOutputCheck CheckWebOutput(int pairs, const std::string& server, const std::string& port,
                              const std::string& user, const std::string& password, bool useProxy,
                              const std::string& proxyName, const std::string& proxyPort);

}  // namespace zeb
