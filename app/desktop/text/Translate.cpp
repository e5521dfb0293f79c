#include "app/desktop/text/Translate.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "app/desktop/text/Retranslate.h"

namespace zeb {
namespace {

using Watchers = std::vector<std::weak_ptr<std::function<void()>>>;

// One for the program, as it has one locale.
std::shared_ptr<const Language>& Installed() {
  static std::shared_ptr<const Language> language;
  return language;
}

Watchers& Watching() {
  static Watchers watchers;
  return watchers;
}

}  // namespace

QString T(std::string_view english) {
  const std::shared_ptr<const Language>& language = Installed();
  if (language) return QString::fromStdString(language->Translate(english));
  return QString::fromUtf8(english.data(), static_cast<qsizetype>(english.size()));
}

void InstallLanguage(std::shared_ptr<const Language> language) {
  const std::shared_ptr<const Language> before = std::exchange(Installed(), std::move(language));
  RetranslateWindows(before.get());
  // Drawing anew may make watches and end others.
  const Watchers watchers = Watching();
  for (const auto& watcher : watchers)
    if (const auto changed = watcher.lock()) (*changed)();
}

LanguageWatch::LanguageWatch(std::function<void()> changed)
    : changed_(std::make_shared<std::function<void()>>(std::move(changed))) {
  std::erase_if(Watching(), [](const auto& watcher) { return watcher.expired(); });
  Watching().push_back(changed_);
}

LanguageWatch::~LanguageWatch() = default;

}  // namespace zeb
