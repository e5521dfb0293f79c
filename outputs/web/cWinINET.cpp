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

std::string cWinINET::GetUploadResultDescription(std::int32_t code) {
  if (code < 0 || code >= static_cast<std::int32_t>(kDescriptions.size())) return {};
  return std::string(kDescriptions.at(static_cast<std::size_t>(code)));
}

std::int32_t cWinINET::UploadFile(FtpSession& session, const std::string& local, std::string serverPath,
                                  bool throughTempName, const Progress& progress) {
  if (!session.Connected()) return kUnableToConnect;
  if (serverPath.empty()) return kUnableToWrite;
  if (serverPath.find('/') == std::string::npos) serverPath.insert(0, "/");
  const Result<std::string> bytes = files_.Read(local, kMaxTransferBytes);
  if (!bytes || bytes.Value().empty()) return kUnableToRead;

  std::string uploadName = serverPath;
  if (throughTempName) {
    const Result<std::string> temp = files_.MakeTempFile("ZEB");
    if (!temp) return kUnableToWrite;
    static_cast<void>(files_.Delete(temp.Value()));  // only its name is wanted
    uploadName = std::string(FolderPart(serverPath)) + std::string(FileNamePart(temp.Value()));
  }
  const std::size_t length = bytes.Value().size();
  int told = -1;
  bool cancelled = false;
  const Outcome sent = session.Upload(uploadName, bytes.Value(), [&](std::size_t count) {
    const int percent = static_cast<int>((count * 200 + length) / (2 * length));
    if (percent == told || !progress) return true;
    told = percent;
    cancelled = !progress(percent) && count < length;
    return !cancelled;
  });
  if (!sent && throughTempName && session.Connected()) static_cast<void>(session.Delete(uploadName));
  if (cancelled) return kCancelled;
  if (!sent) return kUnableToWrite;
  return throughTempName ? PutInPlace(session, uploadName, serverPath) : kUploadSuccessful;
}

std::int32_t cWinINET::PutInPlace(FtpSession& session, const std::string& temp, const std::string& target) {
  const std::string old = target + ".old";
  const Result<bool> exists = session.Exists(target);
  if (!exists) return kUnableToWrite;
  if (exists.Value() && !session.Rename(target, old)) {
    static_cast<void>(session.Delete(temp));
    return kUnableToWrite;
  }
  if (!session.Rename(temp, target)) {
    if (exists.Value()) static_cast<void>(session.Rename(old, target));
    static_cast<void>(session.Delete(temp));
    return kUnableToWrite;
  }
  if (exists.Value()) static_cast<void>(session.Delete(old));
  return kUploadSuccessful;
}

std::int32_t cWinINET::UploadFile(FtpSessions& sessions, const FtpTarget& target, const std::string& local,
                                  const std::string& serverPath, bool throughTempName,
                                  const Progress& progress) {
  const std::unique_ptr<FtpSession> session = sessions.Make();
  if (!session->Open()) return kNoInternetConnection;
  if (!session->Connect(target)) return kUnableToConnect;
  const std::int32_t result = UploadFile(*session, local, serverPath, throughTempName, progress);
  session->Close();
  return result;
}

Outcome cWinINET::DownloadFile(FtpSession& session, const std::string& serverPath, const std::string& local) {
  Result<std::string> bytes = session.Download(serverPath, kMaxTransferBytes);
  if (!bytes) return Failure{bytes.Reason()};
  const std::string work = local + ".tmp";
  Outcome written = files_.Write(work, bytes.Value());
  if (written) written = files_.Rename(work, local);
  DebugLine("Removing Tempfiles");
  if (!written) static_cast<void>(files_.Delete(work));
  return written;
}

}  // namespace zeb
