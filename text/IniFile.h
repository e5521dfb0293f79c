// IniFile: a Windows-style initialisation file in memory, read by the rules of that system's private
// profiles.
//
// Sections and keys are compared without regard to case; the first match wins. Blanks around names and values
// are dropped, then one pair of quotes around a value. Lines that begin with ";" are comments. Writing
// changes one line, or adds one, and keeps the rest of the file as it was, its encoding and line ends too.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/Encodings.h"

namespace zeb {

class IniFile {
 public:
  IniFile() = default;  // an empty file
  static IniFile FromBytes(std::string_view bytes);

  // Nothing when the section or the key is missing.
  std::optional<std::string> Text(std::string_view section, std::string_view key) const;
  // The leading number of the value; 0 when it is missing.
  std::int32_t Integer(std::string_view section, std::string_view key) const;
  // A value that would not read back as it is gets quotes; line ends in it become blanks.
  void Write(std::string_view section, std::string_view key, std::string_view value);

  std::string ToBytes() const;

 private:
  struct Section {
    std::size_t end = 0;                       // the line behind its last one that is not empty
    std::map<std::string, std::size_t> lines;  // by key in small letters
  };
  void Index();

  FileEncoding encoding_;
  std::string lineEnd_ = "\r\n";
  std::vector<std::string> lines_;
  std::map<std::string, Section> sections_;  // by name in small letters
};

}  // namespace zeb
