// DesktopTest: the engine on simulated ports with the desktop's windows in front of it, drawn into memory.
// Nothing waits: time passes by Pass, and Settle lets Qt do what it has to do now.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QString>
#include <QWidget>
#include <string>
#include <vector>

#include "app/desktop/Boxes.h"
#include "app/desktop/Desk.h"
#include "app/desktop/DesktopOperator.h"
#include "app/frmMain.h"
#include "dashboard/JournalTail.h"
#include "outputs/OutputTable.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {

class DesktopTest : public testing::Test {
 protected:
  DesktopTest();
  ~DesktopTest() override;

  // A station as it is stored; before Load. `values` are of the service's key.
  void Station(const std::string& name, const std::vector<std::pair<std::string, std::string>>& values = {});
  // An output of a station; names as they are stored, with the number ("URL1").
  void Output(int station, OutputType type, const std::vector<std::pair<std::string, std::string>>& values);
  void Load();
  void Send(int station, const std::string& message);  // as the playout does

  void Settle();             // what Qt has waiting, and what the loop has at this moment
  void Pass(Duration time);  // simulated
  // The box that is open; null: none. And all of them.
  static QMessageBox* Box();
  static std::vector<QMessageBox*> AllBoxes();
  static std::string BoxText();
  // Presses the button with the caption ("Yes", mnemonic or not) of the box, or of the widget given.
  void Press(const std::string& caption, QWidget* in = nullptr);
  // The visible top-level window of a type; null: none.
  template <class W>
  static W* Open();
  // A child of any visible window by object name; fails the test when there is none.
  static QWidget* Named(const char* name);
  // Text typed into the named field by keys, in the place of what was in it.
  void Type(const char* name, const std::string& text);

  SimulatedLoop loop;
  MemoryHive hive;
  SimulatedFiles files;
  SimulatedNetwork network{loop};
  RecordingOperator console;
  MemoryCarts carts;
  Boxes boxes;
  DesktopOperator person{console, loop, boxes, false};
  JournalTail journal{person, loop};
  Environment environment{loop,    hive,  files,   network,
                          journal, carts, "/data", "Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1"};
  OutputFactory makeOutput = MakeOutputFactory(environment);
  frmMain main{environment, makeOutput, {}};
  Desk desk{environment, main, makeOutput, boxes, journal, {}};
};

template <class W>
W* DesktopTest::Open() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible())
      if (auto* found = dynamic_cast<W*>(widget)) return found;
  return nullptr;
}

}  // namespace zeb
