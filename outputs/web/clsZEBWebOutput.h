// clsZEBWebOutput: publishes pages and the pictures that they show on a web server by FTP.
//
// Pages are sent under ".tmp" names and moved into place after all of them have arrived, so that a failure
// leaves the server's previous pages. One connection serves an update, and the next ones when it is kept.
// Everything that can block runs on a worker thread, so that a server that hangs holds up this output only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "outputs/file/CopyNotes.h"
#include "outputs/file/PairOutput.h"
#include "outputs/web/WebServer.h"
#include "outputs/web/WebSettings.h"
#include "outputs/web/WebUpload.h"
#include "templates/TemplateStore.h"

namespace zeb {

class clsZEBWebOutput : public PairOutput {
 public:
  // `templates` is shared by all outputs that use template files, `names` by all outputs of the program; an
  // output without the latter knows its own only.
  clsZEBWebOutput(Environment& environment, std::shared_ptr<TemplateStore> templates,
                  std::shared_ptr<PublishedNames> names = std::make_shared<PublishedNames>())
      : PairOutput(environment, std::move(names)), templates_(std::move(templates)) {}

  bool StartOutput(std::shared_ptr<Control> control) override;
  bool StopOutput() override;  // an upload under way is cancelled
  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  bool FinishOutput(const SnapshotPtr& snapshot) override;
  void Cancel() override;
  // A person gives the upload up that is under way: it has failed, and is tried again as after any failure.
  void CancelByUser();

  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  void NoteNumber(int serviceNumber, int outputIndex) override;
  std::string SettingsText() const override;
  std::string GetShortTypeDescription() const override { return "WEB"; }
  std::string GetStatusString(std::uint32_t& colour) override;
  std::vector<Problem> Problems() const override;
  std::optional<int> ProgressPercent() const override { return progress_; }

  // In a task; false also while there is no connection.
  bool DestinationFileExists(const std::string& serverPath);
  int NumberDeleteFiles() const;
  // The number must be within 1 to NumberDeleteFiles (else std::out_of_range); "": nothing to delete.
  const std::string& DeleteFileName(int number) const;
  const std::string& LastErrorText() const { return lastError_; }

  WebSettings settings;
  std::function<void(int percent)> onProgress;  // of the file that is being sent; on the loop's thread

 private:
  WebOrder OrderFor(const SnapshotPtr& snapshot);
  void KeepResults(const WebUpload& run, const WebOrder& order);
  void KeepMovedPages(const std::vector<MovedPage>& moved);
  bool Repeats(const SnapshotPtr& snapshot) const;

  std::shared_ptr<TemplateStore> templates_;
  WebServer server_{environment_, lane_};
  Timer keepTimer_;                 // while the connection is kept
  std::shared_ptr<WebUpload> run_;  // from an update to its end
  bool cancelledByUser_ = false;    // it
  std::optional<int> progress_;     // of the file that is being sent
  std::string lastError_;           // the status text of the statuses 7 and 8

  // What the last run left to do:
  SnapshotPtr lastSnapshot_;
  std::optional<Epoch::Mark> pairsMark_;  // of the pairs that the last run was about
  std::set<std::size_t> failedPages_;
  std::vector<AdditionalFile> failedAdditional_;
  std::vector<Problem> additionalProblems_;
  CopyNotes copyNotes_;                // of those that may not be published
  std::vector<MovedPage> movedPages_;  // remembered in the settings too, for a restart
  std::string movedPagesKey_, movedPagesName_;
};

}  // namespace zeb
