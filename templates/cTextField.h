// cTextField: where one value stands inside a block of text from outside, and how it is cleaned up.
//
// A value that cannot be located is empty text. Positions and lengths count characters; 0 means "not used".
// All searches ignore letter case. A copyable value; `markup`, which it does not own, turns HTML into text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileSystem.h"
#include "platform/Markup.h"
#include "text/IniFile.h"

namespace zeb {

class cTextField {
 public:
  // Without `markup` HTML stays as it is.
  explicit cTextField(Markup* markup = nullptr) : markup_(markup) {}

  std::int32_t Start = 0;           // column at which the value starts, from 1
  std::int32_t Length = 0;          // at most so many characters
  std::int32_t LineNumber = 0;      // from 1; lines end with a line feed
  std::int32_t HTMLCellNumber = 0;  // from 1; the table cell that holds the value
  std::int32_t CorrectCase = 0;     // 1 upper case, 2 lower case, 3 first letter of each word in capitals
  bool KeepHTML = false;
  bool SuffixOptional = false;                 // accepts a missing suffix, and drops the last character then
  std::vector<std::string> ReplaceWithSpaces;  // each with {hh} escapes

  const std::string& RawPrefix() const { return rawPrefix_; }
  const std::string& RawSuffix() const { return rawSuffix_; }
  const std::string& Prefix() const { return prefix_; }  // {hh} escapes converted
  const std::string& Suffix() const { return suffix_; }
  void SetRawPrefix(std::string text);
  void SetRawSuffix(std::string text);

  bool HasSettings() const;
  // Where the last value found begins and ends in the text; 0 when none was found.
  std::int32_t LastStartPosition() const { return lastStart_; }
  std::int32_t LastEndPosition() const { return lastEnd_; }

  std::string GetField(std::string_view text);

  // A number that is missing or not above 0, and a text that is missing or empty, leave the field as it was.
  void ReadFromConfig(const IniFile& file, std::string_view section, std::string_view key);
  Outcome ReadFromConfigFile(FileSystem& files, const std::string& fileName, std::string_view section,
                             std::string_view key);
  Outcome WriteToConfigFile(FileSystem& files, const std::string& fileName, std::string_view section,
                            std::string_view key) const;

 private:
  // Where the value starts, and how many characters were passed over; nothing when it is not there.
  struct Place {
    std::string_view text;
    std::size_t passed = 0;
  };
  std::optional<Place> Locate(std::string_view text) const;
  // Cuts the end off; false when nothing is left.
  bool CutEnd(std::string_view& text) const;
  std::string Clean(std::string_view value) const;

  Markup* markup_;
  std::string rawPrefix_, rawSuffix_, prefix_, suffix_;
  std::int32_t lastStart_ = 0, lastEnd_ = 0;
};

}  // namespace zeb
