#include "core/EnteredSettings.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/NearestNames.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

using Kind = SettingInfo::Kind;
constexpr std::size_t kMostShown = 60;  // characters of a wrong value

std::string Shown(std::string_view text) {
  const std::string_view first = FirstCharacters(text, kMostShown);
  return "'" + OneLine(std::string(first)) + (first.size() < text.size() ? "...'" : "'");
}

Failure Wrong(const SettingInfo& info, const std::string& takes, std::string_view value) {
  return {std::string(info.name) + " takes " + takes + ", not " + Shown(value)};
}

std::optional<bool> YesOrNo(std::string_view text) {
  for (const std::string_view yes : {"1", "yes", "true", "on"})
    if (EqualIgnoringAsciiCase(text, yes)) return true;
  for (const std::string_view no : {"0", "no", "false", "off"})
    if (EqualIgnoringAsciiCase(text, no)) return false;
  return std::nullopt;
}

Result<std::string> CheckWord(const SettingInfo& info, std::string_view value) {
  const std::vector<std::string_view> words = SplitAt(info.entry.words, "|");
  for (const std::string_view word : words)
    if (EqualIgnoringAsciiCase(word, value)) return std::string(word);
  if (value.empty() && info.kind == Kind::kText) return std::string();
  return Wrong(info, JoinedWithOr(words) + (info.kind == Kind::kText ? ", or nothing" : ""), value);
}

std::string RangeText(const SettingEntry& entry) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (entry.least == Limits::min() && entry.most == Limits::max()) return "a whole number";
  if (entry.most == Limits::max()) return "a whole number from " + std::to_string(entry.least) + " on";
  return "a whole number from " + std::to_string(entry.least) + " to " + std::to_string(entry.most);
}

Result<std::string> CheckNumber(const SettingInfo& info, std::string_view value) {
  if (value.empty() && info.byDefault.empty()) return std::string();
  const auto number = WholeNumber<std::int32_t>(value);
  if (!number || *number < info.entry.least || *number > info.entry.most)
    return Wrong(info, RangeText(info.entry), value);
  return std::to_string(*number);
}

Result<std::string> CheckCharacterSet(const SettingInfo& info, std::string_view value) {
  std::vector<std::string_view> names;
  for (const CharacterSet set : kCharacterSets) {
    names.push_back(CharacterSetName(set));
    if (EqualIgnoringAsciiCase(names.back(), value)) return std::string(names.back());
  }
  return Wrong(info, JoinedWithOr(names), value);
}

Result<std::string> CheckValue(const SettingInfo& info, std::string_view value) {
  if (!info.entry.words.empty()) return CheckWord(info, value);
  if (info.kind == Kind::kCharacterSet) return CheckCharacterSet(info, value);
  if (info.kind == Kind::kNumber || info.entry.is == SettingIs::kNumber) return CheckNumber(info, value);
  if (info.kind != Kind::kYesNo) return std::string(value);
  const std::optional<bool> yes = YesOrNo(value);
  if (!yes) return Wrong(info, "yes or no (1 or 0)", value);
  return std::string(*yes ? "1" : "0");
}

Failure NoSuchName(const SettingList& list, std::string_view of, std::string_view name) {
  std::vector<std::string_view> names;
  for (const SettingInfo& info : list) names.push_back(info.name);
  const std::vector<std::string_view> nearest = NearestNames(name, names);
  std::string reason = std::string(of) + " has no setting " + Shown(name) + ": ";
  if (!nearest.empty()) return {reason + "did you mean " + JoinedWithOr(nearest) + "?"};
  reason += "there are ";
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) reason += i + 1 == names.size() ? " and " : ", ";
    reason += names[i];
  }
  return {reason};
}

}  // namespace

Result<CheckedSetting> CheckSetting(const SettingList& list, std::string_view of, std::string_view name,
                                    std::string_view value) {
  const auto info = std::find_if(list.begin(), list.end(), [name](const SettingInfo& one) {
    return EqualIgnoringAsciiCase(one.name, name);
  });
  if (info == list.end()) return NoSuchName(list, of, name);
  if (value.size() > kMaxSettingsTextBytes)
    return Failure{std::string(info->name) + " is longer than " + std::to_string(kMaxSettingsTextBytes) +
                   " bytes"};
  Result<std::string> text = CheckValue(*info, value);
  if (!text) return text.AsFailure();
  return CheckedSetting{*info, std::move(text.Value())};
}

void WriteSetting(SettingsHive& hive, const std::string& key, const std::string& name,
                  const CheckedSetting& setting) {
  if (setting.info.storedAs == StoredAs::kNumber)
    hive.WriteNumber(key, name, LeadingInteger(setting.text));
  else
    hive.WriteText(key, name, setting.text);
}

}  // namespace zeb
