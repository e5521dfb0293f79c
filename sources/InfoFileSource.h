// InfoFileSource: takes a service's items from a file that a playout system rewrites.
//
// A FilePoller looks at the file once a second; it is read when its time stamp or size has changed, on a
// worker thread, never twice at a time. A share that hangs holds up nothing else, and is reported once. A
// file that is missing, empty, locked or changing while it is read means "nothing new": the items stay, and
// the next tick tries again; one that is wrong waits until it, or the definitions it is read with, change.
// Two seconds after a change the file is read once more, since a rewrite within one tick of the file system's
// clock leaves no other trace; no clock of the station takes part in that.
//
// Owned by the service window; used on the loop's thread only.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Environment.h"
#include "platform/EventLoop.h"
#include "platform/WorkLane.h"
#include "sources/FilePoller.h"
#include "sources/ItemIntake.h"
#include "sources/ZEB_FN.h"

namespace zeb {

class InfoFileSource : public std::enable_shared_from_this<InfoFileSource> {
 public:
  // `intake` outlives this or is gone together with it.
  InfoFileSource(Environment& environment, ItemIntake& intake) : environment_(environment), intake_(intake) {}
  ~InfoFileSource() { Close(); }

  // Whether a source type is one of the polled files.
  static bool Polls(std::int32_t type);

  // Begins to poll. Called again with the same type and file it goes on; relative names start from the data
  // folder. Without a name nothing is polled. A generic text file is then read again with its definitions
  // (Generic.ini in the data folder), as it is when those change.
  void Open(std::int32_t type, const std::string& fileName);
  void Close();

  // Why nothing is heard from the file, in one line; "" while all is well.
  std::string Problem() const;

 private:
  struct Reading;
  struct Known;  // what the last reading that came to an end found
  void Looked();
  bool ReadingIsDue(const FileInfo& stamp) const;
  void Read(const FileInfo& stamp);
  void Hangs();
  void Finish(Reading& reading);
  void Feed(const SourceItems& source);
  void NoteOnce(const std::string& problem);
  std::optional<FileInfo> DefinitionsStamp() const;

  Environment& environment_;
  ItemIntake& intake_;
  std::int32_t type_ = 0;
  std::string path_;
  std::shared_ptr<FilePoller::Watch> definitions_, file_;
  std::shared_ptr<WorkLane> lane_;
  std::shared_ptr<Reading> inHand_;  // the reading under way
  std::shared_ptr<const Known> known_;
  std::optional<MonotonicTime> readAgainAt_;
  std::string noted_;    // the problem that was told last
  bool silent_ = false;  // the file does not answer, which was told
};

}  // namespace zeb
