// WebUpload: one run of a web output: pages are made and sent under ".tmp" names, the pictures that they show
// are sent, and then each page is moved into place. Its results say how it went.
//
// Made by the output for one update, which holds it until the update is finished; Run and Finish wait, in the
// update's task. Cancel may come at any time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/ServiceSnapshot.h"
#include "core/Shown.h"
#include "outputs/file/MediaRules.h"
#include "outputs/file/PublishedNames.h"
#include "outputs/file/clsFileParameters.h"
#include "outputs/web/ServerFiles.h"
#include "templates/TemplateStore.h"

namespace zeb {

inline constexpr std::int32_t kStatusSourceProblem = 6, kStatusUploadProblem = 7, kStatusConnectProblem = 8;

struct AdditionalFile {
  std::string local, server;
};

// What is to be done.
struct WebOrder {
  struct Page {
    std::size_t pair;  // position in the output's list, from 0
    clsFileParameters parameters;
    bool isDue = true;
  };
  SnapshotPtr snapshot;
  std::shared_ptr<TemplateStore> templates;
  FtpTarget target;
  std::vector<Page> pages;
  std::vector<AdditionalFile> additional;  // left from an earlier run
  std::vector<std::string> listed;         // local files to go beside the first page
  std::vector<MovedPage> movedPages;       // to be put back before all
  bool isRepetition = false;               // of an update: only what failed then
  bool copyAdditional = false;             // those that the pages name
  bool alwaysCopy = false;
  MediaRules media;  // for additional files; its data folder is what relative names start from
  std::shared_ptr<PublishedNames> names;
  std::function<void(int percent)> onProgress;  // of the file that is being sent
  // Told each status as it comes, with the last error's text.
  std::function<void(std::int32_t status, const std::string& text)> onStatus;
};

class WebUpload {
 public:
  WebUpload(Environment& environment, WorkLane& lane, WebServer& server, WebOrder order);

  void Run();
  void Finish();  // removes what Run left over
  void Cancel();
  bool Cancelled() const { return cancelled_; }

  // The results:
  std::map<std::size_t, std::string> pages;  // each page that was tried: its problem, "" when it is published
  std::map<std::size_t, Shown::Page> shown;  // each page that was published
  std::map<std::string, std::string> additional;  // the failures, by server name: the reason
  std::vector<AdditionalFile> failedAdditional;
  // Those that may not be published, by server name: the reason; "" for those that were all right.
  std::map<std::string, std::string> refused;
  std::string problem;                   // of all of it: nothing goes to this server; "" when something does
  std::vector<std::string> deleteFiles;  // by pair: a ".tmp" whose final rename failed
  std::vector<MovedPage> movedPages;     // old pages that could not be put back
  bool tookListed = false;               // the listed files were dealt with

 private:
  struct Prepared;
  using Step = std::function<Outcome(bool again)>;

  bool Connect();
  void PutBackMovedPages();
  void ProcessPage(const WebOrder::Page& page);
  Prepared Prepare(const clsFileParameters& pair) const;
  void SendPage(const WebOrder::Page& page, const Prepared& prepared);
  void DeleteTemp(const std::string& temp);
  void NoteAdditional(const std::string& local, const std::string& serverFolder);
  bool SendAdditional(const AdditionalFile& file);
  bool SendMedia(const AdditionalFile& file, const std::shared_ptr<FileReader>& media);
  bool Refuse(const AdditionalFile& file, const std::string& reason);
  std::string WhyNotOverPage(const AdditionalFile& file, const Result<bool>& exists) const;
  Result<bool> IsOnServer(const AdditionalFile& file);
  bool AdditionalFails(const AdditionalFile& file, const std::string& text);
  void PlacePage(const WebOrder::Page& page);
  // `send` uploads to `path`.
  bool Upload(const std::string& path, const std::function<Outcome()>& send);
  bool TryStep(const Step& step);
  void RemoveUnfinished();
  bool OnGoing() const { return problem.empty() && !cancelled_; }
  bool GiveUp(std::int32_t status, std::string text);
  void Fail(std::int32_t status, std::string text);
  void SetStatus(std::int32_t status);
  std::string Told() const;

  Environment& environment_;
  WorkLane& lane_;
  WebServer& server_;
  ServerFiles files_;
  const WebOrder order_;
  bool cancelled_ = false;
  bool reconnected_ = false;
  std::string reason_;                       // of the last step that failed
  std::string lastError_;                    // the status text
  std::vector<const WebOrder::Page*> sent_;  // under their ".tmp" names
  std::string uploading_;                    // the server file of which a part may be there
  std::vector<AdditionalFile> toSend_;
  std::map<std::size_t, Shown::Page> made_;  // not in place yet
};

}  // namespace zeb
