// A station with outputs of most types on simulated ports, and its window.
#pragma once

#include <QLabel>
#include <QTest>
#include <memory>
#include <string>

#include "app/desktop/service/GridView.h"
#include "app/desktop/service/ServiceWindow.h"
#include "platform/simulated/SimulatedSerialPort.h"
#include "tests/desktop/DesktopTest.h"

namespace zeb {

class ServiceWindowTest : public DesktopTest {
 protected:
  static constexpr char kSong[] = "SET_CURRENT_ITEM ITitle=Waterloo AName1=ABBA IType=7";

  ServiceWindowTest() {
    environment.serialPorts = &ports;
    EXPECT_TRUE(files.CreateFolders("/w"));
    EXPECT_TRUE(files.CreateFolders("/data"));
    files.Put("/t/page.txt", "Now: <ZEB_NOW_ITEMNAME>");
  }
  ~ServiceWindowTest() override { window.reset(); }

  void AddFile() {
    Output(1, OutputType::kFile,
           {{"Output1.NumberFiles", "1"},
            {"Output1.SourceFileName1", "/t/page.txt"},
            {"Output1.DestinationFileName1", "/w/now.txt"}});
  }
  void AddSerial(const std::string& set = "RDS") {
    Output(1, OutputType::kSerial, {{"CommPort1", "3"}, {"CharacterSet1", set}});
  }
  void OpenWindow() {
    Load();
    window = std::make_unique<ServiceWindow>(desk, main.Window(1));
    window->resize(1100, 800);
    window->show();
    Drawn();
  }
  // What the frame's tick does.
  void Drawn() {
    window->Draw();
    Settle();
  }
  void Say(const std::string& message) {
    Send(1, message);
    Drawn();
  }
  // Time passes as in the running program, with a picture each 100 ms.
  void PassDrawn(Duration time) {
    for (Duration left = time; left > Duration::zero(); left -= std::chrono::milliseconds(100)) {
      Pass(std::min<Duration>(left, std::chrono::milliseconds(100)));
      window->Draw();
    }
    Settle();
  }
  std::string Text(const char* label) {
    auto* found = window->findChild<QLabel*>(QLatin1String(label));
    return found == nullptr ? std::string("no ") + label : found->text().toStdString();
  }
  GridView* Grid(const char* name) { return window->findChild<GridView*>(QLatin1String(name)); }
  std::string Cell(const char* grid, int row, int column, int role = Qt::DisplayRole) {
    const QAbstractItemModel* model = Grid(grid)->model();
    return model->data(model->index(row, column), role).toString().toStdString();
  }
  void Choose(int row) {
    GridView* grid = Grid("outputs");
    grid->setCurrentIndex(grid->model()->index(row, 0));
    Settle();
  }

  SimulatedSerialPorts ports{loop};
  std::unique_ptr<ServiceWindow> window;
};

}  // namespace zeb
