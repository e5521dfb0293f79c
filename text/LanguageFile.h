// LanguageFile: the program's English texts in another language, as a translator writes them.
//
//   CODEPAGE=1252                          in the first line that says anything; without it the file is UTF-8
//   # a comment
//   Are you sure?=Sind Sie sicher?
//   %1 has Control=%1 hat die Kontrolle    %1 stands for what differs
//   a {3D} b{0A}second line=…              {XX} is a byte of the code page: "=", a line end, "#", "{"
//
// A text without a translation behind its "=" is shown in English. What a line says wrong costs that line
// only, and is told.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zeb {

inline constexpr std::size_t kMaxLanguageFileBytes = 1024 * 1024;
inline constexpr std::size_t kMaxLanguageTexts = 10000;
inline constexpr std::size_t kMaxLanguageTextBytes = 8 * 1024;
inline constexpr std::size_t kMaxLanguageProblems = 50;  // what is told of one file

// A program's texts in one language. Reading it is safe from any thread.
class Language {
 public:
  // The text in this language; `english` when there is no other for it. A text that is put together ("Studio
  // has Control") is found by its pattern ("%1 has Control"): of several the one that says most of it. What
  // stands for %1 is translated too when it is a text of its own.
  std::string Translate(std::string_view english) const;
  // Whether there is a translation for exactly this text.
  bool Has(std::string_view english) const { return Find(english) != nullptr; }
  std::size_t Size() const { return texts_.size(); }
  // Calls `take` with each English text and its translation, in no order.
  template <class Take>
  void ForEach(const Take& take) const {
    for (const auto& [english, translated] : texts_) take(english, translated);
  }

  // False when there is one already.
  bool Add(const std::string& english, const std::string& translated);

 private:
  // "There was a problem %1 and …%2": what stands before, between and behind the placeholders.
  struct Pattern {
    std::vector<std::string> pieces;
    std::vector<int> numbers;  // of the placeholders between them
    std::size_t said = 0;      // bytes of the pieces
    std::string translated;
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  const std::string* Find(std::string_view english) const;
  void AddPattern(const std::string& english, const std::string& translated);
  static std::optional<std::vector<std::string_view>> Match(const Pattern& pattern, std::string_view text);
  std::string Fill(const Pattern& pattern, const std::vector<std::string_view>& given) const;

  std::unordered_map<std::string, std::string, Hash, std::equal_to<>> texts_;
  std::vector<Pattern> patterns_;  // those that say most first
};

struct LanguageFile {
  Language language;
  // One line each, with the number of the line that is wrong: "line 7: …". Those lines are left out.
  std::vector<std::string> problems;
  std::vector<std::string> untranslated;  // texts with nothing behind their "="
};

// Bytes of a code page as UTF-8; nothing when they are none of it.
using DecodeCodePage = std::function<std::optional<std::string>(int codePage, std::string_view bytes)>;

// Never fails: a file that is no language file at all gives a language without texts, and says why.
LanguageFile ReadLanguageFile(std::string_view bytes, const DecodeCodePage& decode);

// The text as it stands on either side of the "=", its line ends, "=", "#" and "{" escaped.
std::string EscapeLanguageText(std::string_view text);

}  // namespace zeb
