#include "platform/simulated/SimulatedFiles.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>

namespace zeb {
namespace {

constexpr const char* kMissing = "No such file or directory";

// Windows' separator counts there, as in its own files.
#ifdef _WIN32
std::string WithSlashes(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}
#else
const std::string& WithSlashes(const std::string& path) {
  return path;
}
#endif

// One separator at a time, none at the end, and no ".".
std::string Normal(const std::string& given) {
  const std::string& path = WithSlashes(given);
  std::string normal;
  for (std::size_t start = 0; start <= path.size();) {
    std::size_t end = std::min(path.find('/', start), path.size());
    std::string part = path.substr(start, end - start);
    if (!part.empty() && part != ".") normal.append(start == 0 ? "" : "/").append(part);
    start = end + 1;
  }
  return normal.empty() && !path.empty() ? "/" : normal;
}

std::string ParentOf(const std::string& normal) {
  std::size_t slash = normal.rfind('/');
  if (slash == std::string::npos) return {};
  return slash == 0 ? "/" : normal.substr(0, slash);
}

Failure Cannot(const std::string& verb, const std::string& path, const std::string& why) {
  return {"cannot " + verb + " '" + path + "': " + why};
}

bool IsBelow(const std::string& path, const std::string& folder) {
  return path.size() > folder.size() && path[folder.size()] == '/' && path.rfind(folder, 0) == 0;
}

}  // namespace

// An open file outlives its name, so it has its own copy of the bytes.
class SimulatedFiles::Reader : public FileReader {
 public:
  Reader(SimulatedFiles& files, std::string path, std::string bytes, FileInfo info, Result<std::string> real)
      : files_(files),
        path_(std::move(path)),
        bytes_(std::move(bytes)),
        info_(info),
        real_(std::move(real)) {}
  std::uint64_t Size() const override { return bytes_.size(); }
  FileInfo Info() const override { return info_; }
  Result<std::string> RealPath() const override { return real_; }
  Result<std::size_t> Read(char* to, std::size_t most) override {
    if (std::string why = files_.Refusal("Read", path_); !why.empty()) return Cannot("read", path_, why);
    const std::size_t got = bytes_.copy(to, most, at_);
    at_ += got;
    return got;
  }
  Outcome Rewind() override {
    at_ = 0;
    return {};
  }

 private:
  SimulatedFiles& files_;
  const std::string path_, bytes_;
  const FileInfo info_;
  const Result<std::string> real_;
  std::size_t at_ = 0;
};

std::string SimulatedFiles::Refusal(const char* operation, const std::string& path) {
  ++operations;
  return fail ? fail(operation, path) : std::string();
}

std::string SimulatedFiles::CannotHoldFile(const std::string& path) const {
  auto folder = files_.find(ParentOf(path));
  if (folder == files_.end()) return WhyMissing(path);
  if (!folder->second.isFolder) return "Not a directory";
  auto file = files_.find(path);
  if (file != files_.end() && file->second.isFolder) return "Is a directory";
  return {};
}

std::string SimulatedFiles::WhyMissing(const std::string& path) const {
  for (std::string above = ParentOf(path); !above.empty(); above = ParentOf(above)) {
    const auto found = files_.find(above);
    if (found != files_.end()) return found->second.isFolder ? kMissing : "Not a directory";
  }
  return kMissing;
}

void SimulatedFiles::Observe(const char* operation, const std::string& path) const {
  if (observe) observe(operation, path);
}

void SimulatedFiles::Touch(File& file) {
  file.modified = file.changed = clock_++;
  if (file.inode == 0) file.inode = nextInode_++;
}

SimulatedFiles::File SimulatedFiles::Folder() {
  File folder;
  folder.isFolder = true;
  return folder;
}

// A real write is seen by others as it grows.
void SimulatedFiles::FillInSteps(const char* operation, const std::string& path, std::string bytes) {
  const std::uint64_t inode = files_[path].inode;
  files_[path] = File{};
  files_[path].inode = inode;
  Observe(operation, path);
  if (bytes.size() > 1) {
    files_[path].bytes = bytes.substr(0, bytes.size() / 2);
    Observe(operation, path);
  }
  files_[path].bytes = std::move(bytes);
  Touch(files_[path]);
}

std::optional<FileInfo> SimulatedFiles::Stat(const std::string& path) {
  ++operations;
  auto found = files_.find(Behind(Normal(path)));
  if (found == files_.end()) return std::nullopt;
  return InfoOf(found->second);
}

FileInfo SimulatedFiles::InfoOf(const File& file) const {
  FileInfo info;
  info.size = file.bytes.size();
  info.modified = file.modified;
  info.changed = file.changed;
  info.inode = file.inode;
  info.seen = now;
  info.isFolder = file.isFolder;
  info.isRegular = !file.isFolder && !file.isSpecial;
  info.openToAll = file.openToAll;
  return info;
}

Result<std::string> SimulatedFiles::RealPath(const std::string& path) {
  ++operations;
  const std::string normal = Normal(path);
  if (files_.count(normal) == 0) return Cannot("find", path, WhyMissing(normal));
  const auto link = realPaths.find(normal);
  return link == realPaths.end() ? normal : link->second;
}

Result<std::string> SimulatedFiles::Read(const std::string& path, std::uint64_t limit) {
  if (std::string why = Refusal("Read", path); !why.empty()) return Cannot("read", path, why);
  auto found = files_.find(Behind(Normal(path)));
  if (found == files_.end()) return Cannot("read", path, WhyMissing(Normal(path)));
  if (found->second.isFolder) return Cannot("read", path, "Is a directory");
  if (found->second.isSpecial) return Cannot("read", path, "it is not a regular file");
  if (found->second.bytes.size() > limit)
    return Cannot("read", path, "it is larger than " + std::to_string(limit) + " bytes");
  return found->second.bytes;
}

Result<std::unique_ptr<FileReader>> SimulatedFiles::OpenForReading(const std::string& path) {
  Result<std::string> bytes = Read(path, std::numeric_limits<std::uint64_t>::max());
  if (!bytes) return bytes.AsFailure();
  return std::unique_ptr<FileReader>(std::make_unique<Reader>(
      *this, path, std::move(bytes.Value()), InfoOf(files_.at(Normal(path))), RealPath(path)));
}

Outcome SimulatedFiles::Write(const std::string& path, std::string_view bytes) {
  if (std::string why = Refusal("Write", path); !why.empty()) return Cannot("write", path, why);
  std::string normal = Normal(path);
  if (std::string why = CannotHoldFile(normal); !why.empty()) return Cannot("write", path, why);
  FillInSteps("Write", normal, std::string(bytes));
  Observe("Write", normal);
  return {};
}

Outcome SimulatedFiles::Append(const std::string& path, std::string_view bytes) {
  if (std::string why = Refusal("Append", path); !why.empty()) return Cannot("write", path, why);
  std::string normal = Normal(path);
  if (std::string why = CannotHoldFile(normal); !why.empty()) return Cannot("write", path, why);
  File& file = files_[normal];
  file.bytes += bytes;
  Touch(file);
  Observe("Append", normal);
  return {};
}

Outcome SimulatedFiles::Delete(const std::string& path) {
  if (std::string why = Refusal("Delete", path); !why.empty()) return Cannot("delete", path, why);
  auto found = files_.find(Normal(path));
  if (found == files_.end()) {
    const std::string why = path.empty() ? kMissing : WhyMissing(Normal(path));
    return why == kMissing ? Outcome() : Cannot("delete", path, why);
  }
  if (found->second.isFolder) return Cannot("delete", path, "Is a directory");
  files_.erase(found);
  Observe("Delete", Normal(path));
  return {};
}

// A place keeps what it was found to be: what comes there meanwhile is replaced as a rename does.
class SimulatedFiles::Target : public FileTarget {
 public:
  Target(SimulatedFiles& files, std::string path, std::string normal)
      : files_(files), path_(std::move(path)), normal_(std::move(normal)) {}

  const std::string& Path() const override { return path_; }
  Outcome Replace(std::string_view bytes) override {
    return Put("Write", "write", [&] { return Result<std::string>(std::string(bytes)); });
  }
  Outcome ReplacePrivately(std::string_view bytes) override {
    Outcome replaced = Replace(bytes);
    if (replaced) files_.files_.at(normal_).openToAll = false;
    return replaced;
  }
  Outcome ReplaceByCopy(FileReader& source, std::int64_t modified) override {
    const auto read = [&]() -> Result<std::string> {
      std::string bytes(source.Size(), '\0');
      std::size_t length = 0;
      while (length < bytes.size()) {
        const Result<std::size_t> got = source.Read(bytes.data() + length, bytes.size() - length);
        if (!got) return got.AsFailure();
        if (got.Value() == 0) break;
        length += got.Value();
      }
      bytes.resize(length);
      return bytes;
    };
    return Put("Copy", "copy a file to", read, modified);
  }
  bool RemoveLeftOver() override {
    const auto found = files_.files_.find(WorkName(normal_));
    if (found == files_.files_.end() || found->second.isFolder || found->second.isSpecial ||
        !found->second.linksTo.empty() || found->second.changed >= files_.startedAt_)
      return false;
    return files_.Delete(WorkName(path_)).Ok();
  }

 private:
  template <class Bytes>
  Outcome Put(const char* operation, const std::string& verb, const Bytes& bytes,
              std::optional<std::int64_t> modified = {}) {
    const std::string work = WorkName(path_), normalWork = WorkName(normal_);
    if (std::string why = files_.Refusal(operation, work); !why.empty()) return Cannot(verb, path_, why);
    const auto inTheWay = files_.files_.find(normalWork);
    if (inTheWay != files_.files_.end() && inTheWay->second.isFolder)
      return Cannot(verb, path_, "'" + work + "' is in the way and cannot be removed: Is a directory");
    if (std::string why = files_.CannotHoldFile(normalWork); !why.empty()) return Cannot(verb, path_, why);
    const Result<std::string> contents = bytes();
    if (!contents) return Cannot(verb, path_, contents.Reason());
    files_.FillInSteps(operation, normalWork, contents.Value());
    if (modified) files_.files_[normalWork].modified = *modified;
    files_.Observe(operation, normalWork);
    std::string why = files_.Refusal("Rename", path_);
    if (why.empty()) why = files_.CannotHoldFile(normal_);
    if (!why.empty()) {
      static_cast<void>(files_.Delete(work));
      return Cannot(verb, path_, why);
    }
    // Exchanged with what is there, which is removed then.
    const bool replaces = files_.files_.count(normal_) != 0;
    std::swap(files_.files_[normal_], files_.files_[normalWork]);
    if (replaces) files_.Observe("Rename", normal_);
    files_.files_.erase(normalWork);
    files_.Observe("Rename", normal_);
    return {};
  }

  SimulatedFiles& files_;
  const std::string path_, normal_;
};

std::string SimulatedFiles::Behind(const std::string& normal) const {
  const auto found = files_.find(normal);
  if (found == files_.end() || found->second.linksTo.empty()) return normal;
  const std::string& to = found->second.linksTo;
  return Normal(to[0] == '/' ? to : ParentOf(normal) + "/" + to);
}

// Why no file can be put there; else "", and `behind` is where.
std::string SimulatedFiles::WhyNoTarget(const std::string& normal, const LinkRules& rules,
                                        std::string& behind) const {
  behind = normal;
  const auto kind = [](const File& file) -> std::string {
    if (!file.linksTo.empty()) return "a link";
    if (file.isSpecial) return "a pipe, a socket or a device";
    return file.isFolder ? "a folder" : "";
  };
  auto found = files_.find(normal);
  if (found == files_.end()) return {};
  if (found->second.linksTo.empty())
    return kind(found->second).empty() ? "" : "it is " + kind(found->second) + "; choose the name of a file";
  if (!rules.follow) return {};
  behind = Behind(normal);
  const std::string leads = "it is a link to '" + found->second.linksTo + "'";
  if (files_.count(ParentOf(behind)) == 0)
    return leads + ", whose folder cannot be opened (" + kMissing +
           "); check that the disk or share is there";
  found = files_.find(behind);
  std::string what = found == files_.end() ? "" : kind(found->second);
  if (what.empty() && !rules.notBelow.empty() && IsBelow(behind, Normal(rules.notBelow)))
    what = "ZEB's data folder";
  if (what.empty() && found != files_.end() && behind == Normal(rules.notFile)) what = "the template itself";
  return what.empty() ? "" : leads + ", and that is " + what + "; let it lead to another file";
}

Result<std::unique_ptr<FileTarget>> SimulatedFiles::FindTarget(const std::string& path,
                                                               const LinkRules& rules) {
  ++operations;
  if (path.empty()) return Cannot("write", path, "Invalid argument; choose the name of a file");
  const std::string normal = Normal(path);
  std::string behind;
  if (std::string why = WhyNoTarget(normal, rules, behind); !why.empty()) return Cannot("write", path, why);
  const std::string& shown = behind == normal ? path : behind;
  return std::unique_ptr<FileTarget>(std::make_unique<Target>(*this, shown, behind));
}

Outcome SimulatedFiles::CreateFolders(const std::string& path) {
  if (std::string why = Refusal("CreateFolders", path); !why.empty())
    return Cannot("create folder", path, why);
  std::string normal = Normal(path);
  for (std::size_t end = 1; end <= normal.size(); ++end) {
    if (end < normal.size() && normal[end] != '/') continue;
    auto [folder, isNew] = files_.try_emplace(normal.substr(0, end), Folder());
    if (!folder->second.isFolder) return Cannot("create folder", path, "Not a directory");
  }
  return {};
}

Result<std::vector<std::string>> SimulatedFiles::List(const std::string& folder) {
  if (std::string why = Refusal("List", folder); !why.empty()) return Cannot("list", folder, why);
  std::string normal = Normal(folder);
  auto found = files_.find(normal);
  if (found == files_.end()) return Cannot("list", folder, WhyMissing(normal));
  if (!found->second.isFolder) return Cannot("list", folder, "Not a directory");
  std::vector<std::string> names;
  for (const auto& [path, file] : files_)
    if (path != normal && ParentOf(path) == normal) names.push_back(path.substr(path.rfind('/') + 1));
  return names;
}

Result<std::string> SimulatedFiles::MakeTempFile(const std::string& prefix) {
  if (std::string why = Refusal("MakeTempFile", prefix); !why.empty())
    return Cannot("create a temporary file in", "/tmp", why);
  std::string path = "/tmp/" + prefix + std::to_string(nextTemp_++);
  Touch(files_[path]);
  Observe("MakeTempFile", path);
  return path;
}

std::size_t SimulatedFiles::DeleteLeftTempFiles(const std::string& prefix) {
  ++operations;
  const std::string start = "/tmp/" + prefix;
  return std::erase_if(files_, [&](const auto& one) {
    const auto& [path, file] = one;
    return path.rfind(start, 0) == 0 && path.find_first_not_of("0123456789", start.size()) == path.npos &&
           file.changed < startedAt_;
  });
}

std::string SimulatedFiles::Contents(const std::string& path) {
  auto found = files_.find(Behind(Normal(path)));
  return found == files_.end() ? std::string() : found->second.bytes;
}

bool SimulatedFiles::Exists(const std::string& path) {
  return files_.count(Normal(path)) != 0;
}

void SimulatedFiles::Put(const std::string& path, std::string bytes) {
  std::string normal = Normal(path);
  for (std::string folder = ParentOf(normal); !folder.empty() && folder != "/"; folder = ParentOf(folder))
    files_.try_emplace(folder, Folder());
  File& file = files_[normal];
  file.bytes = std::move(bytes);
  Touch(file);
}

void SimulatedFiles::PutSpecial(const std::string& path) {
  Put(path, {});
  files_[Normal(path)].isSpecial = true;
}

void SimulatedFiles::SetOpenToAll(const std::string& path, bool open) {
  files_.at(Normal(path)).openToAll = open;
}

void SimulatedFiles::PutLink(const std::string& path, const std::string& to) {
  Put(path, {});
  files_[Normal(path)].linksTo = to;
}

void SimulatedFiles::SetModified(const std::string& path, std::int64_t modified) {
  File& file = files_.at(Normal(path));
  file.modified = file.changed = modified;
}

}  // namespace zeb
