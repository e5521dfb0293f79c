// ServerFiles: replacing and removing files on a server, so that a reader finds a page missing as seldom as
// the server allows, and never for long. In a task.
#pragma once

#include <string>

#include "outputs/web/WebServer.h"
#include "platform/Result.h"

namespace zeb {

// A page whose old version was given another name, to make room on a server that does not replace.
struct MovedPage {
  std::string page, aside;  // server paths; `aside` is "" while nothing was moved
  bool operator==(const MovedPage&) const = default;
};

class ServerFiles {
 public:
  explicit ServerFiles(WebServer& server) : server_(server) {}

  // Puts `from` in the place of `to`: in one step where the server allows it. Where it refuses because `to`
  // is there, the old page is moved aside first, and comes back when the second step fails; `old` tells what
  // is aside when it could not. A step whose answer was lost is done `again` over a new connection with the
  // same `old`: it looks first how far the server has got.
  Outcome Replace(const std::string& from, const std::string& to, MovedPage& old, bool again);

  // Through a free name beside it, so that nobody reads a file that is being deleted.
  Outcome Remove(const std::string& path);

  // Gives an old page its name again, unless a page has come there since; then the old one is deleted. True
  // when nothing is left to do.
  bool PutBack(const MovedPage& old);

 private:
  Outcome MoveAside(MovedPage& old);
  Outcome Finish(const std::string& from, MovedPage& old);
  Result<std::string> FreeName(const std::string& path);

  WebServer& server_;
};

}  // namespace zeb
