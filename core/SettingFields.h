// SettingFields: settings as tables: each is named once, and loading, saving, comparing and asking for it all
// read its row.
//
// A thing keeps its settings in a plain struct whose initial values are the defaults; its table names the
// struct's members. Numbers of outputs are put behind the names ("ServerPort2"); a pair's values have its
// output before them too ("Output2.AddNoCache1"). What the hive cannot do throws SettingsError.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/SettingsHive.h"
#include "text/Encodings.h"

namespace zeb {

// Whether a number is stored as a number or as its decimal text. The two kinds grew over the years, and other
// programs of the station read the values, so each keeps its own.
enum class StoredAs { kText, kNumber };

// What may be entered for a setting, beyond what its member's type says. Reading does not ask: what other
// programs have stored stays as it is.
enum class SettingIs {
  kPlain,
  kNumber,     // a number, also where the member is a text
  kNeededFile  // a file that is there; relative names start from the data folder
};
struct SettingEntry {
  SettingIs is = SettingIs::kPlain;
  std::int32_t least = std::numeric_limits<std::int32_t>::min();
  std::int32_t most = std::numeric_limits<std::int32_t>::max();
  std::string_view words = {};  // "html|xml": one of these; a text may also be empty
  bool offered = true;          // false: the program keeps it for itself
};
inline constexpr SettingEntry kPortEntry{.is = SettingIs::kNumber, .least = 1, .most = 65535};
inline constexpr SettingEntry kCountEntry{.is = SettingIs::kNumber, .least = 0};
inline constexpr SettingEntry kEscapeEntry{.words = "html|xml|json|auto"};
inline constexpr SettingEntry kNeededFileEntry{.is = SettingIs::kNeededFile};

template <class S>
struct SettingRow {
  std::string_view name;
  std::variant<std::string S::*, std::int32_t S::*, bool S::*, CharacterSet S::*> member;
  StoredAs storedAs = StoredAs::kText;
  bool secret = false;  // a password: never shown
  // A number outside these is brought to the nearer one when it is read.
  std::int32_t least = std::numeric_limits<std::int32_t>::min();
  std::int32_t most = std::numeric_limits<std::int32_t>::max();
  SettingEntry entry = {};
};

template <class S>
using SettingTable = std::span<const SettingRow<S>>;

namespace detail {
// `value` is the default and becomes what is stored.
void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& name, std::string& value);
void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& name, std::int32_t& value);
void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& name, bool& value);
void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& name, CharacterSet& value);
std::string SettingName(std::string_view prefix, std::string_view name, std::string_view suffix);
std::string SettingText(const std::string& value);
std::string SettingText(std::int32_t value);
std::string SettingText(bool value);
std::string SettingText(CharacterSet value);
// What the members are at first. Not inlined: g++ 12 else sees a struct that is smaller than a text, and
// warns of the text that it cannot hold.
template <class S>
[[gnu::noinline]] const S& DefaultsOf() {
  static const S defaults{};
  return defaults;
}
inline std::int32_t SettingNumber(std::int32_t value) {
  return value;
}
inline std::int32_t SettingNumber(bool value) {
  return value ? 1 : 0;
}
}  // namespace detail

// Reads every row; what is not stored gets the struct's initial value.
template <class S>
void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& suffix,
                 const SettingRow<S>& row, S& to, std::string_view prefix = {}) {
  std::visit(
      [&](auto member) {
        to.*member = detail::DefaultsOf<S>().*member;
        detail::ReadSetting(hive, key, detail::SettingName(prefix, row.name, suffix), to.*member);
      },
      row.member);
  if (const auto* member = std::get_if<std::int32_t S::*>(&row.member))
    to.** member = std::min(std::max(to.**member, row.least), row.most);
}

template <class S>
void ReadSettings(SettingsHive& hive, const std::string& key, const std::string& suffix,
                  SettingTable<S> table, S& to, std::string_view prefix = {}) {
  for (const SettingRow<S>& row : table) ReadSetting(hive, key, suffix, row, to, prefix);
}

template <class S>
void WriteSetting(SettingsHive& hive, const std::string& key, const std::string& name,
                  const SettingRow<S>& row, const S& from) {
  std::visit(
      [&](auto member) {
        if constexpr (requires { detail::SettingNumber(from.*member); }) {
          if (row.storedAs == StoredAs::kNumber)
            return hive.WriteNumber(key, name, detail::SettingNumber(from.*member));
        }
        hive.WriteText(key, name, detail::SettingText(from.*member));
      },
      row.member);
}

template <class S>
void WriteSettings(SettingsHive& hive, const std::string& key, const std::string& suffix,
                   SettingTable<S> table, const S& from, std::string_view prefix = {}) {
  for (const SettingRow<S>& row : table)
    WriteSetting(hive, key, detail::SettingName(prefix, row.name, suffix), row, from);
}

// Those only that `after` has otherwise than `before`.
template <class S>
void WriteChanges(SettingsHive& hive, const std::string& key, SettingTable<S> table, const S& before,
                  const S& after) {
  for (const SettingRow<S>& row : table)
    std::visit(
        [&](auto member) {
          if (before.*member != after.*member) WriteSetting(hive, key, std::string(row.name), row, after);
        },
        row.member);
}

// Where `after` differs from `before`, `to` becomes as `after`: what one person changed stays when others
// changed something else meanwhile.
template <class S>
void TakeChanges(SettingTable<S> table, const S& before, const S& after, S& to) {
  for (const SettingRow<S>& row : table)
    std::visit(
        [&](auto member) {
          if (before.*member != after.*member) to.*member = after.*member;
        },
        row.member);
}

// A row without its struct: what a command or a dialog needs to know to ask for the setting.
struct SettingInfo {
  enum class Kind { kText, kNumber, kYesNo, kCharacterSet };
  std::string_view name;
  Kind kind = Kind::kText;
  StoredAs storedAs = StoredAs::kText;
  bool secret = false;
  SettingEntry entry;     // its range is within the one that reading keeps to
  std::string byDefault;  // as text
};
using SettingList = std::vector<SettingInfo>;

template <class S>
SettingInfo InfoOf(const SettingRow<S>& row) {
  using Kind = SettingInfo::Kind;
  // By the place of the member's type in SettingRow.
  constexpr std::array kKinds = {Kind::kText, Kind::kNumber, Kind::kYesNo, Kind::kCharacterSet};
  SettingInfo info{row.name, kKinds.at(row.member.index()), row.storedAs, row.secret, row.entry, {}};
  info.entry.least = std::max(row.least, row.entry.least);
  info.entry.most = std::min(row.most, row.entry.most);
  std::visit([&](auto member) { info.byDefault = detail::SettingText(detail::DefaultsOf<S>().*member); },
             row.member);
  return info;
}

// What is offered of the table.
template <class S>
SettingList ListOf(SettingTable<S> table) {
  SettingList list;
  for (const SettingRow<S>& row : table)
    if (row.entry.offered) list.push_back(InfoOf(row));
  return list;
}

// "name=value" lines, for telling whether two are set alike.
template <class S>
std::string SettingsText(SettingTable<S> table, const S& from) {
  std::string text;
  for (const SettingRow<S>& row : table) {
    text.append(row.name).append("=");
    std::visit([&](auto member) { text += detail::SettingText(from.*member); }, row.member);
    text += '\n';
  }
  return text;
}

}  // namespace zeb
