// CodePages: text of the Windows code pages, in which language files may be written.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zeb {

// 932, 936, 949, 950 and 1250 to 1257, as files have named them since there are language files; and 65001,
// which is UTF-8.
constexpr int kUtf8CodePage = 65001;
constexpr bool IsKnownCodePage(int codePage) {
  return codePage == 932 || codePage == 936 || codePage == 949 || codePage == 950 ||
         (codePage >= 1250 && codePage <= 1257) || codePage == kUtf8CodePage;
}

class CodePages {
 public:
  virtual ~CodePages() = default;
  // The bytes as UTF-8; nothing when they are no text of that code page, or the system does not know it. May
  // be called on any thread.
  virtual std::optional<std::string> Decode(int codePage, std::string_view bytes) const = 0;
};

}  // namespace zeb
