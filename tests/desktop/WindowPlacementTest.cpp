#include <gtest/gtest.h>

#include "app/desktop/frame/WindowPlacement.h"

namespace zeb {
namespace {

const std::vector<ScreenPlace> kTwo = {{"left", {0, 0, 1920, 1040}}, {"right", {1920, 0, 1280, 1024}}};

TEST(WindowPlacementTest, IsReadAsItWasWritten) {
  for (const WindowState state : {WindowState::kNormal, WindowState::kMaximised, WindowState::kMinimised}) {
    const Placement placement{{-1200, 30, 800, 600}, "HDMI-1", state};
    const Placement read = Placement::FromText(placement.ToText());
    EXPECT_EQ(read.normal, placement.normal);
    EXPECT_EQ(read.screen, "HDMI-1");
    EXPECT_EQ(read.state, state);
  }
  EXPECT_EQ((Placement{{1, 2, 300, 400}, "left", WindowState::kMaximised}.ToText()),
            "1,2,300,400,left,maximised");
}

TEST(WindowPlacementTest, WhatIsNoPlacementIsNotKnown) {
  for (const char* text :
       {"", "1,2,3", "a,2,300,400,left,normal", "1,2,300,400,left,normal,more", "1,2,3,4,left,normal",
        "1,2,300,-400,left,normal", "99999999999,2,300,400,,normal", "200000,2,300,400,,normal"})
    EXPECT_FALSE(Placement::FromText(text).Known()) << text;
}

TEST(WindowPlacementTest, AWindowIsWhollyVisible) {
  struct Case {
    const char* what;
    QRect wanted;
    const char* screen;
    QRect expected;
  };
  const Case cases[] = {
      {"where it fits it stays", {100, 100, 800, 600}, "left", {100, 100, 800, 600}},
      {"on the second screen", {2000, 100, 800, 600}, "right", {2000, 100, 800, 600}},
      {"over the edge", {1500, 800, 800, 600}, "left", {1120, 440, 800, 600}},
      {"its screen has gone, to the nearest", {3300, 100, 800, 600}, "third", {2400, 100, 800, 600}},
      {"left of everything", {-5000, -300, 800, 600}, "third", {0, 0, 800, 600}},
      {"larger than the screen", {1920, 0, 3000, 2000}, "right", {1920, 0, 1280, 1024}},
      {"the name is there, the place is another's", {100, 100, 800, 600}, "right", {100, 100, 800, 600}},
  };
  for (const Case& one : cases) {
    const QRect place = Visible(one.wanted, one.screen, kTwo);
    EXPECT_EQ(place, one.expected) << one.what << ": " << place.x() << "," << place.y() << " "
                                   << place.width() << "x" << place.height();
  }
}

}  // namespace
}  // namespace zeb
