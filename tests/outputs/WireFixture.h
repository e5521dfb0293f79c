// A service, its debug log read line by line, and simulated serial ports, for the outputs on the wire.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "core/clsZEBService.h"
#include "diagnostics/hxGeneral.h"
#include "platform/simulated/SimulatedSerialPort.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {

class WireTest : public testing::Test {
 protected:
  using Lines = std::vector<std::string>;

  WireTest() {
    log.Install();
    service.SetServiceNumber(7);
    Play("Rain on Slate");
    t.person.notes.clear();
  }
  void TearDown() override { EXPECT_EQ(t.loop.TaskCount(), 0U); }

  void Play(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    item.Edit().ItemType = 7;
    service.SetCurrentItem(item);
  }
  SnapshotPtr Snapshot() { return service.TakeSnapshot(); }
  // Whether something was sent.
  bool Update(clsZEBTemplate& output) {
    bool sent = false;
    EXPECT_TRUE(t.loop.RunTask([&] {
      const SnapshotPtr snapshot = Snapshot();
      output.PrepareOutput(snapshot);
      sent = output.UpdateOutput(snapshot);
      output.FinishOutput(snapshot);
    }));
    t.loop.RunPosted();  // what it has started, such as its log
    return sent;
  }
  // The debug lines since the last call, without their times and indents.
  Lines Log() {
    Lines lines;
    for (const std::string& note : std::exchange(t.person.notes, {}))
      if (note.size() > 8 && note[2] == ':' && note[5] == ':')
        lines.push_back(note.substr(note.find_first_not_of(' ', 8)));
      else
        journal.push_back(note);
    return lines;
  }
  static bool Has(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }

  TestEnvironment t;
  DebugLog log{t.loop, t.files, t.person, "zebd", "/log", 5, true};
  Lines journal;  // what Log has found that is no debug line
  ServiceEvents events;
  clsZEBService service{t.environment, [](OutputType) { return OutputPtr(); }, events};
};

}  // namespace zeb
