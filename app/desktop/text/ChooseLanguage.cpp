#include "app/desktop/text/ChooseLanguage.h"

#include <exception>
#include <memory>
#include <optional>
#include <utility>

#include "app/Languages.h"
#include "app/desktop/text/Translate.h"
#include "platform/EventLoop.h"
#include "platform/Operator.h"
#include "platform/SettingsHive.h"

namespace zeb {
namespace {

constexpr Duration kLimit = std::chrono::seconds(20);
constexpr std::size_t kMostTold = 10;

std::string StoredLanguage(const Environment& environment) {
  return environment.hive.ReadText(environment.settingsRoot, kLanguageSetting, "");
}

void Load(Environment& environment, const std::function<void(const std::string&)>& failed) {
  const auto fail = [&](const std::string& reason) {
    environment.person.Note("The language stays as it is: " + reason);
    if (failed) failed(reason);
  };
  try {
    const std::string name = StoredLanguage(environment);
    std::optional<Result<Languages::Loaded>> loaded = environment.loop.RunBlocking(
        [languages = Languages(environment), name] { return languages.Load(name); }, kLimit);
    if (!loaded) return fail("its file could not be read in time");
    if (!*loaded) return fail(loaded->Reason());
    // Chosen anew while the file was read: that one is under way.
    if (name != StoredLanguage(environment)) return;
    const std::vector<std::string>& problems = loaded->Value().problems;
    for (std::size_t i = 0; i < problems.size() && i < kMostTold; ++i)
      environment.person.Note("Language file " + problems[i]);
    InstallLanguage(loaded->Value().language);
  } catch (const std::exception& error) {
    fail(error.what());
  }
}

}  // namespace

void UseStoredLanguage(Desk& desk, std::function<void(const std::string& reason)> failed) {
  Environment& environment = desk.environment;
  environment.loop.Start("language",
                         [&environment, failed = std::move(failed)] { Load(environment, failed); });
}

void ListLanguages(Desk& desk, std::function<void(std::vector<std::string> names)> listed) {
  Environment& environment = desk.environment;
  environment.loop.Start("languages", [&environment, listed = std::move(listed)] {
    auto names = environment.loop.RunBlocking(
        [languages = Languages(environment)] { return languages.Names(); }, kLimit);
    listed(names ? std::move(*names) : std::vector<std::string>());
  });
}

}  // namespace zeb
