// SettingsHive: the machine-wide tree of keys, each with named text and number values.
//
// Keys are paths ("Software\Hexmoor\ZEB v3\Profiles\Profile1\Service1"); keys and value names are compared
// without regard to case and keep the case in which they were first written. Used on the loop's thread only.
// A failure of the store itself (disk full, file locked for longer than the time-out, file damaged) throws
// SettingsError with a one-line reason; a missing key or value is no failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zeb {

class SettingsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A number is a 32-bit value, stored as unsigned and read as signed, as registries do.
using SettingsData = std::variant<std::string, std::uint32_t>;

struct SettingsValue {
  std::string name;
  SettingsData data;
};

class SettingsHive {
 public:
  virtual ~SettingsHive() = default;

  virtual bool KeyExists(const std::string& key) = 0;
  virtual std::vector<std::string> SubKeys(const std::string& key) = 0;   // names, sorted
  virtual std::vector<SettingsValue> Values(const std::string& key) = 0;  // sorted by name
  virtual bool HasValue(const std::string& key, const std::string& name) = 0;

  // A value of the other kind is converted: a number gives its decimal text, a text its leading number.
  virtual std::string ReadText(const std::string& key, const std::string& name,
                               const std::string& byDefault) = 0;
  virtual std::int32_t ReadNumber(const std::string& key, const std::string& name,
                                  std::int32_t byDefault) = 0;
  virtual void WriteText(const std::string& key, const std::string& name, const std::string& text) = 0;
  virtual void WriteNumber(const std::string& key, const std::string& name, std::int32_t number) = 0;
  virtual void CreateKey(const std::string& key) = 0;
  virtual void DeleteKey(const std::string& key) = 0;  // with everything below it
  virtual void DeleteValue(const std::string& key, const std::string& name) = 0;

  // Runs `changes` so that all of them are stored or, when it throws, none. May be nested; the outermost
  // call decides.
  virtual void Transaction(const std::function<void()>& changes) = 0;
  // Runs `reads` on one state of the store, whatever others write meanwhile.
  virtual void ReadTransaction(const std::function<void()>& reads) { Transaction(reads); }
};

// What a hive holds at most; a write above it throws SettingsError.
inline constexpr std::size_t kMaxSettingsKeyBytes = 16 * 1024;
inline constexpr std::size_t kMaxSettingsNameCharacters = 16383;
inline constexpr std::size_t kMaxSettingsTextBytes = 1024 * 1024;

// For implementations of hives. The path without empty parts ("\A\\B\" is "A\B").
std::string NormalSettingsKey(std::string_view key);
// Throw SettingsError, naming the key, for what is above the bounds.
void CheckSettingsKey(std::string_view key);
void CheckSettingsValue(std::string_view key, std::string_view name, std::string_view text);

}  // namespace zeb
