#include "platform/windows/WinCodePages.h"

#include <windows.h>

#include "platform/windows/WideText.h"

namespace zeb {

std::optional<std::string> WinCodePages::Decode(int codePage, std::string_view bytes) const {
  if (!IsKnownCodePage(codePage)) return std::nullopt;
  if (bytes.empty()) return std::string();
  const auto page = static_cast<UINT>(codePage);
  const int size = static_cast<int>(bytes.size());
  std::wstring wide(bytes.size() * 2, L'\0');
  const int units = MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), size, wide.data(),
                                        static_cast<int>(wide.size()));
  if (units == 0) return std::nullopt;
  return Narrow(std::wstring_view(wide).substr(0, static_cast<std::size_t>(units)));
}

}  // namespace zeb
