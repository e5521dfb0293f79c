#include "app/desktop/frame/FrameSettings.h"

#include <QString>
#include <QStringList>
#include <exception>

#include "platform/Operator.h"
#include "platform/SettingsHive.h"

namespace zeb {
namespace {

// More windows than anybody looks at are not opened at a start.
constexpr qsizetype kMostOpen = 20;

std::vector<int> Numbers(const std::string& text) {
  std::vector<int> numbers;
  for (const QString& word : QString::fromStdString(text).split(',', Qt::SkipEmptyParts).mid(0, kMostOpen))
    if (const int number = word.toInt(); number > 0) numbers.push_back(number);
  return numbers;
}

std::string Text(const std::vector<int>& numbers) {
  std::string text;
  for (const int number : numbers) text += (text.empty() ? "" : ",") + std::to_string(number);
  return text;
}

}  // namespace

FrameLayout FrameSettings::Read() const {
  FrameLayout layout;
  try {
    SettingsHive& hive = environment_.hive;
    const std::string key = Key();
    layout.frame = Placement::FromText(hive.ReadText(key, "Frame", ""));
    layout.theme = ThemeByWord(hive.ReadText(key, "Theme", ""));
    layout.tabs = hive.ReadNumber(key, "Tabs", 0) != 0;
    layout.overview = hive.ReadNumber(key, "Overview", 1) != 0;
    layout.overviewWidth = hive.ReadNumber(key, "OverviewWidth", 0);
    layout.openKnown = hive.HasValue(key, "OpenServices");
    layout.open = Numbers(hive.ReadText(key, "OpenServices", ""));
  } catch (const std::exception& error) {
    environment_.person.Note(std::string("The windows' places cannot be read: ") + error.what());
  }
  return layout;
}

FrameSettings::ServicePlace FrameSettings::ReadWindow(int service) const {
  try {
    SettingsHive& hive = environment_.hive;
    const std::string key = environment_.ServiceKey(service) + "\\Window";
    return {service, Placement::FromText(hive.ReadText(key, "Place", "")), hive.ReadText(key, "View", "")};
  } catch (const std::exception&) {
    return {service, {}, ""};  // Read has told of the store already
  }
}

void FrameSettings::Write(const FrameLayout& layout, const std::vector<ServicePlace>& windows) const {
  Store([&] {
    SettingsHive& hive = environment_.hive;
    const std::string key = Key();
    hive.WriteText(key, "Frame", layout.frame.ToText());
    hive.WriteNumber(key, "Tabs", layout.tabs ? 1 : 0);
    hive.WriteNumber(key, "Overview", layout.overview ? 1 : 0);
    hive.WriteNumber(key, "OverviewWidth", layout.overviewWidth);
    hive.WriteText(key, "OpenServices", Text(layout.open));
    // A service that has gone meanwhile must not come back as an empty key.
    for (const ServicePlace& window : windows)
      if (const std::string service = environment_.ServiceKey(window.service); hive.KeyExists(service)) {
        hive.WriteText(service + "\\Window", "Place", window.placement.ToText());
        hive.WriteText(service + "\\Window", "View", window.view);
      }
  });
}

void FrameSettings::WriteTheme(ThemeChoice theme) const {
  Store([&] { environment_.hive.WriteText(Key(), "Theme", std::string(WordOf(theme))); });
}

void FrameSettings::Store(const std::function<void()>& changes) const {
  try {
    environment_.hive.Transaction(changes);
  } catch (const std::exception& error) {
    environment_.person.Note(std::string("The windows' places cannot be stored: ") + error.what());
  }
}

}  // namespace zeb
