// English texts that are put together, said in one piece so that translators find them whole: scripts/texts
// lists what stands in Composed("…") and Translatable("…"), and the window finds the text again by its
// pattern (text/LanguageFile.h).
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace zeb {

// A text that is drawn elsewhere; as it is.
constexpr std::string_view Translatable(std::string_view english) {
  return english;
}

// The pattern with %1, %2 … replaced by the parts, as they are; a part is not looked into again.
std::string Composed(std::string_view pattern, std::initializer_list<std::string_view> parts);

}  // namespace zeb
