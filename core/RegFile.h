// RegFile: settings as the text of `.reg` files, the form in which stations keep and move them.
//
// Reads version 5.00 (UTF-16 with a byte order mark, UTF-8 with or without) and REGEDIT4 (Windows-1252);
// writes version 5.00 in UTF-8. Only the machine-wide hive is taken; keys of other hives are skipped and
// counted. "WOW6432Node" in a path is passed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/SettingsTree.h"
#include "platform/Result.h"
#include "platform/SettingsHive.h"

namespace zeb {

inline constexpr std::uint64_t kMaxRegFileBytes = 64u * 1024 * 1024;

struct RegChange {
  enum Kind { kCreateKey, kDeleteKey, kWriteValue, kDeleteValue };
  Kind kind = kCreateKey;
  std::string key;      // below the machine-wide hive: "Software\Hexmoor\..."
  SettingsValue value;  // for kWriteValue; its name for kDeleteValue
};

struct RegChanges {
  std::vector<RegChange> changes;  // in the file's order
  std::size_t skippedKeys = 0;     // of other hives
  std::size_t skippedValues = 0;   // outside of Software\Hexmoor, of types that the hive cannot hold
};

struct RegSummary {
  std::size_t values = 0;         // written
  std::size_t deletions = 0;      // of keys and values
  std::size_t skippedKeys = 0;    // as above
  std::size_t skippedValues = 0;  // as above
  std::string Text() const;  // one line: "120 values imported, 1 deletion; 2 keys of other hives skipped"
};

// The whole file, or what is wrong with it, naming the line ("line 700: ..."). A text list (hex(7)) becomes
// one text with line feeds between its parts.
Result<RegChanges> ParseRegFile(std::string_view bytes);
// Applies what a file says, all of it or nothing.
Result<RegSummary> ApplyRegChanges(SettingsHive& hive, const RegChanges& changes);
// Reads and applies a file's bytes, all of it or nothing.
Result<RegSummary> ImportRegFile(SettingsHive& hive, std::string_view bytes);

// The key with everything below it, sorted, with CR LF line ends and no byte order mark. Reading it gives
// back exactly what it was made from. Throws SettingsError as the hive does.
std::string ExportRegFile(SettingsHive& hive, const std::string& key);
// The same of a tree that has been read, as if it stood at that key.
std::string RegFileText(const std::string& key, const SettingsTree& tree);

}  // namespace zeb
