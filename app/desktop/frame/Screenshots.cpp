#include "app/desktop/frame/Screenshots.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPixmap>
#include <QWidget>
#include <array>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/Files.h"
#include "app/desktop/frame/AboutBox.h"
#include "app/desktop/frame/MainWindow.h"
#include "app/desktop/frame/Theme.h"
#include "app/desktop/print/Printing.h"
#include "app/frmMain.h"
#include "platform/Operator.h"

namespace zeb {
namespace {

// Until what was opened is drawn.
constexpr Duration kDrawn = std::chrono::milliseconds(600);

using Open = std::function<void(Desk&, MainWindow&)>;

struct Shot {
  std::string name;
  Open open;
};

std::function<void(Desk&, MainWindow&)> OnService(void (*open)(Desk&, const ServicePtr&)) {
  return [open](Desk& desk, MainWindow& window) {
    if (const ServicePtr service = window.Service()) open(desk, service);
  };
}

Open OnPage(ServiceWindow::Page page) {
  return [page](Desk&, MainWindow& window) {
    if (const ServicePtr service = window.Service()) window.Area().Show(service)->ShowPage(page);
  };
}

// Of the first output of a type.
Open OnOutput(OutputType type, void (*open)(Desk&, const ServicePtr&, const OutputPtr&)) {
  return [type, open](Desk& desk, MainWindow& window) {
    const ServicePtr service = window.Service();
    const OutputPtr output = service ? service->service().Output(type, 1) : nullptr;
    if (output) open(desk, service, output);
  };
}

// Every window has its row.
const std::vector<Shot>& Shots() {
  static const std::vector<Shot> shots = {
      {"service-items", OnPage(ServiceWindow::Page::kItems)},
      {"service-listeners", OnPage(ServiceWindow::Page::kListeners)},
      {"service-history", OnPage(ServiceWindow::Page::kHistory)},
      {"service-journal", OnPage(ServiceWindow::Page::kJournal)},
      {"service-settings", OnService(&OpenServiceSettings)},
      {"add-output", OnService(&OpenAddOutput)},
      {"output-file", OnOutput(OutputType::kFile, &OpenOutputProperties)},
      {"output-web", OnOutput(OutputType::kWeb, &OpenOutputProperties)},
      {"output-http", OnOutput(OutputType::kHTTP, &OpenOutputProperties)},
      {"output-serial", OnOutput(OutputType::kSerial, &OpenOutputProperties)},
      {"output-encoder", OnOutput(OutputType::kEncoder, &OpenOutputProperties)},
      {"output-dab", OnOutput(OutputType::kDAB, &OpenOutputProperties)},
      {"output-test", OnOutput(OutputType::kFile, &OpenOutputTest)},
      {"manual-entry", OnService(&OpenManualEntry)},
      {"template-builder",
       [](Desk& desk, MainWindow& window) {
         OpenFormatCreator(desk, &window, window.Service(), "[(<ZEB_NOW_ITEMTYPE>=Song)<ZEB_NOW_ITEMNAME>]",
                           [](const std::string&) {});
       }},
      {"remove-service", [](Desk& desk, MainWindow&) { OpenRemoveService(desk); }},
      {"options", [](Desk& desk, MainWindow&) { OpenOptions(desk); }},
      {"import", [](Desk& desk, MainWindow&) { OpenImportSettings(desk); }},
      {"support-file", [](Desk& desk, MainWindow&) { OpenSupportFile(desk); }},
      {"print-preview",
       [](Desk& desk, MainWindow& window) {
         if (const ServicePtr service = window.Service())
           OpenPrintPreview(desk, service, ReportKind::kConfiguration);
       }},
      {"about", [](Desk& desk, MainWindow& window) { OpenAboutBox(desk, &window); }},
      {"quit", [](Desk&, MainWindow& window) { window.close(); }},
  };
  return shots;
}

// What stands before the frame; the frame when nothing does.
QWidget* Front(MainWindow& window) {
  for (QWidget* top : QApplication::topLevelWidgets())
    if (top->isVisible() && dynamic_cast<QDialog*>(top) != nullptr) return top;
  return &window;
}

class Photographer {
 public:
  Photographer(Desk& desk, MainWindow& window, std::string folder, std::function<void()> done)
      : desk_(desk), window_(window), folder_(std::move(folder)), done_(std::move(done)) {
    QDir().mkpath(QString::fromStdString(folder_));
  }

  void Begin() {
    Later([this] { Next(); });
  }

 private:
  void Later(std::function<void()> what) { timer_ = desk_.environment.loop.After(kDrawn, std::move(what)); }

  void Next() {
    if (at_ == 2 * Shots().size()) return done_();
    ApplyTheme(Dark() ? ThemeChoice::kDark : ThemeChoice::kLight);
    shot().open(desk_, window_);
    Later([this] { Take(); });
  }

  void Take() {
    QWidget* front = Front(window_);
    const std::string path = folder_ + "/" + shot().name + (Dark() ? "-dark" : "") + ".png";
    if (!front->grab().save(QString::fromStdString(path)))
      desk_.environment.person.Note("cannot write the picture '" + path + "'");
    while ((front = Front(window_)) != &window_) {
      front->close();
      if (front->isVisible()) front->hide();
    }
    ++at_;
    Later([this] { Next(); });
  }

  const Shot& shot() const { return Shots().at(at_ % Shots().size()); }
  bool Dark() const { return at_ >= Shots().size(); }

  Desk& desk_;
  MainWindow& window_;
  const std::string folder_;
  const std::function<void()> done_;
  std::size_t at_ = 0;
  Timer timer_;
};

}  // namespace

void TakeScreenshots(Desk& desk, MainWindow& window, const std::string& folder, std::function<void()> done) {
  // It lives until the program ends, as the pictures' `done` does.
  static std::unique_ptr<Photographer> photographer;
  photographer = std::make_unique<Photographer>(desk, window, folder, std::move(done));
  photographer->Begin();
}

}  // namespace zeb
