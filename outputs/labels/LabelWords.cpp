#include "outputs/labels/LabelWords.h"

#include <algorithm>

#include "outputs/wire/WireCharacters.h"
#include "text/HexEscapes.h"
#include "text/Utf8.h"

namespace zeb {

std::string_view FirstWord(std::string_view line) {
  return line.substr(0, line.find(' '));
}

std::string_view AfterFirstWord(std::string_view line) {
  return line.substr(std::min(line.size(), FirstWord(line).size() + 1));
}

std::string LabelParameter(std::string_view key, std::string_view value) {
  return " " + std::string(key) + "=\"" + EscapeValue(value) + "\"";
}

std::size_t LabelBytes(std::string_view label) {
  return KeepToSet(label, CharacterSet::kEbuLatin) == label ? CountInSet(label, CharacterSet::kEbuLatin)
                                                            : label.size();
}

// The bytes never become fewer as a label grows, so the cut can be found by halving.
std::string_view FittingLabel(std::string_view label) {
  // Marks and joiners take no byte, but no label is worth counting 64 KiB of them again and again.
  label = FirstCharacters(label, 16 * kMaxLabelBytes);
  if (LabelBytes(label) <= kMaxLabelBytes) return label;
  std::size_t fits = 0, tooMany = CountCharacters(label);
  while (tooMany - fits > 1) {
    const std::size_t middle = fits + (tooMany - fits) / 2;
    (LabelBytes(FirstCharacters(label, middle)) <= kMaxLabelBytes ? fits : tooMany) = middle;
  }
  return FirstCharacters(label, fits);
}

}  // namespace zeb
