#include <QPointer>
#include <chrono>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/OptionsSheet.h"
#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/PropertyDialog.h"
#include "app/desktop/text/ChooseLanguage.h"
#include "app/frmMain.h"
#include "platform/SerialPortControl.h"

namespace zeb {
namespace {

constexpr Duration kLookLimit = std::chrono::seconds(10);

using Choices = std::vector<PropertyChoice>;

// On a worker.
Choices PortsThere(SerialPorts& ports) {
  Choices devices;
  for (const SerialPorts::Found& port : ports.Available())
    devices.push_back({port.device, port.device + (port.text.empty() ? "" : " – " + port.text)});
  return devices;
}

void OfferPorts(EventLoop& loop, SerialPorts& ports, PropertyDialog* dialog) {
  loop.Start("looking for serial ports", [&loop, &ports, shown = QPointer<PropertyDialog>(dialog)] {
    auto found = loop.RunBlocking([&ports] { return PortsThere(ports); }, kLookLimit);
    if (!found) return;
    loop.Post([shown, devices = std::move(*found)] {
      for (std::int32_t port = 1; shown && port <= kMostCommPorts; ++port)
        shown->Field(kCommPortDevice + std::to_string(port))->Offer(devices);
    });
  });
}

void OfferLanguages(Desk& desk, PropertyDialog* dialog) {
  ListLanguages(desk, [&loop = desk.environment.loop,
                       shown = QPointer<PropertyDialog>(dialog)](const std::vector<std::string>& names) {
    Choices choices;
    for (const std::string& name : names) choices.push_back({name, name});
    loop.Post([shown, choices] {
      if (shown) shown->Field("Language")->Offer(choices);
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
    if (!stored) return stored;
    desk.reload ? desk.reload() : desk.main.Reload();
    UseStoredLanguage(desk);
    return stored;
  };
  dialog->OpenToFit();
  if (desk.environment.serialPorts != nullptr)
    OfferPorts(desk.environment.loop, *desk.environment.serialPorts, dialog);
  OfferLanguages(desk, dialog);
}

}  // namespace zeb
