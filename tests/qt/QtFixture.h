// QtFixture: a QtLoop to test on. QtEnvironment.cpp makes the QCoreApplication.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "platform/qt/QtLoop.h"

namespace zeb {

struct QtFixture : testing::Test {
  QtLoop loop;

  // Runs events until the condition holds; false when it does not within the limit.
  bool Until(const std::function<bool()>& condition, Duration limit = std::chrono::seconds(20)) {
    bool held = false;
    loop.Start("until", [&] {
      held = loop.WaitUntil(condition, limit);
      loop.Quit(0);
    });
    loop.Run();
    return held;
  }
  // For who runs out of descriptors later: a sanitizer needs one when it meets a class for the first time.
  void MeetTimers() {
    Until([] { return false; }, std::chrono::milliseconds(1));
  }
};

}  // namespace zeb
