#include "outputs/web/clsZEBWebOutput.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <random>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "outputs/file/PageWork.h"
#include "outputs/web/cWinINET.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr const char* kSettingsKey = "\\Web";
// With less the FTP library gives its data connections up before they stand.
constexpr std::int32_t kShortestTimeLimit = 2;
constexpr std::int32_t kLongestTimeLimit = 600;
constexpr int kMaxNamesTried = 100;

// A plain name is a file at the root, as the transfer client has it: every step must mean the same file.
std::string ServerPath(const std::string& path) {
  return path.empty() || path.find('/') != std::string::npos ? path : "/" + path;
}

// A name in the file's folder that is free on the server; "" when none was found.
std::string FreeTempName(FtpSession& session, const std::string& path) {
  std::mt19937 source{std::random_device{}()};
  std::uniform_real_distribution<double> fraction(0.0, 1.0);
  for (int tries = 0; tries < kMaxNamesTried && session.Connected(); ++tries) {
    const auto number = std::min<std::int64_t>(99999, std::llround(fraction(source) * 99999 + 1));
    std::string name = std::string(FolderPart(path)) + "ZEB" + PaddedNumber(number, 5) + ".TMP";
    const Result<bool> taken = session.Exists(name);
    if (!taken) return {};
    if (!taken.Value()) return name;
  }
  return {};
}

}  // namespace

// ---- The contract

bool clsZEBWebOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("Web.StartOutput");
  control_ = std::move(control);
  *cancel_ = false;
  SetStatus(kStatusOK);
  return true;
}

bool clsZEBWebOutput::StopOutput() {
  const Trace trace("Web.StopOutput");
  *cancel_ = true;
  control_.reset();
  SetStatus(kStatusOff);
  return true;
}

bool clsZEBWebOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  const Trace trace("Web.UpdateOutput");
  try {
    Update(*snapshot);
  } catch (const std::exception& error) {
    SetStatus(kStatusError);
    KeepProblem(0, std::string("publishing by FTP failed: ") + error.what());
    ReportException("publishing by FTP", true);
  }
  return Status() == kStatusOK;
}

bool clsZEBWebOutput::FinishOutput(const SnapshotPtr&) {
  const Trace trace("Web.FinishOutput");
  try {
    const std::vector<std::string> names = std::exchange(deleteFiles_, {});
    const std::vector<clsFileParameters> pairs = Pairs();
    for (std::size_t i = 0; i < std::min(names.size(), pairs.size()); ++i)
      if (!names[i].empty() && session_) Remove(pairs[i].DestinationFolder() + names[i]);
    Close();
  } catch (const std::exception&) {
    ReportException("finishing the web output", true);
  }
  return false;
}

std::string clsZEBWebOutput::GetStatusString(std::uint32_t& colour) {
  switch (Status()) {
    case kStatusSourceProblem:
      colour = kColourRed;
      return "Source File Prob.";
    case kStatusUploadProblem:
    case kStatusConnectProblem:
      colour = kColourRed;
      return lastError_;
    case kStatusLoggingOn:
      colour = kColourBlack;
      return "Logging on";
    default:
      return PairOutput::GetStatusString(colour);
  }
}

std::vector<clsZEBTemplate::Problem> clsZEBWebOutput::Problems() const {
  if (abandoned_) return {{"", OneLine(lastError_, kMaxFtpResponseCharacters + 200)}};
  std::vector<Problem> problems = PairOutput::Problems();
  if (problems.empty() && !additionalProblem_.empty()) problems.push_back({"", additionalProblem_});
  return problems;
}

void clsZEBWebOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string number = std::to_string(outputIndex);
  SettingsHive& hive = environment_.hive;
  WritePairSettings(key, outputIndex);
  hive.WriteText(key, "FTPServerName" + number, settings.FTPServerName);
  hive.WriteText(key, "FTPServerPort" + number, std::to_string(settings.FTPServerPort));
  hive.WriteText(key, "FTPUsername" + number, settings.FTPUsername);
  hive.WriteText(key, "FTPPassword" + number, settings.FTPPassword);
  WriteSwitch(hive, key, "FTPUseProxy" + number, settings.FTPUseProxy);
  hive.WriteText(key, "FTPProxyName" + number, settings.FTPProxyName);
  hive.WriteText(key, "FTPProxyPort" + number, std::to_string(settings.FTPProxyPort));
  hive.WriteNumber(key, "FTPPassiveMode" + number, settings.FTPPassiveMode ? 1 : 0);
  hive.WriteNumber(key, "FTPTimeoutSeconds" + number, settings.FTPTimeoutSeconds);
  hive.WriteNumber(key, "FTPUseTLS" + number, settings.FTPUseTLS ? 1 : 0);
  hive.WriteText(key, "FTPCaFile" + number, settings.FTPCaFile);
}

void clsZEBWebOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string number = std::to_string(outputIndex);
  SettingsHive& hive = environment_.hive;
  ReadPairSettings(key, outputIndex);
  settings.FTPServerName = hive.ReadText(key, "FTPServerName" + number, "");
  settings.FTPServerPort = hive.ReadNumber(key, "FTPServerPort" + number, 21);
  settings.FTPUsername = hive.ReadText(key, "FTPUsername" + number, "");
  settings.FTPPassword = hive.ReadText(key, "FTPPassword" + number, "");
  settings.FTPUseProxy = ReadSwitch(hive, key, "FTPUseProxy" + number, false);
  settings.FTPProxyName = hive.ReadText(key, "FTPProxyName" + number, "");
  settings.FTPProxyPort = hive.ReadNumber(key, "FTPProxyPort" + number, 21);
  settings.FTPPassiveMode = hive.ReadNumber(key, "FTPPassiveMode" + number, 1) != 0;
  settings.FTPTimeoutSeconds = std::clamp(hive.ReadNumber(key, "FTPTimeoutSeconds" + number, 30),
                                          kShortestTimeLimit, kLongestTimeLimit);
  settings.FTPUseTLS = hive.ReadNumber(key, "FTPUseTLS" + number, 0) != 0;
  settings.FTPCaFile = hive.ReadText(key, "FTPCaFile" + number, "");
  SetStatus(kStatusOK);
}

// ---- An update

void clsZEBWebOutput::Update(const ServiceSnapshot& snapshot) {
  const std::vector<clsFileParameters> pairs = Pairs();
  generation_ = PairsGeneration();
  sent_.clear();
  additional_.clear();
  deleteFiles_.assign(pairs.size(), {});
  reconnected_ = abandoned_ = false;
  const bool due = std::any_of(pairs.begin(), pairs.end(),
                               [&](const clsFileParameters& pair) { return pair.IsDue(snapshot); });
  if (!due || !Connect()) return;
  additionalProblem_.clear();

  for (std::size_t pair = 0; pair < pairs.size() && !abandoned_ && !*cancel_; ++pair)
    ProcessPair(pair, pairs[pair], snapshot);
  if (*cancel_) return;
  if (CopyAdditionalFiles && !sent_.empty())
    for (const std::string& path : UploadFilesList().Paths())
      NoteAdditional(path, pairs[sent_.front().pair].DestinationFolder());
  ClearUploadFilesList();
  DebugLine("Uploading any Additional Files");
  for (const Additional& file : std::exchange(additional_, {}))
    if (!abandoned_) SendAdditional(file);
  for (const Page& page : std::exchange(sent_, {})) PlacePage(page);
}

bool clsZEBWebOutput::ProcessPair(std::size_t pair, const clsFileParameters& parameters,
                                  const ServiceSnapshot& snapshot) {
  const std::string& name = parameters.SourceFileName();
  DebugLine("Processing file - ", name);
  if (!parameters.IsDue(snapshot)) return false;
  SetStatus(kStatusOK);
  DebugLine("Information has changed, so must process and upload");

  DebugLine("Loading file - ", name);
  FileSystem& files = environment_.files;
  Result<LoadedTemplate> loaded = Failure{};
  const std::string source = JoinPath(environment_.dataFolder, name);
  environment_.loop.RunBlocking([&] { loaded = LoadTemplate(files, source); }, std::chrono::hours(24));
  const auto sourceFails = [&](const std::string& reason) {
    SetStatus(kStatusSourceProblem);
    if (generation_ == PairsGeneration()) KeepProblem(pair, reason);
    return false;
  };
  if (!loaded) {
    DebugLine("Error loading file - ", name, " - ", loaded.Reason());
    return sourceFails(loaded.Reason() + std::string(kCheckTemplate));
  }
  DebugLine("Checking for &lt; and &gt; tags");
  DebugLine("Checking for %3c and %3e tags");
  DebugLine("Inserting Meta Tags if nescessary");
  DebugLine("Processing Tags");
  UploadFileList named;
  const std::string page = BuildPage(std::move(loaded.Value().text), parameters, snapshot, named);
  DebugLine("Adding any additional files");
  if (CopyAdditionalFiles)
    for (const std::string& path : named.Paths()) NoteAdditional(path, parameters.DestinationFolder());

  Result<std::string> temp = Failure{};
  environment_.loop.RunBlocking([&] { temp = WriteTempPage(files, page, loaded.Value().encoding); },
                                std::chrono::hours(24));
  if (!temp) {
    DebugLine("Error saving to file : ", name, " - ", temp.Reason());
    return sourceFails(temp.Reason() + std::string(kCheckTempFolder));
  }
  DebugLine("Saving processed file to ", temp.Value());
  const bool sent = SendPage(pair, parameters, temp.Value());
  if (environment_.preserveTempFiles) return sent;
  DebugLine("Deleting the Temp File");
  Outcome deleted;
  environment_.loop.RunBlocking([&] { deleted = files.Delete(temp.Value()); }, std::chrono::hours(24));
  if (!deleted) {
    DebugLine("Error Deleting the Temp File: ", deleted.Reason());
    SetStatus(kStatusSourceProblem);
  }
  return sent;
}

bool clsZEBWebOutput::SendPage(std::size_t pair, const clsFileParameters& parameters,
                               const std::string& temp) {
  const std::string& destination = parameters.DestinationFileName();
  DebugLine("Uploading Temp File to ", destination, ".tmp");
  // A name of its own when none is set would put ".tmp" files on the server.
  const bool sent = !destination.empty() && Upload(temp, destination + ".tmp");
  if (sent) {
    sent_.push_back({pair, destination});
    return true;
  }
  if (destination.empty())
    stepProblem_ = "no page is set for the template '" + parameters.SourceFileName() + "'";
  if (!abandoned_) Fail(kStatusUploadProblem, "Couldn't upload file to temp file : \n\n" + Response());
  if (generation_ == PairsGeneration())
    KeepProblem(pair, "'" + destination + "': " + OneLine(lastError_, kMaxFtpResponseCharacters + 200));
  return false;
}

void clsZEBWebOutput::NoteAdditional(const std::string& local, const std::string& serverFolder) {
  const std::string_view name = FileNamePart(local);
  if (name.empty()) return;
  Additional file{JoinPath(environment_.dataFolder, local), serverFolder + std::string(name)};
  const bool known = std::any_of(additional_.begin(), additional_.end(),
                                 [&](const Additional& other) { return other.server == file.server; });
  if (!known) additional_.push_back(std::move(file));
}

void clsZEBWebOutput::SendAdditional(const Additional& file) {
  DebugLine("Checking to see if file already uploaded : ", file.server);
  if (!AlwaysCopyFiles && DestinationFileExists(file.server)) {
    DebugLine("File Exists, so no need to upload");
    return;
  }
  const std::string work = file.server + ".tmp";
  DebugLine("Uploading additional file ", file.local, " to ", file.server);
  if (!Upload(file.local, work)) {
    if (!abandoned_)
      Fail(kStatusUploadProblem, "Couldn't upload additional files to temp files : \n\n" + Response());
    additionalProblem_ = "'" + file.local + "': " + OneLine(lastError_, kMaxFtpResponseCharacters + 200);
    return;
  }
  DebugLine("Renaming uploading Temp File : ", work, " to ", file.server);
  if (Replace(work, file.server)) return;
  if (!abandoned_) Fail(kStatusUploadProblem, "Couldn't rename additional temp files : \n\n" + Response());
  additionalProblem_ = "'" + file.server + "': " + OneLine(lastError_, kMaxFtpResponseCharacters + 200);
}

void clsZEBWebOutput::PlacePage(const Page& page) {
  std::string problem;
  DebugLine("Renaming uploaded page - ", page.destination);
  if (!Replace(page.destination + ".tmp", page.destination)) {
    if (!abandoned_)
      Fail(kStatusUploadProblem,
           "Couldn't rename temp file to final name - " + page.destination + "\n\n" + Response());
    problem = "'" + page.destination + "': " + OneLine(lastError_, kMaxFtpResponseCharacters + 200);
    deleteFiles_[page.pair] = std::string(FileNamePart(page.destination)) + ".tmp";
  }
  if (generation_ == PairsGeneration()) KeepProblem(page.pair, problem);
}

// ---- The server

FtpTarget clsZEBWebOutput::Target() const {
  FtpTarget target;
  target.server = settings.FTPServerName;
  target.port = settings.FTPServerPort;
  target.user = settings.FTPUsername;
  target.password = settings.FTPPassword;
  target.passive = settings.FTPPassiveMode;
  target.tls = settings.FTPUseTLS;
  if (!settings.FTPCaFile.empty()) target.caFile = JoinPath(environment_.dataFolder, settings.FTPCaFile);
  target.useProxy = settings.FTPUseProxy;
  target.proxyName = settings.FTPProxyName;
  target.proxyPort = settings.FTPProxyPort;
  target.timeLimit = std::chrono::seconds(settings.FTPTimeoutSeconds);
  return target;
}

void clsZEBWebOutput::Fail(std::int32_t status, std::string text) {
  lastError_ = std::move(text);
  SetStatus(status);
  DebugLine("Web: ", lastError_);
}

bool clsZEBWebOutput::GiveUpConnecting(std::string text) {
  Fail(kStatusConnectProblem, std::move(text));
  session_.reset();
  abandoned_ = true;
  return false;
}

// The server's own words, else what went wrong here.
std::string clsZEBWebOutput::Response() const {
  return stepProblem_;
}

bool clsZEBWebOutput::Connect() {
  Close();
  const auto noNetwork = "Couldn't connect to Internet - no Internet Connection available";
  if (environment_.ftp == nullptr) return GiveUpConnecting(noNetwork);
  std::shared_ptr<FtpSession> session = environment_.ftp->Make();
  Outcome opened, connected;
  environment_.loop.RunBlocking(
      [&, target = Target()] {
        opened = session->Open();
        if (opened) connected = session->Connect(target);
      },
      std::chrono::hours(24));
  if (!opened) return GiveUpConnecting(noNetwork);
  if (connected) {
    session_ = std::move(session);
    return true;
  }
  // A reply that agrees to something does not tell why the connection failed.
  const std::string reply = session->LastResponse();
  const bool refused = !reply.empty() && reply[0] >= '4';
  GiveUpConnecting("Couldn't connect To Server : \n\n" + (refused ? reply : connected.Reason()));
  DebugLine("Couldn't connect to FTP server ", settings.FTPServerName, " ", lastError_);
  return false;
}

void clsZEBWebOutput::Close() {
  if (const std::shared_ptr<FtpSession> session = std::exchange(session_, nullptr))
    environment_.loop.RunBlocking([&] { session->Close(); }, std::chrono::hours(24));
}

// A step that finds the connection lost is done once more on a new one, once an update: a server that hangs
// must not cost its time limit for every file.
bool clsZEBWebOutput::TryStep(const Step& step) {
  for (;;) {
    if (!session_ || abandoned_) return false;
    const std::shared_ptr<FtpSession> session = session_;
    bool done = false;
    environment_.loop.RunBlocking([&] { done = step(*session); }, std::chrono::hours(24));
    const std::string reply = session->LastResponse();
    if (!done && !reply.empty() && reply[0] >= '4') stepProblem_ = reply;
    if (done || session->Connected() || *cancel_) return done;
    if (std::exchange(reconnected_, true))
      return GiveUpConnecting("Couldn't connect To Server : \n\nthe connection was lost");
    if (!Connect()) return false;
  }
}

bool clsZEBWebOutput::Upload(const std::string& local, const std::string& server) {
  return TryStep([&, cancel = cancel_, progress = onProgress](FtpSession& session) {
    const std::int32_t result =
        cWinINET(environment_.files).UploadFile(session, local, server, false, [&](int percent) {
          if (progress) environment_.loop.PostFromAnyThread([progress, percent] { progress(percent); });
          return !*cancel;
        });
    if (result != cWinINET::kUploadSuccessful) stepProblem_ = cWinINET::GetUploadResultDescription(result);
    return result == cWinINET::kUploadSuccessful;
  });
}

bool clsZEBWebOutput::DestinationFileExists(const std::string& serverPath) {
  if (serverPath.empty()) return false;
  bool exists = false;
  TryStep([&](FtpSession& session) {
    const Result<bool> found = session.Exists(ServerPath(serverPath));
    exists = found && found.Value();
    return found.Ok();
  });
  return exists;
}

// The old file is moved aside first, since many servers do not replace one by a rename; it is deleted when
// the new one is in place, and comes back when that fails.
bool clsZEBWebOutput::Replace(const std::string& fromName, const std::string& toName) {
  const std::string from = ServerPath(fromName), to = ServerPath(toName);
  return TryStep([&, aside = std::string()](FtpSession& session) mutable {
    const auto fails = [&](const std::string& reason) {
      stepProblem_ = reason;
      return false;
    };
    const Result<bool> exists = session.Exists(to);
    if (!exists) return fails(exists.Reason());
    if (exists.Value() && aside.empty()) {
      const std::string name = FreeTempName(session, to);
      if (name.empty()) return fails("no free name beside '" + to + "'");
      if (const Outcome moved = session.Rename(to, name); !moved) return fails(moved.Reason());
      aside = name;
    }
    if (const Outcome renamed = session.Rename(from, to); !renamed) {
      const std::string reply = session.LastResponse();
      stepProblem_ = reply.empty() ? renamed.Reason() : reply;
      if (!aside.empty() && session.Connected() && session.Rename(aside, to)) aside.clear();
      return false;
    }
    if (!aside.empty()) static_cast<void>(session.Delete(aside));
    return true;
  });
}

bool clsZEBWebOutput::Remove(const std::string& pathName) {
  const std::string path = ServerPath(pathName);
  return TryStep([&](FtpSession& session) {
    const std::string name = FreeTempName(session, path);
    return !name.empty() && session.Rename(path, name) && session.Delete(name);
  });
}

// ---- The property dialog

std::string UpdateRulesSummary(const clsFileParameters& pair) {
  if (!pair.UseUpdateRules) return "Always";
  constexpr std::string_view kLetters = "ACJSVU";  // in the order of the flags' bits
  std::string letters;
  for (std::size_t bit = 0; bit < kLetters.size(); ++bit)
    if ((pair.UpdateRulesFlags & (1 << bit)) != 0) letters += kLetters[bit];
  return letters.empty() ? "No item" : letters;
}

WebOutputCheck CheckWebOutput(int pairs, const std::string& server, const std::string& port,
                              const std::string& user, const std::string& password, bool useProxy,
                              const std::string& proxyName, const std::string& proxyPort) {
  if (pairs < 1) return {"You have not added any files."};
  if (server.empty() || user.empty() || password.empty() || port.empty())
    return {"You must enter a valid FTP Server, Username and Password"};
  if (server.find_first_of("/\\: ") != std::string::npos)
    return {
        "The FTP Server name is not valid - it must not contain any of the following characters: "
        "/\\<space>:\n"
        "Make sure you have only entered the name or IP address of the FTP Server, and have not entered the "
        "folder (i.e /upload/)\n"
        "You also do not need to add the ftp:// prefix"};
  if (useProxy && (proxyName.empty() || proxyPort.empty()))
    return {"You must give the details of the Proxy server to use", false};
  return {};
}

}  // namespace zeb
