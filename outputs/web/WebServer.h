// WebServer: an FTP server as a task uses it: each step on a worker thread with a limit, its failure told in
// the server's own words where it said any.
//
// Owned by a web output, whose lane it shares; a connection may outlive an update. A step that finds the
// connection lost, or passes its limit, leaves the server unconnected. Server paths without a "/" are files
// at the root.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "outputs/web/cWinINET.h"
#include "platform/Environment.h"
#include "platform/FtpSession.h"
#include "platform/Result.h"
#include "platform/WorkLane.h"

namespace zeb {

class WebServer {
 public:
  WebServer(Environment& environment, WorkLane& lane) : environment_(environment), lane_(lane) {}
  ~WebServer() { Drop(); }
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  void Begin();  // begins a run: an earlier Cancel no longer counts
  // A connection that was kept is used again when it is to the same server and still answers.
  Outcome Connect(const FtpTarget& target);
  bool Connected() const { return session_ != nullptr; }
  bool NoNetwork() const { return noNetwork_; }  // why the last Connect failed

  Result<bool> Exists(const std::string& path);
  Outcome Rename(const std::string& from, const std::string& to);
  Outcome Delete(const std::string& path);
  // `size` bytes, as far as known; `percent` is called on the loop's thread.
  Outcome Upload(const std::string& local, std::uint64_t size, const std::string& path,
                 std::function<void(int percent)> percent);
  // The same from an open file, which is read on the worker: nobody else reads it meanwhile. `local` is its
  // name for reasons.
  Outcome Upload(std::shared_ptr<FileReader> file, const std::string& local, const std::string& path,
                 std::function<void(int percent)> percent);

  // Whether a rename may put a file in the place of another, as far as this connection has shown.
  bool MayReplace() const { return mayReplace_; }
  void NoteCannotReplace() { mayReplace_ = false; }

  void Close();  // in a task
  void Drop();   // closes without waiting for it
  // What is under way ends as soon as the server allows. The connection serves for tidying up only.
  void Cancel();

 private:
  using Send =
      std::function<std::int32_t(cWinINET& client, FtpSession& session, const cWinINET::Watch& watch)>;
  Outcome UploadWith(Send send, std::uint64_t size, const std::string& path,
                     std::function<void(int percent)> percent);
  Duration StepLimit() const;
  template <class Work>
  auto Step(const std::string& what, Duration limit, Work work);

  Environment& environment_;
  WorkLane& lane_;
  std::shared_ptr<FtpSession> session_;  // null: not connected
  std::shared_ptr<FtpSession> connecting_;
  FtpTarget target_;
  bool mayReplace_ = true, noNetwork_ = false;
  std::shared_ptr<std::atomic<bool>> cancelled_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace zeb
