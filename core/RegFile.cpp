#include "core/RegFile.h"

#include <exception>
#include <utility>

#include "core/RegParser.h"
#include "core/SettingsTree.h"
#include "text/Encodings.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kAnsiHeading = "REGEDIT4";

// Not DetectFileEncoding, which would take the charset that a page template in a value declares.
std::string DecodeRegFile(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE")) return DecodeFile(bytes, {FileEncoding::kUtf16LE, true, false});
  if (bytes.starts_with("\xFE\xFF")) return DecodeFile(bytes, {FileEncoding::kUtf16BE, true, false});
  if (bytes.starts_with(kUtf8Mark)) return DecodeLenient(bytes.substr(kUtf8Mark.size()));
  if (bytes.starts_with(kAnsiHeading)) return DecodeFile(bytes, {FileEncoding::kWindows1252, false, false});
  return DecodeLenient(bytes);
}

std::string Counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void Apply(SettingsHive& hive, const RegChange& change) {
  switch (change.kind) {
    case RegChange::kCreateKey:
      return hive.CreateKey(change.key);
    case RegChange::kDeleteKey:
      return hive.DeleteKey(change.key);
    case RegChange::kWriteValue:
      return WriteSettingsValue(hive, change.key, change.value);
    case RegChange::kDeleteValue:
      return hive.DeleteValue(change.key, change.value.name);
  }
}

void AppendQuoted(std::string& to, std::string_view text) {
  to += '"';
  for (char c : text) {
    if (c == '"' || c == '\\') to += '\\';
    to += c;
  }
  to += '"';
}

void AppendHex(std::string& to, unsigned number) {
  constexpr char kDigits[] = "0123456789abcdef";
  to += kDigits[number >> 4 & 15];
  to += kDigits[number & 15];
}

// As UTF-16 bytes with an end mark, for text that no quotes can hold.
void AppendTextAsBytes(std::string& to, std::string_view text) {
  constexpr std::size_t kUnitsInLine = 12;
  std::size_t units = 0;
  const auto add = [&](char32_t unit) {
    if (units > 0) to += ',';
    if (units > 0 && units % kUnitsInLine == 0) to += "\\\r\n  ";
    AppendHex(to, unit & 0xFF);
    to += ',';
    AppendHex(to, unit >> 8);
    ++units;
  };
  to += "hex(1):";
  for (std::size_t at = 0; at < text.size();) {
    const char32_t character = NextCharacter(text, at);
    if (character >= 0x10000) {
      add(0xD800 + ((character - 0x10000) >> 10));
      add(0xDC00 + ((character - 0x10000) & 0x3FF));
    } else {
      add(character);
    }
  }
  add(0);
}

void AppendValue(std::string& to, const SettingsValue& value) {
  if (value.name.empty())
    to += '@';
  else
    AppendQuoted(to, value.name);
  to += '=';
  if (const auto* number = std::get_if<std::uint32_t>(&value.data)) {
    to += "dword:";
    for (int shift = 24; shift >= 0; shift -= 8) AppendHex(to, *number >> shift & 0xFF);
  } else {
    const std::string& text = std::get<std::string>(value.data);
    if (text.find('\0') != std::string::npos)
      AppendTextAsBytes(to, text);
    else
      AppendQuoted(to, text);
  }
  to += "\r\n";
}

}  // namespace

std::string RegSummary::Text() const {
  std::string text = Counted(values, "value", "values") + " imported";
  if (deletions > 0) text += ", " + Counted(deletions, "deletion", "deletions");
  if (skippedKeys > 0) text += ", " + Counted(skippedKeys, "key", "keys") + " of other hives skipped";
  if (skippedValues > 0)
    text += ", " + Counted(skippedValues, "value", "values") +
            " of other programs and of types not known here skipped";
  return text;
}

Result<RegChanges> ParseRegFile(std::string_view bytes) {
  if (bytes.size() > kMaxRegFileBytes)
    return Failure{"the file is longer than " + std::to_string(kMaxRegFileBytes) + " bytes"};
  const std::string text = DecodeRegFile(bytes);
  return RegParser(text, text.starts_with(kAnsiHeading)).Parse();
}

Result<RegSummary> ImportRegFile(SettingsHive& hive, std::string_view bytes) {
  const Result<RegChanges> changes = ParseRegFile(bytes);
  if (!changes) return changes.AsFailure();
  return ApplyRegChanges(hive, changes.Value());
}

Result<RegSummary> ApplyRegChanges(SettingsHive& hive, const RegChanges& changes) {
  RegSummary summary;
  summary.skippedKeys = changes.skippedKeys;
  summary.skippedValues = changes.skippedValues;
  try {
    hive.Transaction([&] {
      for (const RegChange& change : changes.changes) {
        Apply(hive, change);
        if (change.kind == RegChange::kWriteValue) ++summary.values;
        if (change.kind == RegChange::kDeleteKey || change.kind == RegChange::kDeleteValue)
          ++summary.deletions;
      }
    });
  } catch (const std::exception& error) {
    return Failure{error.what()};
  }
  return summary;
}

std::string ExportRegFile(SettingsHive& hive, const std::string& key) {
  return RegFileText(key, ReadSettingsTree(hive, key));
}

std::string RegFileText(const std::string& key, const SettingsTree& tree) {
  std::string text = "Windows Registry Editor Version 5.00\r\n\r\n";
  for (const SettingsTreeKey& part : tree) {
    text += "[HKEY_LOCAL_MACHINE\\" + key + part.path + "]\r\n";
    for (const SettingsValue& value : part.values) AppendValue(text, value);
    text += "\r\n";
  }
  return text;
}

}  // namespace zeb
