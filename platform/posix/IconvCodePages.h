// IconvCodePages: code pages as the C library knows them.
#pragma once

#include "platform/CodePages.h"

namespace zeb {

class IconvCodePages : public CodePages {
 public:
  std::optional<std::string> Decode(int codePage, std::string_view bytes) const override;
};

}  // namespace zeb
