#include "templates/cTextField.h"

#include <algorithm>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "templates/ConfigFile.h"
#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr auto kNone = std::string_view::npos;

// The content of the n-th table cell; empty when there is none. A cell that is not closed ends where the next
// one begins, or with its row.
std::string_view TableCell(std::string_view text, std::int32_t number) {
  std::size_t at = 0;
  for (std::int32_t i = 1;; ++i) {
    at = FindIgnoringAsciiCase(text, "<td", at);
    if (at == kNone) return {};
    at += 3;
    if (i == number) break;
  }
  const std::size_t begin = text.find('>', at);
  if (begin == kNone) return {};
  text.remove_prefix(begin + 1);
  std::size_t end = kNone;
  for (const std::string_view mark : {"</td", "<td", "</tr", "<tr", "</table"})
    end = std::min(end, FindIgnoringAsciiCase(text.substr(0, end), mark));
  return end == kNone ? std::string_view() : text.substr(0, end);
}

std::string ReplaceByBlank(std::string_view text, std::string_view what) {
  std::string result;
  std::size_t from = 0, end = 0;
  for (std::size_t at; (at = FindIgnoringCase(text, what, from, &end)) != kNone; from = end)
    result.append(text.substr(from, at - from)) += ' ';
  return result.append(text.substr(from));
}

struct IntegerKey {
  const char* name;
  std::int32_t cTextField::*field;
};
constexpr IntegerKey kIntegerKeys[] = {
    {".LineNumber", &cTextField::LineNumber},
    {".Start", &cTextField::Start},
    {".Length", &cTextField::Length},
    {".CorrectCase", &cTextField::CorrectCase},
    {".HTMLCellNumber", &cTextField::HTMLCellNumber},
};

}  // namespace

void cTextField::SetRawPrefix(std::string text) {
  prefix_ = ConvertHexEscapes(text);
  rawPrefix_ = std::move(text);
}

void cTextField::SetRawSuffix(std::string text) {
  suffix_ = ConvertHexEscapes(text);
  rawSuffix_ = std::move(text);
}

bool cTextField::HasSettings() const {
  return !prefix_.empty() || !suffix_.empty() || Start >= 1 || Length >= 1 || LineNumber >= 1 ||
         HTMLCellNumber >= 1;
}

std::string cTextField::GetField(std::string_view text) {
  lastStart_ = lastEnd_ = 0;
  const std::optional<Place> place = Locate(text);
  if (!place) return {};
  std::string_view value = place->text;
  if (!CutEnd(value)) return {};
  lastStart_ = static_cast<std::int32_t>(place->passed);
  lastEnd_ = static_cast<std::int32_t>(place->passed + CountCharacters(value));
  return Clean(value);
}

std::optional<cTextField::Place> cTextField::Locate(std::string_view text) const {
  // A length or a suffix alone says where a value ends, not where it is.
  if (HTMLCellNumber <= 0 && LineNumber <= 0 && Start <= 0 && prefix_.empty()) return std::nullopt;
  Place place{text, 0};
  // The position is counted within the cell.
  if (HTMLCellNumber > 0) place.text = TableCell(place.text, HTMLCellNumber);
  if (LineNumber > 0) {
    std::size_t at = 0;
    for (std::int32_t line = 1; line < LineNumber; ++line) {
      at = place.text.find('\n', at);
      if (at == kNone) return std::nullopt;
      ++at;
    }
    place.passed += CountCharacters(place.text.substr(0, at));
    place.text.remove_prefix(at);
  }
  if (Start > 0) {
    place.text.remove_prefix(SkipCharacters(place.text, 0, static_cast<std::size_t>(Start) - 1));
    place.passed += static_cast<std::size_t>(Start);
  }
  if (!prefix_.empty()) {
    std::size_t end = 0;
    if (FindIgnoringCase(place.text, prefix_, 0, &end) == kNone) return std::nullopt;
    place.passed += CountCharacters(place.text.substr(0, end));
    place.text.remove_prefix(end);
  }
  if (place.text.empty()) return std::nullopt;
  return place;
}

bool cTextField::CutEnd(std::string_view& text) const {
  if (Length > 0) text = FirstCharacters(text, static_cast<std::size_t>(Length));
  if (suffix_.empty()) return true;
  const std::size_t at = FindIgnoringCase(text, suffix_);
  if (at != kNone) {
    text = text.substr(0, at);
  } else if (SuffixOptional) {
    // The last character goes as if it were the suffix: definitions in the field count on it.
    text = FirstCharacters(text, CountCharacters(text) - 1);
  } else {
    return false;
  }
  return !text.empty();
}

std::string cTextField::Clean(std::string_view value) const {
  std::string result(value);
  for (const std::string& entry : ReplaceWithSpaces)
    if (const std::string what = ConvertHexEscapes(entry); !what.empty())
      result = ReplaceByBlank(result, what);
  if (!KeepHTML && markup_ && result.find("</") != std::string::npos) result = markup_->HtmlToText(result);
  switch (CorrectCase) {
    case 1:
      return UpperCase(result);
    case 2:
      return LowerCase(result);
    case 3:
      return CapitaliseWords(result);
    default:
      return result;
  }
}

void cTextField::ReadFromConfig(const IniFile& file, std::string_view section, std::string_view key) {
  const std::string start(key);
  for (const IntegerKey& integer : kIntegerKeys)
    if (const std::int32_t value = file.Integer(section, start + integer.name); value > 0)
      this->*integer.field = value;
  if (auto text = file.Text(section, start + ".Prefix"); text && !text->empty()) SetRawPrefix(*text);
  if (auto text = file.Text(section, start + ".Suffix"); text && !text->empty()) SetRawSuffix(*text);
  if (auto text = file.Text(section, start + ".ReplaceWithSpaces"); text && !text->empty()) {
    const auto entries = SplitAt(*text, ",");
    ReplaceWithSpaces.assign(entries.begin(), entries.end());
  }
}

Outcome cTextField::ReadFromConfigFile(FileSystem& files, const std::string& fileName,
                                       std::string_view section, std::string_view key) {
  const Result<IniFile> file = ReadConfigFile(files, fileName);
  if (!file) return file.AsFailure();
  ReadFromConfig(file.Value(), section, key);
  return {};
}

Outcome cTextField::WriteToConfigFile(FileSystem& files, const std::string& fileName,
                                      std::string_view section, std::string_view key) const {
  const std::string start(key);
  std::string replaced;
  for (const std::string& entry : ReplaceWithSpaces) replaced += (replaced.empty() ? "" : ",") + entry;
  return ChangeConfigFile(files, fileName, [&](IniFile& file) {
    for (const IntegerKey& integer : kIntegerKeys)
      file.Write(section, start + integer.name, PlainNumber(std::int64_t{this->*integer.field}));
    file.Write(section, start + ".Prefix", rawPrefix_);
    file.Write(section, start + ".Suffix", rawSuffix_);
    file.Write(section, start + ".ReplaceWithSpaces", replaced);
  });
}

}  // namespace zeb
