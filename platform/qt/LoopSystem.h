// What QtLoop needs of the system. Private to platform/qt; posix/ and windows/ each have an implementation.
#pragma once

#include <chrono>

namespace zeb {

// How far local time is ahead of UTC now.
std::chrono::seconds PresentUtcOffset();
// The quickest dispatcher of events for a program without windows; before the application object is made.
void SetPlainDispatcher();

}  // namespace zeb
