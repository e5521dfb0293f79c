// RegistryTree: the keys below one key of the Windows registry, by paths as the settings hive has them. Keys
// and names are compared without regard to case. Always the view of 32-bit programs, where the playout
// system's tools keep their settings.
//
// What the registry refuses throws SettingsError with one line that names the key; a missing key or value is
// no failure, nor is a path that no registry can hold.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/SettingsHive.h"

struct HKEY__;  // what Windows' HKEY points to

namespace zeb {

// A value as the registry holds it.
struct RegistryValue {
  std::string name;
  unsigned long kind;  // REG_SZ and so on
  std::string data;    // its bytes
  bool operator==(const RegistryValue&) const = default;
};

RegistryValue ToRegistry(const std::string& name, const SettingsData& data);
// Any kind of text or number: a text with variables (REG_EXPAND_SZ) as it stands, a list of texts with line
// feeds between them, of 64 bits the lower 32. Nothing for other kinds, which are no settings.
std::optional<SettingsData> FromRegistry(const RegistryValue& value);

class RegistryTree {
 public:
  enum class Root { kMachine, kUser };  // HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER

  // `top` is the path below the root that everything here is below, or empty.
  RegistryTree(Root root, std::string top) : root_(root), top_(std::move(top)) {}

  // Keys below are normal paths (NormalSettingsKey).
  bool Exists(const std::string& key) const;
  std::vector<std::string> SubKeys(const std::string& key) const;  // as the registry sorts them
  std::vector<RegistryValue> Values(const std::string& key) const;
  std::optional<RegistryValue> Read(const std::string& key, const std::string& name) const;

  // The key, made when it is missing, with those above it (32 at most).
  void Create(const std::string& key) const;
  // The key with everything below it; of the top only what is below.
  void Delete(const std::string& key) const;
  // The key must exist.
  void Write(const std::string& key, const std::vector<RegistryValue>& values) const;
  void Remove(const std::string& key, const std::string& name) const;
  // Has the key's part of the registry written to the disk now; when that fails, the system tries again
  // later.
  void Flush(const std::string& key) const;

  // Between these two calls no key is deleted by anybody: reading may then be quicker, by a handle kept open.
  void BeginReading();
  void EndReading();

  // "HKEY_LOCAL_MACHINE\Software\...", for messages.
  std::string ShownPath(const std::string& key) const;

  // Called before each call that changes the registry; what it throws is thrown. For tests.
  std::function<void()> beforeChange;

 private:
  class Key {  // an open one
   public:
    explicit Key(HKEY__* handle = nullptr) : handle_(handle) {}
    Key(Key&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Key& operator=(Key&& other) noexcept {
      std::swap(handle_, other.handle_);
      return *this;
    }
    ~Key();
    explicit operator bool() const { return handle_ != nullptr; }
    HKEY__* Handle() const { return handle_; }

   private:
    HKEY__* handle_;
  };

  Key Open(const std::string& key, unsigned long rights) const;  // empty when there is none
  Key OpenByHandle(const std::string& key, unsigned long rights) const;
  Key OpenBelow(HKEY__* above, const std::wstring& path, const std::string& key, unsigned long rights) const;
  Key OpenToChange(const std::string& key) const;
  void Changing() const;
  void Check(long status, const char* deed, const std::string& key) const;
  std::wstring SystemPath(const std::string& key) const;

  Root root_;
  std::string top_;
  bool reading_ = false;
  // While reading: the key above the one that was opened first, and its path.
  mutable Key above_;
  mutable std::string abovePath_;
};

}  // namespace zeb
