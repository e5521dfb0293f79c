#include "core/RegParser.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

// Ends the parsing; what() is the line's message. Leaves Parse only as a Failure.
class LineError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

constexpr std::array<std::string_view, 2> kMachineHive = {"HKEY_LOCAL_MACHINE", "HKLM"};
constexpr std::array<std::string_view, 9> kOtherHives = {
    "HKEY_CURRENT_USER",   "HKCU", "HKEY_CLASSES_ROOT", "HKCR", "HKEY_USERS", "HKU", "HKCC",
    "HKEY_CURRENT_CONFIG", "HKDD"};
constexpr std::string_view kMakersKey = "Software\\Hexmoor";

template <class Words>
bool IsOneOf(std::string_view word, const Words& words) {
  for (std::string_view known : words)
    if (EqualIgnoringAsciiCase(word, known)) return true;
  return false;
}

bool IsMakersKey(std::string_view key) {
  return EqualIgnoringAsciiCase(key.substr(0, kMakersKey.size()), kMakersKey) &&
         (key.size() == kMakersKey.size() || key[kMakersKey.size()] == '\\');
}

// The path without the part that 64-bit systems put into the paths of 32-bit programs.
std::string WithoutRedirection(std::string_view path) {
  std::string key;
  while (!path.empty()) {
    const std::string_view part = path.substr(0, path.find('\\'));
    path.remove_prefix(std::min(part.size() + 1, path.size()));
    if (part.empty() || EqualIgnoringAsciiCase(part, "WOW6432Node")) continue;
    if (!key.empty()) key += '\\';
    key += part;
  }
  return key;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = AsciiLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string ShowShort(std::string_view text) {
  const std::string_view start = FirstCharacters(text, 40);
  return "'" + std::string(start) + (start.size() < text.size() ? "...'" : "'");
}

std::string ShowName(const std::string& name) {
  return name.empty() ? "the default value" : "value " + ShowShort(name);
}

}  // namespace

Result<RegChanges> RegParser::Parse() {
  try {
    ParseHeading();
    while (!AtEnd()) {
      SkipBlanks();
      if (AtLineEnd()) {
        SkipLineEnd();
      } else if (text_[at_] == ';') {
        at_ += RestOfLine().size();
      } else if (text_[at_] == '[') {
        ParseKey();
      } else if (text_[at_] == '"' || text_[at_] == '@') {
        ParseValue();
      } else {
        Fail(ShowShort(RestOfLine()) + " is neither a key nor a value");
      }
    }
  } catch (const LineError& error) {
    return Failure{error.what()};
  }
  return std::move(result_);
}

void RegParser::Fail(const std::string& reason, std::size_t line) const {
  throw LineError("line " + std::to_string(line != 0 ? line : line_) + ": " + reason);
}

bool RegParser::AtLineEnd() const {
  return AtEnd() || text_[at_] == '\n' ||
         (text_[at_] == '\r' && (at_ + 1 == text_.size() || text_[at_ + 1] == '\n'));
}

void RegParser::SkipBlanks() {
  while (!AtEnd() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
}

void RegParser::SkipLineEnd() {
  Take('\r');
  if (Take('\n')) ++line_;
}

std::string_view RegParser::RestOfLine() const {
  std::string_view rest = text_.substr(at_, text_.find('\n', at_) - at_);
  if (!rest.empty() && rest.back() == '\r') rest.remove_suffix(1);
  return rest;
}

bool RegParser::Take(char c) {
  if (AtEnd() || text_[at_] != c) return false;
  ++at_;
  return true;
}

bool RegParser::TakeWord(std::string_view word) {
  if (!EqualIgnoringAsciiCase(text_.substr(at_, word.size()), word)) return false;
  at_ += word.size();
  return true;
}

void RegParser::ParseHeading() {
  while (!AtEnd() && AtLineEnd()) SkipLineEnd();
  const std::string_view heading = TrimBlanks(RestOfLine());
  if (heading != "Windows Registry Editor Version 5.00" && heading != "REGEDIT4")
    Fail("this is not a .reg file: it must begin with 'Windows Registry Editor Version 5.00' or 'REGEDIT4'");
  at_ += RestOfLine().size();
}

void RegParser::ParseKey() {
  const std::string_view line = RestOfLine();
  const std::size_t end = line.rfind(']');
  if (end == std::string_view::npos) Fail("the key's closing ] is missing");
  std::string_view path = line.substr(1, end - 1);
  at_ += end + 1;
  ExpectEndOfValue();

  const bool isDeletion = path.starts_with('-');
  if (isDeletion) path.remove_prefix(1);
  const std::string_view hive = path.substr(0, path.find('\\'));
  if (!IsOneOf(hive, kMachineHive)) {
    if (!IsOneOf(hive, kOtherHives)) Fail("there is no hive " + ShowShort(hive));
    section_ = Section::kSkipped;
    ++result_.skippedKeys;
    return;
  }
  key_ = WithoutRedirection(path.substr(std::min(hive.size() + 1, path.size())));
  ours_ = IsMakersKey(key_);
  if (isDeletion && key_.empty()) Fail("the whole hive cannot be deleted");
  section_ = isDeletion ? Section::kDeleted : Section::kTaken;
  if (!key_.empty()) Add({isDeletion ? RegChange::kDeleteKey : RegChange::kCreateKey, key_, {}}, line_);
}

void RegParser::ParseValue() {
  const std::size_t line = line_;
  if (section_ == Section::kNone) Fail("a value before the first key");
  if (section_ == Section::kDeleted) Fail("a value in a key that is deleted");
  std::string name;
  if (!Take('@')) name = ParseQuoted();
  SkipBlanks();
  if (!Take('=')) Fail("= is missing after the value's name");
  SkipBlanks();
  Data data = ParseData();
  ExpectEndOfValue();
  if (section_ == Section::kSkipped) return;

  if (data.isDeletion) {
    Add({RegChange::kDeleteValue, key_, {std::move(name), {}}}, line);
  } else if (data.data) {
    Add({RegChange::kWriteValue, key_, {std::move(name), std::move(*data.data)}}, line);
  } else if (ours_) {
    Fail(ShowName(name) + " has the type " + data.type + ", which the settings cannot hold", line);
  } else {
    ++result_.skippedValues;
  }
}

void RegParser::ExpectEndOfValue() {
  SkipBlanks();
  if (!AtEnd() && text_[at_] == ';') at_ += RestOfLine().size();
  if (!AtLineEnd()) Fail("unexpected " + ShowShort(RestOfLine()));
}

// Text between double quotes. Line ends in it are part of it.
std::string RegParser::ParseQuoted() {
  const std::size_t line = line_;
  std::string text;
  ++at_;  // the opening quote
  for (;;) {
    const std::size_t stop = text_.find_first_of("\"\\\n", at_);
    if (stop == std::string_view::npos) Fail("the closing double quote is missing", line);
    text += text_.substr(at_, stop - at_);
    at_ = stop + 1;
    if (text_[stop] == '"') return text;
    if (text_[stop] == '\n') ++line_;
    // Before any other character a backslash stands for itself, as in files written by hand.
    if (text_[stop] == '\\' && !AtEnd() && (text_[at_] == '"' || text_[at_] == '\\'))
      text += text_[at_++];
    else
      text += text_[stop];
  }
}

RegParser::Data RegParser::ParseData() {
  if (!AtEnd() && text_[at_] == '"') return {false, SettingsData(ParseQuoted()), "text"};
  if (Take('-')) return {true, std::nullopt, {}};
  if (TakeWord("dword:")) return {false, ParseDword(), "dword"};
  if (TakeWord("hex")) return ParseHex();
  Fail("a value must be text in double quotes, dword:, hex: or -, not " + ShowShort(RestOfLine()));
}

SettingsData RegParser::ParseDword() {
  SkipBlanks();
  std::uint32_t number = 0;
  int digits = 0;
  for (; !AtEnd() && HexDigit(text_[at_]) >= 0; ++at_, ++digits)
    number = number * 16 + static_cast<std::uint32_t>(HexDigit(text_[at_]));
  if (digits < 1 || digits > 8) Fail("dword: needs one to eight hexadecimal digits");
  return number;
}

RegParser::Data RegParser::ParseHex() {
  const std::size_t start = at_ - 3;
  std::string type = "3";  // plain bytes
  if (Take('(')) {
    const std::size_t end = text_.find_first_of(")\n", at_);
    if (end == std::string_view::npos || text_[end] != ')') Fail(") is missing after hex(");
    type = text_.substr(at_, end - at_);
    at_ = end + 1;
  }
  if (!Take(':')) Fail(": is missing after " + ShowShort(text_.substr(start, at_ - start)));
  const std::string shownType(text_.substr(start, at_ - start - 1));
  const std::string bytes = ParseBytes();
  const bool isList = type == "7";
  if (type == "1" || type == "2" || isList) {
    std::string text = DecodeText(bytes);
    if (text.ends_with('\0')) text.pop_back();
    if (!isList) return {false, SettingsData(std::move(text)), shownType};
    if (text.ends_with('\0')) text.pop_back();  // the list's own end
    for (char& c : text)
      if (c == '\0') c = '\n';
    return {false, SettingsData(std::move(text)), shownType};
  }
  if (type == "4" && bytes.size() == 4) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) number = number * 256 + static_cast<unsigned char>(bytes[i]);
    return {false, SettingsData(number), shownType};
  }
  return {false, std::nullopt, shownType};
}

std::string RegParser::ParseBytes() {
  std::string bytes;
  for (;;) {
    SkipBlanks();
    if (Take('\\')) {
      SkipBlanks();
      if (!AtLineEnd() || AtEnd()) Fail("\\ must be the last character of a line that goes on");
      SkipLineEnd();
      continue;
    }
    if (AtEnd() || HexDigit(text_[at_]) < 0) return bytes;
    int byte = HexDigit(text_[at_++]);
    if (!AtEnd() && HexDigit(text_[at_]) >= 0) byte = byte * 16 + HexDigit(text_[at_++]);
    bytes += static_cast<char>(byte);
    SkipBlanks();
    if (!Take(',')) return bytes;
  }
}

std::string RegParser::DecodeText(const std::string& bytes) const {
  if (!ansiBytes_ && bytes.size() % 2 != 0) Fail("text given as bytes must have two bytes a character");
  if (ansiBytes_) return DecodeFile(bytes, {FileEncoding::kWindows1252, false, false});
  // With a mark of our own to drop, so that one that is part of the text stays.
  return DecodeFile("\xFF\xFE" + bytes, {FileEncoding::kUtf16LE, true, false});
}

void RegParser::Add(RegChange change, std::size_t line) {
  try {
    const auto* text = std::get_if<std::string>(&change.value.data);
    CheckSettingsValue(change.key, change.value.name, text != nullptr ? std::string_view(*text) : "");
  } catch (const SettingsError& error) {
    Fail(error.what(), line);
  }
  result_.changes.push_back(std::move(change));
}

}  // namespace zeb
