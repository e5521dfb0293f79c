#include "platform/windows/WinTarget.h"

#include <aclapi.h>
#include <sddl.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/windows/PutInPlace.h"
#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"
#include "platform/windows/WinFileInfo.h"
#include "text/LetterCase.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr int kTries = 3;
constexpr std::size_t kCopyBlock = 256u * 1024;
constexpr const char* kChooseFile = "; choose the name of a file";

std::string LastError() {
  return SystemErrorText(GetLastError());
}

// The rights on a file, as they are set on it and not handed down.
using Rights = std::vector<unsigned char>;

Rights ReadRights(const std::string& path) {
  const std::wstring name = SystemPath(path);
  DWORD size = 0;
  GetFileSecurityW(name.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  Rights rights(size);
  if (size == 0 || GetFileSecurityW(name.c_str(), DACL_SECURITY_INFORMATION, rights.data(), size, &size) == 0)
    return {};
  return rights;
}

// A descriptor of rights made from text, for as long as it is used.
class NewRights {
 public:
  explicit NewRights(const wchar_t* text) {
    PSECURITY_DESCRIPTOR made = nullptr;
    ConvertStringSecurityDescriptorToSecurityDescriptorW(text, SDDL_REVISION_1, &made, nullptr);
    attributes_.nLength = sizeof attributes_;
    attributes_.lpSecurityDescriptor = made;
  }
  ~NewRights() { LocalFree(attributes_.lpSecurityDescriptor); }
  NewRights(const NewRights&) = delete;
  NewRights& operator=(const NewRights&) = delete;
  SECURITY_ATTRIBUTES* Get() { return &attributes_; }

 private:
  SECURITY_ATTRIBUTES attributes_{};
};

// The file's owner, the system and administrators; nothing is handed down from the folder.
constexpr const wchar_t* kPrivateRights = L"D:P(A;;FA;;;OW)(A;;FA;;;SY)(A;;FA;;;BA)";

class WinTarget : public FileTarget {
 public:
  WinTarget(std::string path, bool replaces, std::int64_t startedAt)
      : path_(std::move(path)), replaces_(replaces), startedAt_(startedAt) {}

  const std::string& Path() const override { return path_; }

  Outcome Replace(std::string_view bytes) override {
    return Put("write", [&](const WinHandle& file) { return Written(file, bytes); });
  }

  Outcome ReplacePrivately(std::string_view bytes) override {
    NewRights rights(kPrivateRights);
    return Put(
        "write", [&](const WinHandle& file) { return Written(file, bytes); }, &rights);
  }

  Outcome ReplaceByCopy(FileReader& source, std::int64_t modified) override {
    return Put("copy a file to", [&](const WinHandle& file) {
      std::string why = CopyContents(source, file);
      FILE_BASIC_INFO times{};
      times.LastWriteTime = FileTimeOf(modified);
      // Some shares refuse to set times; the contents are what matters.
      if (why.empty()) SetFileInformationByHandle(file.Get(), FileBasicInfo, &times, sizeof times);
      return why;
    });
  }

  bool RemoveLeftOver() override {
    const std::string left = WorkName(path_);
    const auto info = InfoOfPath(left);
    return info && info->isRegular && info->changed < startedAt_ &&
           DeleteFileW(SystemPath(left).c_str()) != 0;
  }

 private:
  static std::string Written(const WinHandle& file, std::string_view bytes) {
    return WriteAll(file, bytes) ? std::string() : LastError();
  }

  // `fill` gives the reason when it fails.
  template <class Fill>
  Outcome Put(const std::string& verb, const Fill& fill, NewRights* rights = nullptr) {
    const std::string work = WorkName(path_);
    WinHandle file;
    if (std::string why = Make(work, rights, file); !why.empty()) return Cannot(verb, path_, why);
    if (replaces_ && rights == nullptr) TakeOverRights(work);
    std::string why = fill(file);
    if (why.empty() && !file.Close()) why = LastError();
    if (why.empty() && !Publish(work)) why = LastError();
    if (why.empty()) return {};
    file.Close();
    DeleteFileW(SystemPath(work).c_str());
    return Cannot(verb, path_, why);
  }

  std::string Make(const std::string& work, NewRights* rights, WinHandle& file) const {
    for (int i = 0; i < kTries; ++i) {
      file = OpenFileSharing(work, GENERIC_WRITE | FILE_READ_ATTRIBUTES, CREATE_NEW,
                             FILE_FLAG_OPEN_REPARSE_POINT | FILE_ATTRIBUTE_NORMAL,
                             rights != nullptr ? rights->Get() : nullptr);
      if (file.IsOpen()) return {};
      if (GetLastError() != ERROR_FILE_EXISTS) return LastError();
      // Removes a link itself, not what it leads to.
      if (DeleteFileW(SystemPath(work).c_str()) == 0 && GetLastError() != ERROR_FILE_NOT_FOUND)
        return "'" + work + "' is in the way and cannot be removed: " + LastError();
    }
    return "somebody makes '" + work + "' again and again";
  }

  // What people set on a published file outlives its replacement. Not being allowed to is no failure.
  void TakeOverRights(const std::string& work) const {
    const Rights rights = ReadRights(path_);
    if (rights.empty()) return;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    auto* const descriptor = const_cast<unsigned char*>(rights.data());
    if (GetSecurityDescriptorControl(descriptor, &control, &revision) == 0) return;
    if ((control & SE_DACL_PROTECTED) != 0)
      SetFileSecurityW(SystemPath(work).c_str(),
                       DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION, descriptor);
  }

  bool Publish(const std::string& work) const { return PutInPlace(SystemPath(work), SystemPath(path_)); }

  // A growing file is not followed for ever.
  static std::string CopyContents(FileReader& source, const WinHandle& file) {
    std::uint64_t left = source.Size();
    std::string block(static_cast<std::size_t>(std::min<std::uint64_t>(left, kCopyBlock)), '\0');
    while (left > 0) {
      const Result<std::size_t> got =
          source.Read(block.data(), static_cast<std::size_t>(std::min<std::uint64_t>(left, block.size())));
      if (!got) return got.Reason();
      if (got.Value() == 0) break;
      if (!WriteAll(file, std::string_view(block).substr(0, got.Value()))) return LastError();
      left -= got.Value();
    }
    return {};
  }

  const std::string path_;
  const bool replaces_;
  const std::int64_t startedAt_;
};

// Names that are devices in every folder, also with an ending.
bool IsDeviceName(std::string_view name) {
  const std::string_view stem = name.substr(0, name.find('.'));
  constexpr std::array<std::string_view, 4> kDevices = {"CON", "PRN", "AUX", "NUL"};
  for (const std::string_view device : kDevices)
    if (EqualIgnoringAsciiCase(stem, device)) return true;
  return stem.size() == 4 && stem[3] >= '1' && stem[3] <= '9' &&
         (EqualIgnoringAsciiCase(stem.substr(0, 3), "COM") ||
          EqualIgnoringAsciiCase(stem.substr(0, 3), "LPT"));
}

bool IsLink(const std::string& path) {
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW(SystemPath(path).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         found.dwReserved0 == IO_REPARSE_TAG_SYMLINK;
}

// Where the folder really is, with a separator behind it; "" when it cannot be found.
std::string RealFolder(const std::string& folder) {
  const WinHandle open =
      OpenFileSharing(folder, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  std::string path = open.IsOpen() ? PathOf(open) : std::string();
  if (!path.empty() && path.back() != '\\') path += '\\';
  return path;
}

bool StartsWith(const std::string& path, const std::string& folder) {
  const std::wstring whole = Wide(path), start = Wide(folder);
  return whole.size() >= start.size() &&
         CompareStringOrdinal(whole.data(), static_cast<int>(start.size()), start.data(),
                              static_cast<int>(start.size()), TRUE) == CSTR_EQUAL;
}

Result<std::unique_ptr<FileTarget>> FollowLink(const std::string& path, const LinkRules& rules,
                                               std::int64_t startedAt) {
  const auto refused = [&path](const std::string& what) {
    return Cannot("write", path, "it is a link, and " + what);
  };
  const WinHandle behind =
      OpenFileSharing(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  if (!behind.IsOpen())
    return refused("what it leads to cannot be opened (" + LastError() + "); make an empty file there first");
  const auto info = InfoOf(behind);
  const std::string real = PathOf(behind);
  if (!info || !info->isRegular || real.empty())
    return refused("it leads to something else than a file; let it lead to another file");
  if (!rules.notBelow.empty()) {
    const std::string kept = RealFolder(rules.notBelow);
    if (kept.empty() || StartsWith(real, kept))
      return refused("it leads into ZEB's data folder; let it lead to another file");
  }
  if (!rules.notFile.empty())
    if (const auto kept = InfoOfPath(rules.notFile);
        kept && kept->inode == info->inode && kept->device == info->device)
      return refused("it leads to the template itself; let it lead to another file");
  return std::unique_ptr<FileTarget>(std::make_unique<WinTarget>(real, true, startedAt));
}

}  // namespace

Result<std::unique_ptr<FileTarget>> FindWinTarget(const std::string& path, const LinkRules& rules,
                                                  std::int64_t startedAt) {
  if (SystemPath(path).empty())
    return Cannot("write", path, SystemErrorText(ERROR_INVALID_NAME) + kChooseFile);
  if (IsDeviceName(FileNamePart(path)))
    return Cannot("write", path, std::string("it is the name of a device") + kChooseFile);
  bool isThere = false;
  if (IsLink(path)) {
    if (rules.follow) return FollowLink(path, rules, startedAt);
  } else if (const auto info = InfoOfPath(path)) {
    if (!info->isRegular)
      return Cannot(
          "write", path,
          (info->isFolder ? std::string("it is a folder") : std::string("it is a device")) + kChooseFile);
    isThere = true;
  }
  return std::unique_ptr<FileTarget>(std::make_unique<WinTarget>(path, isThere, startedAt));
}

}  // namespace zeb
