#include "dialogs/SecretSettings.h"

#include <algorithm>
#include <set>
#include <utility>

#include "core/clsZEBService.h"
#include "outputs/OutputTable.h"
#include "text/LetterCase.h"

namespace zeb {
namespace {

constexpr std::size_t kShortestWord = 4;
constexpr std::string_view kTelling[] = {"password", "passwd", "passphrase", "secret",
                                         "token",    "apikey", "privatekey", "credential"};
// Of parameters and headers only: as a setting's name these would be too common.
constexpr std::string_view kParameters[] = {"pass",          "pwd", "key",      "auth",
                                            "authorization", "sig", "signature"};
// An address whose path is what its owner lets in.
constexpr std::string_view kFurther[] = {"alarmurl"};

bool IsWord(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

// "Output1.Token3" is "token".
std::string Stem(std::string_view name) {
  if (const std::size_t dot = name.rfind('.'); dot != std::string_view::npos) name.remove_prefix(dot + 1);
  name = name.substr(0, name.find_last_not_of("0123456789") + 1);
  std::string stem;
  for (const char c : LowerCase(name))
    if (c != '_' && c != '-') stem += c;
  return stem;
}

bool LooksSecret(const std::string& stem) {
  return std::any_of(std::begin(kTelling), std::end(kTelling),
                     [&](std::string_view word) { return stem.find(word) != std::string::npos; });
}

void AddSecretsOf(const SettingList& list, std::set<std::string>& names) {
  for (const SettingInfo& info : list)
    if (info.secret) names.insert(Stem(info.name));
}

const std::set<std::string>& SecretsOfTables() {
  static const std::set<std::string> all = [] {
    std::set<std::string> names(std::begin(kFurther), std::end(kFurther));
    AddSecretsOf(ServiceSettingList(), names);
    AddSecretsOf(CommonOutputSettings(), names);
    for (const OutputTypeInfo& type : kOutputTypes) {
      const OutputSettings settings = SettingsOf(type.type);
      AddSecretsOf(settings.own, names);
      AddSecretsOf(settings.ofPair, names);
    }
    return names;
  }();
  return all;
}

bool IsSecretParameter(std::string_view name) {
  const std::string stem = Stem(name);
  return LooksSecret(stem) ||
         std::find(std::begin(kParameters), std::end(kParameters), stem) != std::end(kParameters);
}

// Behind "user:" of "//user:password@host"; where the password ends. 0: there is none.
std::size_t EndOfPassword(std::string_view text, std::size_t at) {
  const std::size_t end = text.find_first_of("/ \t\r\n\"'<>", at);
  const std::size_t host = text.substr(0, end).rfind('@');
  return host == std::string_view::npos || host <= at ? 0 : host;
}

// Where the value of the parameter or header behind `at` lies: "=x", ": x", "\": \"x".
struct Span {
  std::size_t from = 0, to = 0;
};
Span ValueBehind(std::string_view text, std::size_t at, bool isHeader) {
  std::size_t from = at;
  const auto skip = [&](std::string_view what) {
    while (from < text.size() && what.find(text[from]) != std::string_view::npos) ++from;
  };
  if (from < text.size() && (text[from] == '"' || text[from] == '\'')) ++from;
  if (from < text.size() && text[from] == ' ') skip(" ");
  if (from >= text.size() || (text[from] != '=' && text[from] != ':')) return {};
  ++from;
  skip(" ");
  const bool quoted = from < text.size() && (text[from] == '"' || text[from] == '\'');
  const char quote = quoted ? text[from++] : '\0';
  std::size_t to = quoted     ? text.find_first_of(std::string{quote, '\r', '\n'}, from)
                   : isHeader ? text.find_first_of("\r\n\"", from)
                              : text.find_first_of("&;, \t\r\n\"'<>|)}", from);
  return {from, std::min(to, text.size())};
}

}  // namespace

bool IsSecretSetting(std::string_view name) {
  const std::string stem = Stem(name);
  return LooksSecret(stem) || SecretsOfTables().contains(stem);
}

std::string WithoutSecrets(std::string_view text) {
  std::string masked;
  for (std::size_t at = 0; at < text.size();) {
    if (text.substr(at).starts_with("://")) {
      masked += "://";
      at += 3;
      const std::size_t colon = text.find_first_of(":/@ \t\r\n\"'<>", at);
      if (colon == std::string_view::npos || text[colon] != ':') continue;
      if (const std::size_t end = EndOfPassword(text, colon); end > 0) {
        masked.append(text.substr(at, colon + 1 - at)).append(kMasked);
        at = end;
      }
      continue;
    }
    if (!IsWord(text[at])) {
      masked += text[at++];
      continue;
    }
    std::size_t end = at;
    while (end < text.size() && IsWord(text[end])) ++end;
    const std::string_view word = text.substr(at, end - at);
    masked += word;
    at = end;
    if (word.size() > 64 || !IsSecretParameter(word)) continue;
    const Span value = ValueBehind(text, end, EqualIgnoringAsciiCase(word, "Authorization"));
    if (value.to <= value.from) continue;
    masked.append(text.substr(at, value.from - at)).append(kMasked);
    at = value.to;
  }
  return masked;
}

SettingsData Masked(const SettingsValue& value) {
  const std::string* text = std::get_if<std::string>(&value.data);
  if (text != nullptr && text->empty()) return value.data;
  if (IsSecretSetting(value.name)) return std::string(kMasked);
  return text != nullptr ? SettingsData(WithoutSecrets(*text)) : value.data;
}

SettingsTree MaskSecrets(SettingsTree tree, std::vector<std::string>& words) {
  for (SettingsTreeKey& key : tree)
    for (SettingsValue& value : key.values) {
      if (const auto* text = std::get_if<std::string>(&value.data);
          text != nullptr && IsSecretSetting(value.name) && text->size() >= kShortestWord)
        words.push_back(*text);
      value.data = Masked(value);
    }
  return tree;
}

std::string HideWords(std::string text, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (word.size() < kShortestWord || text.find(word) == std::string::npos) continue;
    std::string hidden;
    std::size_t from = 0;
    for (std::size_t at = 0; (at = text.find(word, from)) != std::string::npos; from = at + word.size())
      hidden.append(text, from, at - from).append(kMasked);
    text = hidden.append(text, from);
  }
  return text;
}

}  // namespace zeb
