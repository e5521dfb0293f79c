#include "platform/windows/RegistryTree.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"

namespace zeb {
namespace {

constexpr DWORD kMostKeyUnits = 255;
constexpr DWORD kMostNameUnits = 16383;
constexpr std::size_t kUsualDataBytes = 4096;
// What a registry holds may be more than the hive's bound; this much is read and kept.
constexpr std::size_t kMostDataBytes = 16 * 1024 * 1024;

// What other programs stored may lack the end mark, or half a unit.
std::wstring TextOf(const std::string& data) {
  std::wstring text(data.size() / sizeof(wchar_t), L'\0');
  std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
  if (text.ends_with(L'\0')) text.pop_back();
  return text;
}

std::string LinesOf(const std::string& data) {
  std::wstring list = TextOf(data);
  if (list.ends_with(L'\0')) list.pop_back();  // the list's own end
  std::replace(list.begin(), list.end(), L'\0', L'\n');
  return Narrow(list);
}

std::optional<SettingsData> NumberOf(const std::string& data, std::size_t bytes, bool bigEndian) {
  if (data.size() != bytes) return std::nullopt;
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto byte = static_cast<unsigned char>(data[bigEndian ? i : 3 - i]);
    number = number << 8 | byte;
  }
  return number;
}

bool IsMissing(LSTATUS status) {
  return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND || status == ERROR_KEY_DELETED;
}

HKEY SystemRoot(RegistryTree::Root root) {
  return root == RegistryTree::Root::kMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// The calls take names up to the first character of code 0.
bool IsName(const std::wstring& name) {
  return name.size() <= kMostNameUnits && name.find(L'\0') == std::wstring::npos;
}

bool IsPath(std::wstring_view path) {
  if (path.find(L'\0') != std::wstring_view::npos) return false;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find(L'\\'), path.size());
    if (end > kMostKeyUnits) return false;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return true;
}

}  // namespace

RegistryValue ToRegistry(const std::string& name, const SettingsData& data) {
  if (const auto* number = std::get_if<std::uint32_t>(&data)) {
    std::string bytes(sizeof *number, '\0');
    std::memcpy(bytes.data(), number, sizeof *number);
    return {name, REG_DWORD, bytes};
  }
  const std::wstring text = Wide(std::get<std::string>(data));
  std::string bytes((text.size() + 1) * sizeof(wchar_t), '\0');
  std::memcpy(bytes.data(), text.data(), text.size() * sizeof(wchar_t));
  return {name, REG_SZ, bytes};
}

std::optional<SettingsData> FromRegistry(const RegistryValue& value) {
  switch (value.kind) {
    case REG_SZ:
    case REG_EXPAND_SZ:
      return Narrow(TextOf(value.data));
    case REG_MULTI_SZ:
      return LinesOf(value.data);
    case REG_DWORD:
      return NumberOf(value.data, 4, false);
    case REG_DWORD_BIG_ENDIAN:
      return NumberOf(value.data, 4, true);
    case REG_QWORD:
      return NumberOf(value.data, 8, false);
    default:
      return std::nullopt;
  }
}

RegistryTree::Key::~Key() {
  if (handle_ != nullptr) RegCloseKey(handle_);
}

std::wstring RegistryTree::SystemPath(const std::string& key) const {
  return Wide(top_.empty() || key.empty() ? top_ + key : top_ + "\\" + key);
}

std::string RegistryTree::ShownPath(const std::string& key) const {
  const std::string path = Narrow(SystemPath(key));
  return (root_ == Root::kMachine ? "HKEY_LOCAL_MACHINE" : "HKEY_CURRENT_USER") +
         (path.empty() ? "" : "\\" + path);
}

void RegistryTree::Changing() const {
  if (beforeChange) beforeChange();
}

void RegistryTree::Check(long status, const char* deed, const std::string& key) const {
  if (status == ERROR_SUCCESS) return;
  std::string reason = std::string("cannot ") + deed + " registry key '" + ShownPath(key) +
                       "': " + SystemErrorText(static_cast<unsigned long>(status));
  if (status == ERROR_ACCESS_DENIED)
    reason += "; run this as administrator, or let the installer set the rights on this key";
  throw SettingsError(reason);
}

RegistryTree::Key RegistryTree::OpenBelow(HKEY above, const std::wstring& path, const std::string& key,
                                          unsigned long rights) const {
  if (!IsPath(path)) return Key();
  HKEY opened = nullptr;
  const LSTATUS status = RegOpenKeyExW(above, path.c_str(), 0, rights | KEY_WOW64_32KEY, &opened);
  if (IsMissing(status)) return Key();
  Check(status, "open", key);
  return Key(opened);
}

RegistryTree::Key RegistryTree::Open(const std::string& key, unsigned long rights) const {
  if (reading_ && key.find('\\') != std::string::npos) return OpenByHandle(key, rights);
  return OpenBelow(SystemRoot(root_), SystemPath(key), key, rights);
}

// Of a service's keys the first is its own; so one handle serves all services.
RegistryTree::Key RegistryTree::OpenByHandle(const std::string& key, unsigned long rights) const {
  if (!above_ || !key.starts_with(abovePath_)) {
    const std::string above = key.substr(0, key.rfind('\\'));
    above_ = OpenBelow(SystemRoot(root_), SystemPath(above), above, KEY_QUERY_VALUE);
    abovePath_ = above + '\\';
  }
  if (!above_) return Key();
  return OpenBelow(above_.Handle(), Wide(key.substr(abovePath_.size())), key, rights);
}

void RegistryTree::BeginReading() {
  reading_ = true;
}

void RegistryTree::EndReading() {
  reading_ = false;
  above_ = Key();
}

RegistryTree::Key RegistryTree::OpenToChange(const std::string& key) const {
  Key opened = Open(key, KEY_SET_VALUE | KEY_QUERY_VALUE);
  if (!opened) Check(ERROR_FILE_NOT_FOUND, "open", key);
  return opened;
}

bool RegistryTree::Exists(const std::string& key) const {
  return static_cast<bool>(Open(key, KEY_QUERY_VALUE));
}

std::vector<std::string> RegistryTree::SubKeys(const std::string& key) const {
  std::vector<std::string> names;
  const Key opened = Open(key, KEY_ENUMERATE_SUB_KEYS);
  if (!opened) return names;
  for (DWORD at = 0;; ++at) {
    wchar_t name[kMostKeyUnits + 1];
    DWORD units = ARRAYSIZE(name);
    const LSTATUS status =
        RegEnumKeyExW(opened.Handle(), at, name, &units, nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_NO_MORE_ITEMS) return names;
    Check(status, "list", key);
    names.push_back(Narrow({name, units}));
  }
}

std::vector<RegistryValue> RegistryTree::Values(const std::string& key) const {
  std::vector<RegistryValue> values;
  const Key opened = Open(key, KEY_QUERY_VALUE);
  if (!opened) return values;
  std::wstring name(kMostNameUnits + 1, L'\0');
  std::string data(kUsualDataBytes, '\0');
  for (DWORD at = 0;;) {
    auto units = static_cast<DWORD>(name.size());
    auto bytes = static_cast<DWORD>(data.size());
    DWORD kind = REG_NONE;
    const LSTATUS status = RegEnumValueW(opened.Handle(), at, name.data(), &units, nullptr, &kind,
                                         reinterpret_cast<BYTE*>(data.data()), &bytes);
    if (status == ERROR_NO_MORE_ITEMS) return values;
    if (status == ERROR_MORE_DATA && data.size() < kMostDataBytes) {
      data.resize(std::max<std::size_t>(bytes, data.size() * 2));
      continue;
    }
    Check(status, "read", key);
    values.push_back({Narrow({name.data(), units}), kind, data.substr(0, bytes)});
    ++at;
  }
}

std::optional<RegistryValue> RegistryTree::Read(const std::string& key, const std::string& name) const {
  const std::wstring wideName = Wide(name);
  const Key opened = Open(key, KEY_QUERY_VALUE);
  if (!opened || !IsName(wideName)) return std::nullopt;
  RegistryValue value{name, REG_NONE, std::string(kUsualDataBytes, '\0')};
  for (;;) {
    auto bytes = static_cast<DWORD>(value.data.size());
    const LSTATUS status = RegQueryValueExW(opened.Handle(), wideName.c_str(), nullptr, &value.kind,
                                            reinterpret_cast<BYTE*>(value.data.data()), &bytes);
    if (IsMissing(status)) return std::nullopt;
    const bool more = status == ERROR_MORE_DATA && value.data.size() < kMostDataBytes;
    if (!more) Check(status, "read", key);
    value.data.resize(bytes);
    if (!more) return value;
  }
}

void RegistryTree::Create(const std::string& key) const {
  const std::wstring path = SystemPath(key);
  if (!IsPath(path))
    throw SettingsError("cannot make registry key '" + ShownPath(key).substr(0, 120) +
                        "...': a part of its path is longer than 255 characters");
  Changing();
  HKEY made = nullptr;
  Check(RegCreateKeyExW(SystemRoot(root_), path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_QUERY_VALUE | KEY_WOW64_32KEY, nullptr, &made, nullptr),
        "make", key);
  const Key closed(made);
}

void RegistryTree::Delete(const std::string& key) const {
  for (const std::string& name : SubKeys(key)) Delete(key.empty() ? name : key + "\\" + name);
  if (key.empty()) {
    for (const RegistryValue& value : Values(key)) Remove(key, value.name);
    return;
  }
  Changing();
  const LSTATUS status = RegDeleteKeyExW(SystemRoot(root_), SystemPath(key).c_str(), KEY_WOW64_32KEY, 0);
  if (!IsMissing(status)) Check(status, "delete", key);
}

void RegistryTree::Write(const std::string& key, const std::vector<RegistryValue>& values) const {
  if (values.empty()) return;
  const Key opened = OpenToChange(key);
  for (const RegistryValue& value : values) {
    const std::wstring name = Wide(value.name);
    if (!IsName(name))
      throw SettingsError("cannot write to registry key '" + ShownPath(key) +
                          "': a value's name is longer than 16383 characters or holds one of code 0");
    Changing();
    Check(RegSetValueExW(opened.Handle(), name.c_str(), 0, value.kind,
                         reinterpret_cast<const BYTE*>(value.data.data()),
                         static_cast<DWORD>(value.data.size())),
          "write to", key);
  }
}

void RegistryTree::Remove(const std::string& key, const std::string& name) const {
  const Key opened = Open(key, KEY_SET_VALUE | KEY_QUERY_VALUE);
  if (!opened) return;
  const std::wstring wideName = Wide(name);
  if (!IsName(wideName)) return;
  Changing();
  const LSTATUS status = RegDeleteValueW(opened.Handle(), wideName.c_str());
  if (!IsMissing(status)) Check(status, "write to", key);
}

void RegistryTree::Flush(const std::string& key) const {
  const Key opened = Open(key, KEY_QUERY_VALUE);
  if (opened) RegFlushKey(opened.Handle());
}

}  // namespace zeb
