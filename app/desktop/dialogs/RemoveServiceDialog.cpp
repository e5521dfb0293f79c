#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/ListDialog.h"
#include "app/frmMain.h"

namespace zeb {
namespace {

// Others may have come and gone while the list was open.
void Remove(frmMain& main, const ServicePtr& window) {
  for (int number = 1; number <= main.NumberServices(); ++number)
    if (main.Window(number) == window) return main.RemoveService(number);
}

}  // namespace

void OpenRemoveService(Desk& desk) {
  ListQuestion question{"Services", "Remove Service", "Which service is to be removed:", {}};
  std::vector<std::weak_ptr<frmService>> services;
  for (int number = 1; number <= desk.main.NumberServices(); ++number) {
    const ServicePtr& window = desk.main.Window(number);
    services.push_back(window);
    question.lines.push_back(QString::fromStdString(window->service().settings.ServiceName));
  }
  OpenList(desk, question, [&desk, services](int chosen) {
    if (chosen < 0) return;
    if (const ServicePtr window = services.at(static_cast<std::size_t>(chosen)).lock())
      Remove(desk.main, window);
  });
}

}  // namespace zeb
