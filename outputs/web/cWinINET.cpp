#include "outputs/web/cWinINET.h"

#include <array>
#include <memory>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr std::array<std::string_view, 6> kDescriptions = {
    "Upload Successful",           "No Internet Connection",
    "Unable to connect to server", "Unable to write destination file",
    "Unable to read source file",  "The user cancelled the operation"};

}  // namespace

std::string WhyFtpFailed(const FtpSession& session, const std::string& reason) {
  const std::string reply = session.LastResponse();
  return !reply.empty() && reply[0] >= '4' ? reply : reason;
}

std::string WhyFileUnreadable(const std::string& reason) {
  return cWinINET::GetUploadResultDescription(cWinINET::kUnableToRead) + " - " + reason;
}

std::string cWinINET::GetUploadResultDescription(std::int32_t code) {
  if (code < 0 || code >= static_cast<std::int32_t>(kDescriptions.size())) return {};
  return std::string(kDescriptions.at(static_cast<std::size_t>(code)));
}

std::int32_t cWinINET::Fail(UploadResult result, std::string why) {
  problem_ = std::move(why);
  return result;
}

// Whether the upload can be begun at all.
std::int32_t cWinINET::Begin(FtpSession& session, const std::string& serverPath) {
  problem_.clear();
  if (!session.Connected()) return Fail(kUnableToConnect, "there is no connection");
  if (serverPath.empty()) return Fail(kUnableToWrite, "the server file has no name");
  return kUploadSuccessful;
}

std::int32_t cWinINET::UploadFile(FtpSession& session, const std::string& local, std::string serverPath,
                                  bool throughTempName, const Watch& watch) {
  if (const std::int32_t begun = Begin(session, serverPath); begun != kUploadSuccessful) return begun;
  const Result<std::unique_ptr<FileReader>> file = files_.OpenForReading(local);
  if (!file) return Fail(kUnableToRead, WhyFileUnreadable(file.Reason()));
  return UploadFile(session, *file.Value(), local, std::move(serverPath), throughTempName, watch);
}

std::int32_t cWinINET::UploadFile(FtpSession& session, FileReader& file, const std::string& local,
                                  std::string serverPath, bool throughTempName, const Watch& watch) {
  if (const std::int32_t begun = Begin(session, serverPath); begun != kUploadSuccessful) return begun;
  if (serverPath.find('/') == std::string::npos) serverPath.insert(0, "/");
  if (file.Size() < 1) return Fail(kUnableToRead, WhyFileUnreadable("'" + local + "' is empty"));
  if (const Outcome rewound = file.Rewind(); !rewound)
    return Fail(kUnableToRead, WhyFileUnreadable(rewound.Reason()));

  std::string uploadName = serverPath;
  if (throughTempName) {
    const Result<std::string> temp = files_.MakeTempFile("ZEB");
    if (!temp) return Fail(kUnableToWrite, temp.Reason());
    static_cast<void>(files_.Delete(temp.Value()));  // only its name is wanted
    uploadName = std::string(FolderPart(serverPath)) + std::string(FileNamePart(temp.Value()));
  }
  const std::int32_t result = Send(session, file, uploadName, watch);
  if (result != kUploadSuccessful) return result;
  return throughTempName ? PutInPlace(session, uploadName, serverPath) : kUploadSuccessful;
}

// A part of a file is not left on the server.
std::int32_t cWinINET::Send(FtpSession& session, FileReader& file, const std::string& name,
                            const Watch& watch) {
  const std::uint64_t length = file.Size();
  std::uint64_t read = 0;
  int told = -1;
  const auto tell = [&] {
    const auto percent = static_cast<int>((read * 200 + length) / (2 * length));
    if (read > 0 && percent != told && watch.percent) watch.percent(percent);
    told = percent;
  };
  bool begun = false, cancelled = false;
  std::string unreadable;
  FtpSource source{length, nullptr};
  source.read = [&](char* to, std::size_t most) -> std::optional<std::size_t> {
    begun = true;
    tell();
    cancelled = watch.cancelled && watch.cancelled();
    if (cancelled) return std::nullopt;
    const Result<std::size_t> got = file.Read(to, most);
    if (!got) unreadable = got.Reason();
    if (got && got.Value() == 0) unreadable = "it became shorter while it was read";
    if (!unreadable.empty()) return std::nullopt;
    read += got.Value();
    return got.Value();
  };
  const Outcome sent = session.Upload(name, source);
  if (sent) {
    tell();
    return kUploadSuccessful;
  }
  const std::string why = WhyFtpFailed(session, sent.Reason());
  if (session.Connected() && begun) static_cast<void>(session.Delete(name));
  if (cancelled) return Fail(kCancelled, GetUploadResultDescription(kCancelled));
  if (unreadable.empty()) return Fail(kUnableToWrite, why);
  return Fail(kUnableToRead, WhyFileUnreadable(unreadable));
}

std::int32_t cWinINET::PutInPlace(FtpSession& session, const std::string& temp, const std::string& target) {
  const std::string old = target + ".old";
  const auto fails = [&](const std::string& reason) {
    const std::string why = WhyFtpFailed(session, reason);
    static_cast<void>(session.Delete(temp));
    return Fail(kUnableToWrite, why);
  };
  const Result<bool> exists = session.Exists(target);
  if (!exists) return fails(exists.Reason());
  if (exists.Value())
    if (const Outcome moved = session.Rename(target, old); !moved) return fails(moved.Reason());
  if (const Outcome renamed = session.Rename(temp, target); !renamed) {
    const std::string why = WhyFtpFailed(session, renamed.Reason());
    if (exists.Value()) static_cast<void>(session.Rename(old, target));
    static_cast<void>(session.Delete(temp));
    return Fail(kUnableToWrite, why);
  }
  if (exists.Value()) static_cast<void>(session.Delete(old));
  return kUploadSuccessful;
}

std::int32_t cWinINET::UploadFile(FtpSessions& sessions, const FtpTarget& target, const std::string& local,
                                  const std::string& serverPath, bool throughTempName, const Watch& watch) {
  const std::unique_ptr<FtpSession> session = sessions.Make();
  if (const Outcome opened = session->Open(); !opened) return Fail(kNoInternetConnection, opened.Reason());
  if (const Outcome connected = session->Connect(target); !connected)
    return Fail(kUnableToConnect, WhyFtpFailed(*session, connected.Reason()));
  const std::int32_t result = UploadFile(*session, local, serverPath, throughTempName, watch);
  session->Close();
  return result;
}

Outcome cWinINET::DownloadFile(FtpSession& session, const std::string& serverPath, const std::string& local) {
  Result<std::string> bytes = session.Download(serverPath, kMaxDownloadBytes);
  if (!bytes) return bytes.AsFailure();
  const auto target = files_.FindTarget(local, {});
  return target ? target.Value()->Replace(bytes.Value()) : Outcome(target);
}

}  // namespace zeb
