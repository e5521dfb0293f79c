#include "sources/InfoFileSource.h"

#include <chrono>
#include <exception>
#include <functional>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "sources/SourceFile.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

// The coarsest file clock in use counts in steps of two seconds.
constexpr Duration kReadAgainAfter = 2s;

bool SameStamp(const FileInfo& a, const FileInfo& b) {
  return a.modified == b.modified && a.size == b.size;
}
bool SameStamp(const std::optional<FileInfo>& a, const std::optional<FileInfo>& b) {
  return a && b ? SameStamp(*a, *b) : a.has_value() == b.has_value();
}

std::size_t HashOf(const std::string& bytes) {
  return std::hash<std::string>()(bytes);
}

}  // namespace

struct InfoFileSource::Known {
  FileInfo stamp;
  std::optional<FileInfo> definitionsStamp;
  std::size_t contents = 0, definitions = 0;  // hashes
};

// One reading of the file: what it needs, then what it found. Made on the loop's thread, done on a worker's.
struct InfoFileSource::Reading {
  FileSystem& files;
  Markup* markup;
  std::int32_t type;
  std::string path;
  std::string definitionsPath;
  std::int32_t today;
  std::shared_ptr<const Known> known;  // null: none, or it does not count
  bool onceMore;                       // although nothing seems to have changed

  Known seen;
  bool finished = false;  // read to its end; what was found stands until something changes
  std::string problem{};  // why it gives nothing
  std::optional<SourceItems> found{};

  void Run() {
    try {
      ReadAll();
    } catch (const std::exception& error) {
      problem = "'" + path + "' cannot be read: " + error.what();
    }
  }

 private:
  void ReadAll() {
    const Result<std::string> bytes = files.Read(path, kMaxFileBytes);
    if (!bytes) {
      problem = bytes.Reason();
      return;
    }
    const std::optional<FileInfo> after = files.Stat(path);
    if (!after || !SameStamp(seen.stamp, *after) || bytes.Value().size() != seen.stamp.size)
      return;  // being written
    seen.contents = HashOf(bytes.Value());
    Result<std::string> definitions = std::string();
    if (type == kSourceGenericText) definitions = files.Read(definitionsPath, kMaxFileBytes);
    // Definitions that are missing stay so until they are seen; those that are there may only be locked.
    finished = definitions || !seen.definitionsStamp;
    if (definitions) seen.definitions = HashOf(definitions.Value());
    if (finished && onceMore && known && seen.contents == known->contents &&
        seen.definitions == known->definitions)
      return;
    Result<SourceItems> read =
        definitions
            ? ReadSourceFile({type, bytes.Value(), definitions.Value(), definitionsPath, markup, today})
            : Failure{definitions.Reason()};
    if (read)
      found = std::move(read.Value());
    else
      problem = "'" + path + "' cannot be read: " + read.Reason();
  }
};

bool InfoFileSource::Polls(std::int32_t type) {
  return type == kSourceDallet50 || type == kSourceDallet51 || type == kSourceGenericText;
}

void InfoFileSource::Open(std::int32_t type, const std::string& fileName) {
  const std::string path = fileName.empty() ? "" : JoinPath(environment_.dataFolder, fileName);
  if (type != type_ || path != path_) Close();
  type_ = type;
  path_ = path;
  if (type == kSourceGenericText) known_.reset();
  if (path_.empty() || file_) return;
  const auto poller = FilePoller::Of(environment_.loop, environment_.files);
  if (type == kSourceGenericText)
    definitions_ = poller->Add(JoinPath(environment_.dataFolder, "Generic.ini"));
  file_ = poller->Add(path_);
  lane_ = std::make_shared<WorkLane>(environment_.loop);
  file_->onLook = [this] { Looked(); };
  file_->onSilence = [this] { Hangs(); };
}

void InfoFileSource::Close() {
  if (file_) file_->onLook = file_->onSilence = nullptr;
  file_.reset();
  definitions_.reset();
  lane_.reset();
  inHand_.reset();  // its result will not be taken
  known_.reset();
  readAgainAt_.reset();
  noted_.clear();
  silent_ = false;
  path_.clear();
}

std::optional<FileInfo> InfoFileSource::DefinitionsStamp() const {
  return definitions_ ? definitions_->Stamp() : std::nullopt;
}

void InfoFileSource::Looked() {
  if (inHand_) return;
  if (std::exchange(silent_, false))
    environment_.person.Note("The information file '" + path_ + "' answers again");
  const std::optional<FileInfo>& stamp = file_->Stamp();
  if (!stamp) return NoteOnce("'" + path_ + "' is not there");
  if (!ReadingIsDue(*stamp)) return;
  if (!stamp->isRegular) return NoteOnce("'" + path_ + "' is not a regular file");
  if (stamp->size > 0) Read(*stamp);  // an empty one is about to be written
}

bool InfoFileSource::ReadingIsDue(const FileInfo& stamp) const {
  return !known_ || !SameStamp(known_->stamp, stamp) ||
         !SameStamp(known_->definitionsStamp, DefinitionsStamp()) ||
         (readAgainAt_ && environment_.loop.Monotonic() >= *readAgainAt_);
}

void InfoFileSource::Read(const FileInfo& stamp) {
  const bool onceMore =
      known_ && SameStamp(known_->stamp, stamp) && SameStamp(known_->definitionsStamp, DefinitionsStamp());
  inHand_ = std::shared_ptr<Reading>(new Reading{
      environment_.files, environment_.markup, type_, path_, JoinPath(environment_.dataFolder, "Generic.ini"),
      DayNumber(environment_.loop.Now()), known_, onceMore, Known{stamp, DefinitionsStamp()}});
  // The task keeps what it works on alive, but not this: a share that hangs must not keep a window from
  // closing.
  environment_.loop.Start("reading of " + path_, [weak = weak_from_this(), lane = lane_, reading = inHand_] {
    const bool inTime = lane->Run([reading] { reading->Run(); }, kFileWorkLimit);
    const auto self = weak.lock();
    if (!self || self->inHand_ != reading) return;
    if (!inTime) {
      lane->WhenBack([weak, reading] {
        const auto waiting = weak.lock();
        if (waiting && waiting->inHand_ == reading) waiting->inHand_.reset();
      });
      if (lane->Hangs()) return self->Hangs();
    }
    self->inHand_.reset();
    try {
      if (inTime) self->Finish(*reading);
    } catch (const std::exception&) {
      ReportException("reading the information file", Report::kQuietly);
    }
  });
}

void InfoFileSource::Hangs() {
  if (std::exchange(silent_, true)) return;
  environment_.person.Note(
      "The information file '" + path_ + "' cannot be read: its share has not answered for " +
      std::to_string(std::chrono::duration_cast<std::chrono::seconds>(kFileWorkLimit).count()) + " s");
}

void InfoFileSource::Finish(Reading& reading) {
  if (!reading.finished) {
    if (!reading.problem.empty()) NoteOnce(reading.problem);
    return;
  }
  const bool nothingNew = !reading.found && reading.problem.empty();
  known_ = std::make_shared<const Known>(reading.seen);
  readAgainAt_.reset();
  if (nothingNew) return;
  readAgainAt_ = environment_.loop.Monotonic() + kReadAgainAfter;
  if (!reading.found) return NoteOnce(reading.problem);
  if (!noted_.empty()) environment_.person.Note("The information file '" + path_ + "' is read again");
  noted_.clear();
  Feed(*reading.found);
}

void InfoFileSource::Feed(const SourceItems& source) {
  if (source.dropped > 0)
    environment_.person.Note("The information file '" + path_ + "' holds " + std::to_string(source.dropped) +
                             " items more than there are next slots; they are left out");
  for (std::size_t i = 0; i < source.items.size(); ++i) {
    if (!source.items[i]) continue;
    if (i == 0)
      intake_.SetCurrentItem(&*source.items[i], false);
    else
      intake_.SetNextItem(&*source.items[i], false);
  }
  IntakeWindow& window = intake_.window();
  window.RefreshItemList();
  window.InformationReceived();
  window.SetPanel(Panel::kInformation, "Information Update received, Updating..");
  window.UpdateOutputsNow();
}

std::string InfoFileSource::Problem() const {
  return silent_ ? "'" + path_ + "' does not answer" : noted_;
}

void InfoFileSource::NoteOnce(const std::string& problem) {
  DebugLine("Exit as ", problem);
  if (problem == noted_) return;
  noted_ = problem;
  environment_.person.Note("The information file gives nothing new: " + problem);
}

}  // namespace zeb
