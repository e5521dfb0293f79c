#include "outputs/web/WebServer.h"

#include <utility>

namespace zeb {
namespace {

// A session keeps its own limit; a worker that is later than this hangs in the operating system.
constexpr Duration kLittleMore = std::chrono::seconds(5);

std::string SecondsText(Duration time) {
  return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time).count()) + " s";
}

// A plain name is a file at the root, as the transfer client has it: every step must mean the same file.
std::string ServerPath(const std::string& path) {
  return path.empty() || path.find('/') != std::string::npos ? path : "/" + path;
}

Outcome InItsWords(const FtpSession& session, const Outcome& outcome) {
  return outcome ? outcome : Failure{WhyFtpFailed(session, outcome.Reason())};
}

}  // namespace

Duration WebServer::StepLimit() const {
  return target_.timeLimit + kLittleMore;
}

// `work` gives an Outcome or a Result, and is handed the session.
template <class Work>
auto WebServer::Step(const std::string& what, Duration limit, Work work) {
  using Answer = std::invoke_result_t<Work&, FtpSession&>;
  const std::shared_ptr<FtpSession> session = session_;
  if (!session) return Answer(Failure{"not connected to '" + target_.server + "'"});
  auto answer = lane_.Run([session, work = std::move(work)]() mutable { return work(*session); }, limit);
  if (!answer) {
    if (session_ == session) session_.reset();
    return Answer(Failure{what + ": '" + target_.server + "' has not answered for " + SecondsText(limit)});
  }
  if (!session->Connected() && session_ == session) session_.reset();
  return std::move(*answer);
}

void WebServer::Begin() {
  cancelled_ = std::make_shared<std::atomic<bool>>(false);
}

Outcome WebServer::Connect(const FtpTarget& target) {
  if (session_ && target_ == target && !*cancelled_ &&
      Step("cannot use the connection", StepLimit(), [](FtpSession& session) { return session.Probe(); }))
    return {};
  Close();
  noNetwork_ = environment_.ftp == nullptr;
  if (noNetwork_) return Failure{"this program has no FTP"};
  target_ = target;
  mayReplace_ = true;
  struct Answer {
    Outcome opened, connected;
  };
  const std::shared_ptr<FtpSession> session = environment_.ftp->Make();
  connecting_ = session;
  if (*cancelled_) session->Cancel();
  const auto answer = lane_.Run(
      [session, target] {
        Answer given{session->Open(), {}};
        if (given.opened) given.connected = InItsWords(*session, session->Connect(target));
        return given;
      },
      StepLimit());
  connecting_.reset();
  if (!answer)
    return Failure{"logging on: '" + target.server + "' has not answered for " + SecondsText(StepLimit())};
  noNetwork_ = !answer->opened;
  if (!answer->opened) return answer->opened;
  if (answer->connected) session_ = session;
  return answer->connected;
}

Result<bool> WebServer::Exists(const std::string& path) {
  return Step("looking for '" + path + "'", StepLimit(),
              [path = ServerPath(path)](FtpSession& session) -> Result<bool> {
                Result<bool> exists = session.Exists(path);
                if (!exists) return Failure{WhyFtpFailed(session, exists.Reason())};
                return exists;
              });
}

Outcome WebServer::Rename(const std::string& from, const std::string& to) {
  return Step("renaming '" + from + "'", StepLimit(),
              [from = ServerPath(from), to = ServerPath(to)](FtpSession& session) {
                return InItsWords(session, session.Rename(from, to));
              });
}

Outcome WebServer::Delete(const std::string& path) {
  return Step("deleting '" + path + "'", StepLimit(), [path = ServerPath(path)](FtpSession& session) {
    return InItsWords(session, session.Delete(path));
  });
}

Outcome WebServer::Upload(const std::string& local, std::uint64_t size, const std::string& path,
                          std::function<void(int percent)> percent) {
  const Send send = [local, path](cWinINET& client, FtpSession& session, const cWinINET::Watch& watch) {
    return client.UploadFile(session, local, path, false, watch);
  };
  return UploadWith(send, size, path, std::move(percent));
}

Outcome WebServer::Upload(std::shared_ptr<FileReader> file, const std::string& local, const std::string& path,
                          std::function<void(int percent)> percent) {
  const std::uint64_t size = file->Size();
  const Send send = [file = std::move(file), local, path](cWinINET& client, FtpSession& session,
                                                          const cWinINET::Watch& watch) {
    return client.UploadFile(session, *file, local, path, false, watch);
  };
  return UploadWith(send, size, path, std::move(percent));
}

Outcome WebServer::UploadWith(Send send, std::uint64_t size, const std::string& path,
                              std::function<void(int percent)> percent) {
  EventLoop& loop = environment_.loop;
  cWinINET::Watch watch;
  watch.cancelled = [cancelled = cancelled_] { return cancelled->load(); };
  if (percent)
    watch.percent = [&loop, percent = std::move(percent)](int value) {
      loop.PostFromAnyThread([percent, value] { percent(value); });
    };
  const auto slowest = std::chrono::seconds(size / kFtpSlowestBytesPerSecond);
  return Step("uploading '" + path + "'", StepLimit() + slowest,
              [&files = environment_.files, watch, send = std::move(send)](FtpSession& session) -> Outcome {
                cWinINET client(files);
                if (send(client, session, watch) == cWinINET::kUploadSuccessful) return {};
                return Failure{client.Problem()};
              });
}

void WebServer::Close() {
  const std::shared_ptr<FtpSession> session = std::exchange(session_, nullptr);
  if (session) environment_.loop.RunBlocking([session] { session->Close(); }, kLittleMore);
}

void WebServer::Drop() {
  const std::shared_ptr<FtpSession> session = std::exchange(session_, nullptr);
  if (!session) return;
  EventLoop& loop = environment_.loop;
  loop.Start("closing an FTP connection",
             [&loop, session] { loop.RunBlocking([session] { session->Close(); }, kLittleMore); });
}

void WebServer::Cancel() {
  *cancelled_ = true;
  for (const auto& session : {session_, connecting_})
    if (session) session->Cancel();
}

}  // namespace zeb
