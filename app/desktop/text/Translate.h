// The texts of windows in the chosen language. The engine's texts are English; they are translated where they
// are drawn, and nowhere else, so that the journal and the settings stay as they are.
//
// On the loop's thread.
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <string_view>

#include "text/LanguageFile.h"

namespace zeb {

// The text in the chosen language; as it is when the language has no other for it.
QString T(std::string_view english);

// The language from now on; null: English as it is written. Open windows change theirs; then every
// LanguageWatch is told.
void InstallLanguage(std::shared_ptr<const Language> language);

// Held by what keeps texts that it has put together itself ("%1 services"): `changed` is called after each
// change of language, for drawing them anew. Captions and menus need none.
class LanguageWatch {
 public:
  explicit LanguageWatch(std::function<void()> changed);
  ~LanguageWatch();
  LanguageWatch(const LanguageWatch&) = delete;
  LanguageWatch& operator=(const LanguageWatch&) = delete;

 private:
  const std::shared_ptr<std::function<void()>> changed_;
};

}  // namespace zeb
