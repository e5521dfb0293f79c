// InfoFileSource: takes a service's items from a file that a playout system rewrites.
//
// Polls the file once a second by time stamp and size, and reads it when either has changed, on a worker
// thread, never twice at a time. A share that hangs holds up nothing else. A file that is missing, empty,
// locked, changing while it is read, or wrong means "nothing new": the items stay, and the next tick tries
// again. Two seconds after a change the file is read once more, since a rewrite within one tick of the file
// system's clock leaves no other trace; no clock of the station takes part in that.
//
// Owned by the service window; used on the loop's thread only.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Environment.h"
#include "platform/EventLoop.h"
#include "sources/ItemIntake.h"
#include "sources/ZEB_FN.h"

namespace zeb {

class InfoFileSource : public std::enable_shared_from_this<InfoFileSource> {
 public:
  // `intake` outlives this or is gone together with it.
  InfoFileSource(Environment& environment, ItemIntake& intake) : environment_(environment), intake_(intake) {}

  // Whether a source type is one of the polled files.
  static bool Polls(std::int32_t type);

  // Begins to poll. Called again with the same type and file it goes on; relative names start from the data
  // folder. Without a name nothing is polled. Definitions of a generic text file are read anew.
  void Open(std::int32_t type, const std::string& fileName);
  void Close();

 private:
  struct Poll;
  void Tick();  // tmrCheckInfoFile
  void Finish(const Poll& poll);
  void Feed(const SourceItems& source);
  void NoteOnce(const std::string& problem);

  Environment& environment_;
  ItemIntake& intake_;
  Timer tmrCheckInfoFile_;
  std::int32_t type_ = 0;
  std::string path_;
  std::shared_ptr<Poll> inHand_;      // the poll under way
  std::shared_ptr<const Poll> last_;  // the last that read the file
  std::optional<MonotonicTime> readAgainAt_;
  std::shared_ptr<const GenericFields> fields_;
  std::string noted_;  // the problem that was told last
};

}  // namespace zeb
