#include <QPointer>
#include <algorithm>
#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/OptionsSheet.h"
#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/PropertyDialog.h"
#include "app/frmMain.h"
#include "platform/FileSystem.h"
#include "platform/SerialPortControl.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr Duration kLookLimit = std::chrono::seconds(10);

// What a worker finds for the lists.
struct Found {
  std::vector<PropertyChoice> devices, languages;
};

struct Places {
  SerialPorts* ports = nullptr;
  FileSystem& files;
  std::string languages;
};

Found Look(const Places& places) {
  Found found;
  if (places.ports != nullptr)
    for (const SerialPorts::Found& port : places.ports->Available())
      found.devices.push_back({port.device, port.device + (port.text.empty() ? "" : " – " + port.text)});
  if (const auto names = places.files.List(places.languages))
    for (const std::string& name : names.Value())
      if (name.starts_with("lang-") && name.ends_with(".txt")) {
        const std::string language = name.substr(5, name.size() - 9);
        found.languages.push_back({language, language});
      }
  return found;
}

void Offer(const PropertyDialog& dialog, const Found& found) {
  for (std::int32_t port = 1; port <= kMostCommPorts; ++port)
    dialog.Field(kCommPortDevice + std::to_string(port))->Offer(found.devices);
  dialog.Field("Language")->Offer(found.languages);
}

void LookAround(Desk& desk, PropertyDialog* dialog) {
  const Places places{desk.environment.serialPorts, desk.environment.files,
                      JoinPath(desk.environment.dataFolder, "Languages")};
  EventLoop& loop = desk.environment.loop;
  loop.Start("looking for serial ports", [&loop, places, shown = QPointer<PropertyDialog>(dialog)] {
    auto found = loop.RunBlocking([places] { return Look(places); }, kLookLimit);
    if (found)
      loop.Post([shown, found = std::move(*found)] {
        if (shown) Offer(*shown, found);
      });
  });
}

struct Editing {
  ProgramOptions before, draft;
};

}  // namespace

void OpenOptions(Desk& desk) {
  const auto editing = std::make_shared<Editing>();
  SettingsHive& hive = desk.environment.hive;
  try {
    editing->before = ReadOptions(hive, desk.environment.settingsRoot);
  } catch (const std::exception& error) {
    return desk.boxes.Show(desk.frame, MessageIcon::kExclamation,
                           std::string("The options cannot be read: ") + error.what());
  }
  editing->draft = editing->before;
  auto* dialog = new PropertyDialog(desk, nullptr, OptionsSheet(editing->draft));
  dialog->setObjectName("Options");
  dialog->store = [&desk, &hive, editing] {
    Outcome stored = StoreOptions(hive, desk.environment.settingsRoot, editing->before, editing->draft);
    if (stored) desk.reload ? desk.reload() : desk.main.Reload();
    return stored;
  };
  dialog->Open();
  LookAround(desk, dialog);
}

}  // namespace zeb
