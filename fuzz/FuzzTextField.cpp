// A text field's definition (the input up to the first NUL) and the text that it is used on.
#include <cstdint>
#include <cstdlib>

#include "templates/cTextField.h"
#include "text/Encodings.h"
#include "text/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t border = input.find('\0');
  if (border == std::string_view::npos) return 0;
  cTextField field;
  field.ReadFromConfig(IniFile::FromBytes(input.substr(0, border)), "S", "K");
  for (const bool optional : {false, true}) {
    field.SuffixOptional = optional;
    const std::string value = field.GetField(DecodeLenient(input.substr(border + 1)));
    if (!IsValidUtf8(value) || field.LastEndPosition() < field.LastStartPosition()) std::abort();
    if (!field.HasSettings() && !value.empty()) std::abort();
  }
  return 0;
}
