#include "sources/InfoFileSource.h"

#include <chrono>
#include <exception>
#include <functional>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr Duration kPollInterval = 1000ms;
// The coarsest file clock in use counts in steps of two seconds.
constexpr Duration kReadAgainAfter = 2s;

bool SameStamp(const FileInfo& a, const FileInfo& b) {
  return a.modified == b.modified && a.size == b.size;
}

}  // namespace

// One look at the file: what it needs, then what it found. Made on the loop's thread, done on a worker's.
struct InfoFileSource::Poll {
  FileSystem& files;
  Markup* markup;
  std::int32_t type;
  std::string path;
  std::string iniPath;
  std::int32_t today;
  std::optional<FileInfo> known;  // the stamp of the last read
  std::size_t knownContents = 0;
  bool readAgain = false;  // although the stamp is the same
  std::shared_ptr<const GenericFields> fields;

  std::optional<FileInfo> stamp;
  std::size_t contents = 0;  // a hash
  std::string problem;       // why it could not be read
  std::optional<SourceItems> found;

  void Run() {
    try {
      Look();
    } catch (const std::exception& error) {
      problem = "'" + path + "' cannot be read: " + error.what();
    }
  }

 private:
  void Look() {
    stamp = files.Stat(path);
    if (!stamp) {
      problem = "'" + path + "' is not there";
      return;
    }
    if (known && SameStamp(*known, *stamp) && !readAgain) return;
    if (!stamp->isRegular) {
      problem = "'" + path + "' is not a regular file";
      return;
    }
    if (stamp->size == 0) return;  // about to be written
    const Result<std::string> bytes = files.Read(path, kMaxFileBytes);
    if (!bytes) {
      problem = bytes.Reason();
      return;
    }
    const std::optional<FileInfo> after = files.Stat(path);
    if (!after || !SameStamp(*stamp, *after) || bytes.Value().size() != stamp->size) return;  // being written
    contents = std::hash<std::string>()(bytes.Value());
    if (known && SameStamp(*known, *stamp) && contents == knownContents) return;
    Result<SourceItems> read = Parse(bytes.Value());
    if (read)
      found = std::move(read.Value());
    else
      problem = "'" + path + "' cannot be read: " + read.Reason();
  }

  Result<SourceItems> Parse(const std::string& bytes) {
    if (type == kSourceDallet50) return ReadDallet50(bytes, today);
    if (type == kSourceDallet51) {
      if (!markup) return Failure{"there is no XML reader"};
      return ReadDallet51(bytes, *markup);
    }
    if (!fields) {
      const Result<std::string> ini = files.Read(iniPath, kMaxFileBytes);
      if (!ini) return Failure{ini.Reason()};
      Result<GenericFields> read = ReadGenericFields(ini.Value(), markup);
      if (!read) return Failure{"'" + iniPath + "': " + read.Reason()};
      fields = std::make_shared<const GenericFields>(std::move(read.Value()));
    }
    return ReadGenericText(bytes, *fields);
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
  fields_.reset();
  if (path_.empty() || tmrCheckInfoFile_.Running()) return;
  tmrCheckInfoFile_ = environment_.loop.Every(kPollInterval, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Tick();
  });
}

void InfoFileSource::Close() {
  tmrCheckInfoFile_.Stop();
  inHand_.reset();  // its result will not be taken
  last_.reset();
  readAgainAt_.reset();
  noted_.clear();
  path_.clear();
}

void InfoFileSource::Tick() {
  if (inHand_) return;  // a share that hangs
  const bool readAgain = readAgainAt_ && environment_.loop.Monotonic() >= *readAgainAt_;
  inHand_ = std::shared_ptr<Poll>(new Poll{environment_.files,
                                           environment_.markup,
                                           type_,
                                           path_,
                                           JoinPath(environment_.dataFolder, "Generic.ini"),
                                           DayNumber(environment_.loop.Now()),
                                           last_ ? last_->stamp : std::nullopt,
                                           last_ ? last_->contents : 0,
                                           readAgain,
                                           fields_,
                                           {},
                                           0,
                                           {},
                                           {}});
  // The task keeps what it works on alive, but not this: a share that hangs must not keep a window from
  // closing.
  environment_.loop.Start("poll of " + path_,
                          [weak = weak_from_this(), &loop = environment_.loop, poll = inHand_] {
                            loop.RunBlocking([poll] { poll->Run(); }, 24h);
                            const auto self = weak.lock();
                            if (!self || self->inHand_ != poll) return;
                            self->inHand_.reset();
                            try {
                              self->Finish(*poll);
                            } catch (const std::exception&) {
                              ReportException("reading the information file", true);
                            }
                          });
}

void InfoFileSource::Finish(const Poll& poll) {
  if (!poll.problem.empty()) return NoteOnce(poll.problem);
  const bool sameStamp = poll.known && poll.stamp && SameStamp(*poll.known, *poll.stamp);
  if (!poll.found) {
    if (poll.readAgain && sameStamp) readAgainAt_.reset();
    return;
  }
  if (!noted_.empty()) environment_.person.Note("The information file '" + path_ + "' is read again");
  noted_.clear();
  fields_ = poll.fields;
  const auto read = std::make_shared<Poll>(poll);
  read->found.reset();
  last_ = read;
  readAgainAt_ = environment_.loop.Monotonic() + kReadAgainAfter;
  Feed(*poll.found);
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

void InfoFileSource::NoteOnce(const std::string& problem) {
  DebugLine("Exit as ", problem);
  if (problem == noted_) return;
  noted_ = problem;
  environment_.person.Note("The information file gives nothing new: " + problem);
}

}  // namespace zeb
