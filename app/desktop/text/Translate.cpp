#include "app/desktop/text/Translate.h"

namespace zeb {

QString T(std::string_view english) {
  return QString::fromUtf8(english.data(), static_cast<qsizetype>(english.size()));
}

}  // namespace zeb
