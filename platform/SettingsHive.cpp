#include "platform/SettingsHive.h"

namespace zeb {
namespace {

// Long names are cut in messages, which are one readable line each.
std::string Quoted(std::string_view text) {
  constexpr std::size_t kShown = 120;
  std::size_t size = text.size() > kShown ? kShown : text.size();
  while (size < text.size() && size > 0 && (text[size] & '\xC0') == '\x80') --size;
  std::string shown(text.substr(0, size));
  for (char& c : shown)
    if (static_cast<unsigned char>(c) < 0x20) c = '?';
  return "'" + shown + (size < text.size() ? "...'" : "'");
}

std::size_t Characters(std::string_view text) {
  std::size_t count = 0;
  for (char c : text)
    if ((c & '\xC0') != '\x80') ++count;
  return count;
}

}  // namespace

std::string NormalSettingsKey(std::string_view key) {
  std::string normal;
  normal.reserve(key.size());
  for (char c : key)
    if (c != '\\' || (!normal.empty() && normal.back() != '\\')) normal += c;
  if (!normal.empty() && normal.back() == '\\') normal.pop_back();
  return normal;
}

void CheckSettingsKey(std::string_view key) {
  if (key.size() > kMaxSettingsKeyBytes)
    throw SettingsError("settings key " + Quoted(key) + " is longer than " +
                        std::to_string(kMaxSettingsKeyBytes) + " bytes");
  for (char c : key)
    if (static_cast<unsigned char>(c) < 0x20)  // no .reg file could say it
      throw SettingsError("settings key " + Quoted(key) + " holds a control character");
}

void CheckSettingsValue(std::string_view key, std::string_view name, std::string_view text) {
  CheckSettingsKey(key);
  if (name.size() > kMaxSettingsNameCharacters && Characters(name) > kMaxSettingsNameCharacters)
    throw SettingsError("the name of value " + Quoted(name) + " in settings key " + Quoted(key) +
                        " is longer than " + std::to_string(kMaxSettingsNameCharacters) + " characters");
  if (text.size() > kMaxSettingsTextBytes)
    throw SettingsError("value " + Quoted(name) + " in settings key " + Quoted(key) + " is longer than " +
                        std::to_string(kMaxSettingsTextBytes) + " bytes");
}

}  // namespace zeb
