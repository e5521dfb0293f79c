#include "outputs/web/WebUpload.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "outputs/file/MediaNames.h"
#include "outputs/file/PageWork.h"
#include "outputs/web/cWinINET.h"
#include "text/OneLine.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr const char* kCannotSendAdditional = "Couldn't upload additional files to temp files";
constexpr const char* kNoNetwork = "Couldn't connect to Internet - no Internet Connection available";

std::string HangText() {
  return " did not answer for " +
         std::to_string(std::chrono::duration_cast<std::chrono::seconds>(kFileWorkLimit).count()) +
         " s; check its disk or share";
}

std::string WorkPath(const std::string& path) {
  return path + ".tmp";
}

std::string PlaceOf(const FtpTarget& target, const AdditionalFile& file) {
  return target.server + ":" + std::to_string(target.port) + ":" + target.user + ":" + file.server;
}

}  // namespace

WebUpload::WebUpload(Environment& environment, WorkLane& lane, WebServer& server, WebOrder order)
    : movedPages(order.movedPages),
      environment_(environment),
      lane_(lane),
      server_(server),
      files_(server),
      order_(std::move(order)),
      toSend_(order_.additional) {
  for (const WebOrder::Page& page : order_.pages)
    if (deleteFiles.size() <= page.pair) deleteFiles.resize(page.pair + 1);
}

void WebUpload::Run() {
  if (!Connect()) {
    failedAdditional = toSend_;
    return;
  }
  PutBackMovedPages();
  for (const WebOrder::Page& page : order_.pages)
    if (OnGoing()) ProcessPage(page);
  if (OnGoing() && !sent_.empty()) {
    if (order_.copyAdditional)
      for (const std::string& path : order_.listed)
        NoteAdditional(path, sent_.front()->parameters.DestinationFolder());
    tookListed = true;
  }
  DebugLine("Uploading any Additional Files");
  for (const AdditionalFile& file : toSend_)
    if (!OnGoing() || !SendAdditional(file)) failedAdditional.push_back(file);
  while (!sent_.empty() && OnGoing()) {
    const WebOrder::Page& page = *sent_.front();
    sent_.erase(sent_.begin());
    PlacePage(page);
  }
  if (cancelled_) RemoveUnfinished();
}

void WebUpload::Finish() {
  if (cancelled_) return;
  const std::vector<std::string> names = std::exchange(deleteFiles, {});
  for (const WebOrder::Page& page : order_.pages)
    if (!names[page.pair].empty() && server_.Connected()) {
      const std::string path = page.parameters.DestinationFolder() + names[page.pair];
      static_cast<void>(TryStep([&](bool) { return files_.Remove(path); }));
    }
}

void WebUpload::Cancel() {
  cancelled_ = true;
  server_.Cancel();
}

// What was sent and will not be put in place. An upload that stood still took the connection with it.
void WebUpload::RemoveUnfinished() {
  std::vector<std::string> paths;
  for (const WebOrder::Page* page : std::exchange(sent_, {}))
    paths.push_back(WorkPath(page->parameters.DestinationFileName()));
  if (!uploading_.empty()) paths.push_back(uploading_);
  if (paths.empty() || (!server_.Connected() && !server_.Connect(order_.target))) return;
  for (const std::string& path : paths)
    if (server_.Connected()) static_cast<void>(server_.Delete(path));
}

// ---- Pages

struct WebUpload::Prepared {
  Outcome loaded = Failure{};
  Result<std::string> temp = Failure{};
  UploadFileList named;
  Shown::Page shown;
  bool inTime = true;
};

// From the template to a temporary file that holds the page, in one go.
WebUpload::Prepared WebUpload::Prepare(const clsFileParameters& pair) const {
  const auto work = [&files = environment_.files, pair, snapshot = order_.snapshot,
                     kind = environment_.preserveTempFiles ? TempPage::kKept : TempPage::kPassing,
                     templates = order_.templates,
                     source = JoinPath(environment_.dataFolder, pair.SourceFileName())] {
    Prepared prepared;
    const Result<std::shared_ptr<const PageTemplate>> loaded = templates->Load(files, source);
    if (!loaded) {
      prepared.loaded = Failure{loaded.Reason() + std::string(kCheckTemplate)};
      return prepared;
    }
    const ValueEncoding values = PageValues(pair, loaded.Value()->Text());
    const Result<std::string> page = BuildPage(*loaded.Value(), pair, *snapshot, prepared.named, values);
    prepared.loaded = page;
    if (!page) return prepared;
    std::string room;
    const std::string_view bytes = EncodeFile(page.Value(), loaded.Value()->Encoding(), room);
    prepared.shown = ShownPage(pair, page.Value(), bytes);
    NoteSource(prepared.shown, pair, loaded.Value(), snapshot, values);
    prepared.temp = WriteTempPage(files, bytes, kind);
    return prepared;
  };
  std::optional<Prepared> prepared = lane_.Run(work, kFileWorkLimit);
  if (prepared) return std::move(*prepared);
  Prepared late;
  late.inTime = false;
  return late;
}

void WebUpload::ProcessPage(const WebOrder::Page& page) {
  const std::string& name = page.parameters.SourceFileName();
  DebugLine("Processing file - ", name);
  if (!page.isDue) return;
  SetStatus(kStatusOK);
  DebugLine("Information has changed, so must process and upload");

  DebugLine("Loading file - ", name);
  const Prepared prepared = Prepare(page.parameters);
  const auto sourceFails = [&](const std::string& reason) {
    SetStatus(kStatusSourceProblem);
    pages[page.pair] = reason;
  };
  if (!prepared.inTime) {
    DebugLine("Error loading file - ", name, " -", HangText());
    GiveUp(kStatusSourceProblem, "the template '" + name + "'" + HangText());
    return;
  }
  if (!prepared.loaded) {
    DebugLine("Error loading file - ", name, " - ", prepared.loaded.Reason());
    return sourceFails(prepared.loaded.Reason());
  }
  DebugLine("Checking for &lt; and &gt; tags");
  DebugLine("Checking for %3c and %3e tags");
  DebugLine("Inserting Meta Tags if nescessary");
  DebugLine("Processing Tags");
  DebugLine("Adding any additional files");
  if (order_.copyAdditional)
    for (const std::string& path : prepared.named.Paths())
      NoteAdditional(path, page.parameters.DestinationFolder());
  if (!prepared.temp) {
    DebugLine("Error saving to file : ", name, " - ", prepared.temp.Reason());
    return sourceFails(prepared.temp.Reason() + std::string(kCheckTempFolder));
  }
  DebugLine("Saving processed file to ", prepared.temp.Value());
  SendPage(page, prepared);
}

void WebUpload::SendPage(const WebOrder::Page& page, const Prepared& prepared) {
  const std::string& destination = page.parameters.DestinationFileName();
  const std::string& temp = prepared.temp.Value();
  DebugLine("Uploading Temp File to ", destination, ".tmp");
  bool sent = false;
  // A name of its own when none is set would put ".tmp" files on the server.
  if (destination.empty())
    reason_ = "no page is set for the template '" + page.parameters.SourceFileName() + "'";
  else
    sent = Upload(WorkPath(destination), [&] {
      return server_.Upload(temp, prepared.shown.bytes, WorkPath(destination), order_.onProgress);
    });
  if (sent) {
    sent_.push_back(&page);
    made_[page.pair] = prepared.shown;
  } else if (OnGoing()) {
    Fail(kStatusUploadProblem, "Couldn't upload file to temp file : \n\n" + reason_);
    pages[page.pair] = Told();
  }
  if (environment_.preserveTempFiles) return;
  DebugLine("Deleting the Temp File");
  DeleteTemp(temp);
}

// Also while the upload hangs: the temporary folder is no server's.
void WebUpload::DeleteTemp(const std::string& temp) {
  const auto work = [&files = environment_.files, temp] { return files.Delete(temp); };
  const std::optional<Outcome> deleted =
      lane_.Hangs() ? environment_.loop.RunBlocking(work, kFileWorkLimit) : lane_.Run(work, kFileWorkLimit);
  if (deleted && *deleted) return;
  DebugLine("Error Deleting the Temp File: ", deleted ? deleted->Reason() : HangText());
  if (!OnGoing()) return;
  if (deleted)
    SetStatus(kStatusSourceProblem);
  else
    GiveUp(kStatusSourceProblem, "the temporary file '" + temp + "'" + HangText());
}

void WebUpload::PlacePage(const WebOrder::Page& page) {
  const std::string& destination = page.parameters.DestinationFileName();
  DebugLine("Renaming uploaded page - ", destination);
  MovedPage old;
  const bool placed =
      TryStep([&](bool again) { return files_.Replace(WorkPath(destination), destination, old, again); });
  if (!old.aside.empty()) movedPages.push_back(old);
  if (placed) {
    pages[page.pair].clear();
    shown[page.pair] = std::move(made_[page.pair]);
    return;
  }
  if (OnGoing())
    Fail(kStatusUploadProblem, "Couldn't rename temp file to final name - " + destination + "\n\n" + reason_);
  pages[page.pair] = Told();
  deleteFiles[page.pair] = WorkPath(std::string(FileNamePart(destination)));
}

// ---- Additional files

void WebUpload::NoteAdditional(const std::string& local, const std::string& serverFolder) {
  const std::string_view name = FileNamePart(local);
  if (name.empty()) return;
  AdditionalFile file{JoinPath(order_.media.dataFolder, local), serverFolder + std::string(name)};
  const bool known = std::any_of(toSend_.begin(), toSend_.end(),
                                 [&](const AdditionalFile& other) { return other.server == file.server; });
  if (!known) toSend_.push_back(std::move(file));
}

bool WebUpload::AdditionalFails(const AdditionalFile& file, const std::string& text) {
  if (!OnGoing()) return false;
  Fail(kStatusUploadProblem, text + " : \n\n" + reason_);
  additional[file.server] = Told();
  return false;
}

// Not a failure: trying again would change nothing, and the page is published all the same.
bool WebUpload::Refuse(const AdditionalFile& file, const std::string& reason) {
  DebugLine("Web: ", reason);
  refused[file.server] = reason;
  return true;
}

Result<bool> WebUpload::IsOnServer(const AdditionalFile& file) {
  Result<bool> exists = false;
  const bool told = TryStep([&](bool) -> Outcome {
    exists = server_.Exists(file.server);
    return exists;
  });
  return told ? exists : Result<bool>(Failure{reason_});
}

// Of a file that is named like a page: "" when its name is free on the server, or ZEB put it there.
std::string WebUpload::WhyNotOverPage(const AdditionalFile& file, const Result<bool>& exists) const {
  if (order_.names->IsCopy(PlaceOf(order_.target, file), {})) return {};
  if (!exists) return "whether '" + file.server + "' is on the server cannot be told: " + exists.Reason();
  if (!exists.Value()) return {};
  return "'" + file.server +
         "' is on the server already and ZEB has not put it there since it was started; " +
         "delete that file if this one is to replace it";
}

bool WebUpload::SendAdditional(const AdditionalFile& file) {
  const std::string_view name = FileNamePart(file.local);
  if (const std::string why = WhyNoMediaName(name); !why.empty())
    return Refuse(file, NotPublished(file.local, why));
  if (order_.names->Contains(name))
    return Refuse(file, NotPublished(file.local, "a page or a template has that name"));
  DebugLine("Checking to see if file already uploaded : ", file.server);
  const bool pageName = IsPageName(name);
  Result<bool> exists = false;
  if (!order_.alwaysCopy || pageName) exists = IsOnServer(file);
  if (!OnGoing()) return false;
  if (!order_.alwaysCopy && exists && exists.Value()) {
    DebugLine("File Exists, so no need to upload");
    refused[file.server].clear();
    return true;
  }
  if (pageName)
    if (const std::string why = WhyNotOverPage(file, exists); !why.empty())
      return Refuse(file, NotPublished(file.local, why));
  std::optional<OpenedMedia> opened =
      lane_.Run([&files = environment_.files, rules = order_.media,
                 local = file.local] { return OpenMedia(files, rules, local); },
                kFileWorkLimit);
  if (!opened) return GiveUp(kStatusUploadProblem, "the additional file '" + file.local + "'" + HangText());
  if (opened->refused) return Refuse(file, opened->reason);
  refused[file.server].clear();
  if (!opened->file) {
    reason_ = WhyFileUnreadable(opened->reason);
    return AdditionalFails(file, kCannotSendAdditional);
  }
  const bool sent = SendMedia(file, opened->file);
  // Closing a file may block as well. While a worker hangs over the file, that one closes it.
  if (!lane_.Hangs())
    static_cast<void>(
        lane_.Run([media = std::move(opened->file)]() mutable { media.reset(); }, kFileWorkLimit));
  if (!sent) return false;
  if (pageName) order_.names->NoteCopy(PlaceOf(order_.target, file), {});
  return true;
}

// What was looked at is what is sent.
bool WebUpload::SendMedia(const AdditionalFile& file, const std::shared_ptr<FileReader>& media) {
  const std::string work = WorkPath(file.server);
  DebugLine("Uploading additional file ", file.local, " to ", file.server);
  if (!Upload(work, [&] { return server_.Upload(media, file.local, work, order_.onProgress); }))
    return AdditionalFails(file, kCannotSendAdditional);
  DebugLine("Renaming uploading Temp File : ", work, " to ", file.server);
  MovedPage old;
  const bool placed = TryStep([&](bool again) { return files_.Replace(work, file.server, old, again); });
  if (!old.aside.empty()) movedPages.push_back(old);
  return placed || AdditionalFails(file, "Couldn't rename additional temp files");
}

// ---- The server

bool WebUpload::Connect() {
  if (cancelled_) return false;
  const Outcome connected = server_.Connect(order_.target);
  if (connected) return true;
  if (cancelled_) return false;
  if (server_.NoNetwork()) return GiveUp(kStatusConnectProblem, kNoNetwork);
  GiveUp(kStatusConnectProblem, "Couldn't connect To Server : \n\n" + connected.Reason());
  DebugLine("Couldn't connect to FTP server ", order_.target.server, " ", lastError_);
  return false;
}

// Old pages of earlier runs.
void WebUpload::PutBackMovedPages() {
  std::vector<MovedPage> left;
  for (const MovedPage& old : std::exchange(movedPages, {}))
    if (!server_.Connected() || !files_.PutBack(old)) left.push_back(old);
  movedPages = std::move(left);
}

bool WebUpload::Upload(const std::string& path, const std::function<Outcome()>& send) {
  uploading_ = path;
  const bool sent = TryStep([&](bool) { return send(); });
  if (sent || server_.Connected()) uploading_.clear();  // a part of it has been removed
  return sent;
}

// A step that finds the connection lost is done once more on a new one, once a run: a server that hangs must
// not cost its time limit for every file.
bool WebUpload::TryStep(const Step& step) {
  for (bool again = false;; again = true) {
    const Outcome done = step(again);
    if (done) return true;
    reason_ = done.Reason();
    if (server_.Connected() || !OnGoing()) return false;
    if (lane_.Hangs() || std::exchange(reconnected_, true))
      return GiveUp(kStatusConnectProblem,
                    "Couldn't connect To Server : \n\nthe connection was lost: " + done.Reason());
    if (!Connect()) return false;
  }
}

// Nothing more can be done in this run.
bool WebUpload::GiveUp(std::int32_t status, std::string text) {
  Fail(status, std::move(text));
  server_.Drop();
  problem = Told();
  return false;
}

void WebUpload::Fail(std::int32_t status, std::string text) {
  lastError_ = std::move(text);
  DebugLine("Web: ", lastError_);
  SetStatus(status);
}

void WebUpload::SetStatus(std::int32_t status) {
  if (order_.onStatus && !cancelled_) order_.onStatus(status, lastError_);
}

std::string WebUpload::Told() const {
  return OneLine(lastError_, kMaxFtpResponseCharacters + 200);
}

}  // namespace zeb
