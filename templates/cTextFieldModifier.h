// cTextFieldModifier: puts a prefix and a suffix around a value.
#pragma once

#include <string>
#include <string_view>

#include "platform/FileSystem.h"

namespace zeb {

class cTextFieldModifier {
 public:
  const std::string& RawPrefix() const { return rawPrefix_; }
  const std::string& RawSuffix() const { return rawSuffix_; }
  const std::string& Prefix() const { return prefix_; }  // {hh} escapes converted
  const std::string& Suffix() const { return suffix_; }
  void SetRawPrefix(std::string text);
  void SetRawSuffix(std::string text);

  // Keys key + ".Prefix" and ".Suffix"; one that is missing or empty leaves the field as it was.
  Outcome ReadFromConfigFile(FileSystem& files, const std::string& fileName, std::string_view section,
                             std::string_view key);
  Outcome WriteToConfigFile(FileSystem& files, const std::string& fileName, std::string_view section,
                            std::string_view key) const;

  // The raw texts are put around the value: escapes are not converted here, as settings in the field expect.
  std::string ProcessField(std::string_view value) const;

 private:
  std::string rawPrefix_, rawSuffix_, prefix_, suffix_;
};

}  // namespace zeb
