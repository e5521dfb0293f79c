#include "templates/cTextFieldModifier.h"

#include <utility>

#include "diagnostics/hxGeneral.h"
#include "templates/ConfigFile.h"

namespace zeb {

void cTextFieldModifier::SetRawPrefix(std::string text) {
  prefix_ = ConvertHexEscapes(text);
  rawPrefix_ = std::move(text);
}

void cTextFieldModifier::SetRawSuffix(std::string text) {
  suffix_ = ConvertHexEscapes(text);
  rawSuffix_ = std::move(text);
}

Outcome cTextFieldModifier::ReadFromConfigFile(FileSystem& files, const std::string& fileName,
                                               std::string_view section, std::string_view key) {
  const Result<IniFile> file = ReadConfigFile(files, fileName);
  if (!file) return file.AsFailure();
  const std::string start(key);
  if (auto text = file.Value().Text(section, start + ".Prefix"); text && !text->empty()) SetRawPrefix(*text);
  if (auto text = file.Value().Text(section, start + ".Suffix"); text && !text->empty()) SetRawSuffix(*text);
  return {};
}

Outcome cTextFieldModifier::WriteToConfigFile(FileSystem& files, const std::string& fileName,
                                              std::string_view section, std::string_view key) const {
  return ChangeConfigFile(files, fileName, [&](IniFile& file) {
    file.Write(section, std::string(key) + ".Prefix", rawPrefix_);
    file.Write(section, std::string(key) + ".Suffix", rawSuffix_);
  });
}

std::string cTextFieldModifier::ProcessField(std::string_view value) const {
  return rawPrefix_ + std::string(value) + rawSuffix_;
}

}  // namespace zeb
