// WinCodePages: the code pages that Windows itself knows.
#pragma once

#include "platform/CodePages.h"

namespace zeb {

class WinCodePages : public CodePages {
 public:
  std::optional<std::string> Decode(int codePage, std::string_view bytes) const override;
};

}  // namespace zeb
