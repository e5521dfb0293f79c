#include "text/LanguageFile.h"

#include <algorithm>
#include <utility>

#include "text/Encodings.h"
#include "text/HexDigits.h"
#include "text/LetterCase.h"
#include "text/Lines.h"

namespace zeb {
namespace {

constexpr std::string_view kCodePage = "CODEPAGE=";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::size_t kMaxLineBytes = 4 * kMaxLanguageTextBytes;
constexpr std::size_t kEscapeSize = 4;  // {XX}
// A pattern that says less of a text would be found in texts that it has nothing to do with.
constexpr std::size_t kLeastSaid = 3;

bool IsEscape(std::string_view text) {
  return text.size() >= kEscapeSize && text[0] == '{' && CapitalHexDigit(text[1]) >= 0 &&
         CapitalHexDigit(text[2]) >= 0 && text[3] == '}';
}

int PlaceholderAt(std::string_view text, std::size_t at) {
  return text[at] == '%' && at + 1 < text.size() && text[at + 1] >= '1' && text[at + 1] <= '9'
             ? text[at + 1] - '0'
             : 0;
}

std::string Placeholders(std::string_view text) {
  std::string found;
  for (std::size_t at = 0; at < text.size(); ++at)
    if (const int number = PlaceholderAt(text, at); number > 0) found += static_cast<char>('0' + number);
  std::sort(found.begin(), found.end());
  return found;
}

class Reader {
 public:
  Reader(LanguageFile& file, const DecodeCodePage& decode) : file_(file), decode_(decode) {}

  void Read(std::string_view bytes) {
    ForEachLine(bytes, [this](std::string_view line) {
      ++line_;
      if (full_ || line.empty() || line.starts_with('#')) return;
      if (line.size() > kMaxLineBytes) return Tell("is too long");
      if (std::exchange(first_, false) && ReadCodePage(line)) return;
      ReadText(line);
    });
  }

 private:
  void Tell(const std::string& what) {
    if (file_.problems.size() < kMaxLanguageProblems)
      file_.problems.push_back("line " + std::to_string(line_) + ": " + what);
  }

  bool ReadCodePage(std::string_view line) {
    if (!StartsWithIgnoringCase(line, kCodePage)) return false;
    const std::string_view number = line.substr(kCodePage.size());
    int codePage = 0;
    for (const char c : number)
      codePage = c >= '0' && c <= '9' && codePage < 100000 ? codePage * 10 + (c - '0') : -1;
    // Asked with a letter that every page has.
    if (codePage > 0 && decode_(codePage, "A")) {
      codePage_ = codePage;
    } else {
      Tell("the code page '" + DecodeLenient(number.substr(0, 20)) + "' is not known");
      full_ = true;  // its letters would be nonsense
    }
    return true;
  }

  void ReadText(std::string_view line) {
    const std::size_t middle = line.find('=');
    if (middle == std::string_view::npos)
      return Tell("has no '=' between the English text and the translated one");
    const std::optional<std::string> english = Undo(line.substr(0, middle));
    const std::optional<std::string> translated = Undo(line.substr(middle + 1));
    if (!english || !translated) return Tell("is not text in code page " + std::to_string(codePage_));
    Take(*english, *translated);
  }

  void Take(const std::string& english, const std::string& translated) {
    if (english.empty()) return Tell("has no English text before its '='");
    if (english.size() > kMaxLanguageTextBytes || translated.size() > kMaxLanguageTextBytes)
      return Tell("has a text that is too long");
    if (file_.language.Size() >= kMaxLanguageTexts) {
      Tell("is one more than the " + std::to_string(kMaxLanguageTexts) + " texts that a file may have");
      full_ = true;
      return;
    }
    if (translated.empty()) return file_.untranslated.push_back(english);
    if (Placeholders(english) != Placeholders(translated))
      return Tell("does not have the same %1 on both sides of its '='");
    if (!file_.language.Add(english, translated)) Tell("its English text has stood in the file before");
  }

  // Escapes are bytes of the code page, and what a letter is made of may be several in a row.
  std::optional<std::string> Undo(std::string_view text) const {
    std::optional<std::string> plain = Decode(text);
    if (!plain || plain->find('{') == std::string::npos) return plain;
    std::string undone;
    for (std::size_t at = 0; at < plain->size();) {
      std::string escaped;
      for (; IsEscape(std::string_view(*plain).substr(at)); at += kEscapeSize)
        escaped +=
            static_cast<char>(CapitalHexDigit((*plain)[at + 1]) * 16 + CapitalHexDigit((*plain)[at + 2]));
      if (escaped.empty()) {
        undone += (*plain)[at++];
        continue;
      }
      const std::optional<std::string> letters = Decode(escaped);
      if (!letters) return std::nullopt;
      undone += *letters;
    }
    return undone;
  }

  std::optional<std::string> Decode(std::string_view bytes) const {
    if (codePage_ == 0) return DecodeLenient(bytes);
    return decode_(codePage_, bytes);
  }

  LanguageFile& file_;
  const DecodeCodePage& decode_;
  int codePage_ = 0;  // 0: UTF-8
  std::size_t line_ = 0;
  bool first_ = true, full_ = false;
};

}  // namespace

const std::string* Language::Find(std::string_view english) const {
  const auto found = texts_.find(english);
  return found == texts_.end() ? nullptr : &found->second;
}

bool Language::Add(const std::string& english, const std::string& translated) {
  if (!texts_.emplace(english, translated).second) return false;
  if (!Placeholders(english).empty()) AddPattern(english, translated);
  return true;
}

void Language::AddPattern(const std::string& english, const std::string& translated) {
  Pattern pattern;
  pattern.translated = translated;
  std::string piece;
  for (std::size_t at = 0; at < english.size(); ++at) {
    const int number = PlaceholderAt(english, at);
    if (number == 0) {
      piece += english[at];
      continue;
    }
    // Two side by side: nothing tells where the one ends.
    if (piece.empty() && !pattern.pieces.empty()) return;
    pattern.said += piece.size();
    pattern.pieces.push_back(std::exchange(piece, {}));
    pattern.numbers.push_back(number);
    ++at;
  }
  pattern.said += piece.size();
  pattern.pieces.push_back(std::move(piece));
  if (pattern.said < kLeastSaid) return;
  const auto place = std::find_if(patterns_.begin(), patterns_.end(),
                                  [&](const Pattern& other) { return other.said < pattern.said; });
  patterns_.insert(place, std::move(pattern));
}

std::string Language::Translate(std::string_view english) const {
  if (const std::string* exact = Find(english)) return *exact;
  for (const Pattern& pattern : patterns_)
    if (const auto given = Match(pattern, english)) return Fill(pattern, *given);
  return std::string(english);
}

// What stands for the placeholders, each as short as possible but the last.
std::optional<std::vector<std::string_view>> Language::Match(const Pattern& pattern, std::string_view text) {
  const std::string& first = pattern.pieces.front();
  const std::string& last = pattern.pieces.back();
  if (text.size() < pattern.said || !text.starts_with(first) || !text.ends_with(last)) return std::nullopt;
  text = text.substr(first.size(), text.size() - first.size() - last.size());
  std::vector<std::string_view> given;
  for (std::size_t i = 1; i + 1 < pattern.pieces.size(); ++i) {
    const std::size_t at = text.find(pattern.pieces[i]);
    if (at == std::string_view::npos) return std::nullopt;
    given.push_back(text.substr(0, at));
    text.remove_prefix(at + pattern.pieces[i].size());
  }
  given.push_back(text);
  return given;
}

std::string Language::Fill(const Pattern& pattern, const std::vector<std::string_view>& given) const {
  std::string filled;
  for (std::size_t at = 0; at < pattern.translated.size(); ++at) {
    const int number = PlaceholderAt(pattern.translated, at);
    if (number == 0) {
      filled += pattern.translated[at];
      continue;
    }
    const auto place = std::find(pattern.numbers.begin(), pattern.numbers.end(), number);
    const std::string_view text = given[static_cast<std::size_t>(place - pattern.numbers.begin())];
    const std::string* known = Find(text);
    filled += known ? std::string_view(*known) : text;
    ++at;
  }
  return filled;
}

LanguageFile ReadLanguageFile(std::string_view bytes, const DecodeCodePage& decode) {
  LanguageFile file;
  if (bytes.size() > kMaxLanguageFileBytes) {
    file.problems.push_back("line 1: the file is longer than " + std::to_string(kMaxLanguageFileBytes) +
                            " bytes");
    return file;
  }
  // Editors of Windows write such files too.
  std::string decoded;
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    decoded = DecodeFile(bytes, DetectFileEncoding(bytes));
    bytes = decoded;
  }
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  Reader(file, decode).Read(bytes);
  return file;
}

std::string EscapeLanguageText(std::string_view text) {
  std::string escaped;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    // A blank at either end is lost in many editors.
    const bool atEnd = c == ' ' && (i == 0 || i + 1 == text.size());
    if (c < ' ' || c == '=' || c == '{' || (c == '#' && i == 0) || atEnd) {
      escaped += '{';
      escaped += kHexDigits[c >> 4];
      escaped += kHexDigits[c & 15];
      escaped += '}';
    } else {
      escaped += text[i];
    }
  }
  return escaped;
}

}  // namespace zeb
