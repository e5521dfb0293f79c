#include "platform/simulated/SimulatedFiles.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace zeb {
namespace {

constexpr const char* kMissing = "No such file or directory";

// One separator at a time, none at the end, and no ".".
std::string Normal(const std::string& path) {
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
  Reader(SimulatedFiles& files, std::string path, std::string bytes)
      : files_(files), path_(std::move(path)), bytes_(std::move(bytes)) {}
  std::uint64_t Size() const override { return bytes_.size(); }
  Result<std::size_t> Read(char* to, std::size_t most) override {
    if (std::string why = files_.Refusal("Read", path_); !why.empty()) return Cannot("read", path_, why);
    const std::size_t got = bytes_.copy(to, most, at_);
    at_ += got;
    return got;
  }

 private:
  SimulatedFiles& files_;
  const std::string path_, bytes_;
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

bool SimulatedFiles::HoldsFiles(const std::string& folder) const {
  return std::any_of(files_.begin(), files_.end(),
                     [&](const auto& one) { return IsBelow(one.first, folder); });
}

void SimulatedFiles::Observe(const char* operation, const std::string& path) const {
  if (observe) observe(operation, path);
}

void SimulatedFiles::Touch(File& file) {
  file.modified = file.changed = clock_++;
  if (file.inode == 0) file.inode = nextInode_++;
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
  auto found = files_.find(Normal(path));
  if (found == files_.end()) return std::nullopt;
  const File& file = found->second;
  FileInfo info;
  info.size = file.bytes.size();
  info.modified = file.modified;
  info.changed = file.changed;
  info.inode = file.inode;
  info.seen = now;
  info.isFolder = file.isFolder;
  info.isRegular = !file.isFolder && !file.isSpecial;
  return info;
}

Result<std::string> SimulatedFiles::Read(const std::string& path, std::uint64_t limit) {
  if (std::string why = Refusal("Read", path); !why.empty()) return Cannot("read", path, why);
  auto found = files_.find(Normal(path));
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
  return std::unique_ptr<FileReader>(std::make_unique<Reader>(*this, path, std::move(bytes.Value())));
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

// A file replaces a file, and a folder an empty folder.
std::string SimulatedFiles::CannotRename(const std::string& from, const std::string& to) const {
  const auto source = files_.find(from), target = files_.find(to);
  if (source == files_.end()) return WhyMissing(from);
  if (!source->second.isFolder) return CannotHoldFile(to);
  if (IsBelow(to, from)) return "Invalid argument";
  if (target == files_.end()) return CannotHoldFile(to);
  if (!target->second.isFolder) return "Not a directory";
  return from != to && HoldsFiles(to) ? "Directory not empty" : std::string();
}

Outcome SimulatedFiles::Rename(const std::string& from, const std::string& to) {
  std::string verb = "rename '" + from + "' to";
  if (std::string why = Refusal("Rename", to); !why.empty()) return Cannot(verb, to, why);
  std::string source = Normal(from), target = Normal(to);
  if (std::string why = CannotRename(source, target); !why.empty()) return Cannot(verb, to, why);
  if (source == target) return {};
  std::map<std::string, File> moved;
  for (auto at = files_.begin(); at != files_.end();) {
    const bool moves = at->first == source || IsBelow(at->first, source);
    if (moves) moved[target + at->first.substr(source.size())] = std::move(at->second);
    at = moves ? files_.erase(at) : std::next(at);
  }
  for (auto& [path, file] : moved) files_[path] = std::move(file);
  Observe("Rename", target);
  return {};
}

Outcome SimulatedFiles::Copy(const std::string& from, const std::string& to) {
  std::string verb = "copy '" + from + "' to";
  if (std::string why = Refusal("Copy", to); !why.empty()) return Cannot(verb, to, why);
  std::string source = Normal(from), target = Normal(to);
  auto found = files_.find(source);
  if (found == files_.end()) return Cannot(verb, to, WhyMissing(source));
  if (found->second.isFolder || found->second.isSpecial) return Cannot(verb, to, "it is not a regular file");
  if (source == target) return Cannot(verb, to, "they are the same file");
  if (std::string why = CannotHoldFile(target); !why.empty()) return Cannot(verb, to, why);
  std::int64_t modified = found->second.modified;
  files_.erase(target);
  Observe("Copy", target);
  FillInSteps("Copy", target, files_[source].bytes);
  files_[target].modified = modified;  // not what it says of the last change
  Observe("Copy", target);
  return {};
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

std::string SimulatedFiles::Contents(const std::string& path) {
  auto found = files_.find(Normal(path));
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

void SimulatedFiles::SetModified(const std::string& path, std::int64_t modified) {
  File& file = files_.at(Normal(path));
  file.modified = file.changed = modified;
}

}  // namespace zeb
