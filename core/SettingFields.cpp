#include "core/SettingFields.h"

#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb::detail {

void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& name, std::string& value) {
  value = hive.ReadText(key, name, value);
}

void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& name, std::int32_t& value) {
  value = hive.ReadNumber(key, name, value);
}

// As text, since some tools write the word.
void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& name, bool& value) {
  const std::string text = hive.ReadText(key, name, value ? "1" : "0");
  value = LeadingInteger(text) != 0 || EqualIgnoringAsciiCase(TrimBlanks(text), "true");
}

void ReadSetting(SettingsHive& hive, const std::string& key, const std::string& name, CharacterSet& value) {
  value = CharacterSetByName(hive.ReadText(key, name, ""), value);
}

std::string SettingName(std::string_view prefix, std::string_view name, std::string_view suffix) {
  std::string whole(prefix);
  return whole.append(name).append(suffix);
}

std::string SettingText(const std::string& value) {
  return value;
}

std::string SettingText(std::int32_t value) {
  return PlainNumber(std::int64_t{value});
}

std::string SettingText(bool value) {
  return value ? "1" : "0";
}

std::string SettingText(CharacterSet value) {
  return std::string(CharacterSetName(value));
}

}  // namespace zeb::detail
