// RegParser: reads the decoded text of a `.reg` file. For ParseRegFile, which finds out its encoding.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "core/RegFile.h"

namespace zeb {

class RegParser {
 public:
  // `ansiBytes`: text given as bytes is in Windows-1252, as in REGEDIT4 files, else in UTF-16. The text must
  // outlive the parser.
  RegParser(std::string_view text, bool ansiBytes) : text_(text), ansiBytes_(ansiBytes) {}

  // Reads everything behind the heading. Once only.
  Result<RegChanges> Parse();

 private:
  // What a value's text after "=" says. Nothing in `data`: a type that settings cannot hold.
  struct Data {
    bool isDeletion = false;
    std::optional<SettingsData> data;
    std::string type;  // for messages
  };

  bool AtEnd() const { return at_ >= text_.size(); }
  bool AtLineEnd() const;
  void SkipBlanks();
  void SkipLineEnd();
  std::string_view RestOfLine() const;  // without moving
  bool Take(char c);
  bool TakeWord(std::string_view word);

  void ParseHeading();
  void ParseKey();
  void ParseValue();
  void ExpectEndOfValue();  // nothing but a comment
  std::string ParseQuoted();
  Data ParseData();
  SettingsData ParseDword();
  Data ParseHex();
  std::string ParseBytes();
  std::string DecodeText(const std::string& bytes) const;
  void Add(RegChange change, std::size_t line);
  [[noreturn]] void Fail(const std::string& reason, std::size_t line = 0) const;

  std::string_view text_;
  bool ansiBytes_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
  enum class Section { kNone, kTaken, kDeleted, kSkipped } section_ = Section::kNone;
  std::string key_;
  bool ours_ = false;  // the key is this maker's: nothing in it may be lost
  RegChanges result_;
};

}  // namespace zeb
