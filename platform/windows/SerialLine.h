// SerialLine: one open serial port of this machine, by the system's overlapped calls.
//
// Any call here lasts as long as the device's driver likes, the end included, so a port makes them on a
// thread of its own and nowhere else.
#pragma once

#include <windows.h>
// After windows.h.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Result.h"
#include "platform/SerialLineSettings.h"
#include "platform/SerialLineState.h"
#include "platform/SerialPortControl.h"
#include "platform/windows/WinHandle.h"

namespace zeb {

// One kind of call, of which one at a time is under way. What the call works with must last until its end.
class OverlappedCall {
 public:
  bool UnderWay() const { return underWay_; }
  HANDLE Done() const { return done_.Get(); }
  bool IsDone() const { return WaitForSingleObject(done_.Get(), 0) == WAIT_OBJECT_0; }
  // `call` is given what the system wants of it. False: it failed at once, GetLastError says why.
  template <class Call>
  bool Start(Call call) {
    ResetEvent(done_.Get());
    overlapped_ = {};
    overlapped_.hEvent = done_.Get();
    underWay_ = call(&overlapped_) || GetLastError() == ERROR_IO_PENDING;
    return underWay_;
  }
  // The bytes that went, once it is done (waits for that); nothing when it failed.
  std::optional<std::size_t> End(HANDLE file);

 private:
  OVERLAPPED overlapped_{};
  WinHandle done_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  bool underWay_ = false;
};

// What the system is told of a line; the rest of it stays.
void ConfigureLine(DCB& line, const SerialLineSettings& settings, std::int32_t handshaking);

// Adds what the system reported since the last time: changes (EV_...) and errors (CE_...).
void CountLineEvents(SerialLineState& state, DWORD changes, DWORD errors);

class SerialLine {
 public:
  SerialLine(std::string device, const SerialLineSettings& settings, std::int32_t handshaking)
      : device_(std::move(device)), settings_(settings), handshaking_(handshaking) {}
  ~SerialLine();
  SerialLine(const SerialLine&) = delete;
  SerialLine& operator=(const SerialLine&) = delete;

  Outcome Open();
  bool IsTaken() const {
    return taken_;
  }  // why the last Open failed: another program has it, or had just now

  bool Writing() const { return write_.UnderWay(); }
  // How much the line carries in about a quarter of a second: bytes leave, and are counted, in such blocks.
  std::size_t BlockBytes() const;
  void Write(std::string block);  // while nothing is Writing
  std::size_t Unsent() const;     // of what was written, as far as the system tells

  // Waits until `wake` is set or something comes of the line, for half a second at most, and takes it in.
  // False: the device is gone, Problem says why.
  bool Wait(HANDLE wake, bool receive);
  const std::string& Problem() const { return problem_; }
  std::string TakeReceived() { return std::exchange(received_, {}); }
  std::vector<CommEvent> TakeEvents() { return std::exchange(events_, {}); }

 private:
  Outcome SetUp();
  bool Read();
  bool EndCalls();
  bool Look();
  void LookAtSignals();
  void Count();
  bool Gone();

  const std::string device_;
  const SerialLineSettings settings_;
  const std::int32_t handshaking_;
  WinHandle port_;
  OverlappedCall read_, write_, watch_;
  char readBytes_[4096];
  std::string block_;  // under way
  std::string received_, problem_;
  std::vector<CommEvent> events_;
  std::size_t queue_ = 0, arrived_ = 0;  // bytes with the driver, on their way out and in
  bool taken_ = false;
  bool watchable_ = true;            // the device tells of changes of its signals
  bool readPauses_ = false;          // until the next look: it ended without a byte
  std::optional<ULONGLONG> looked_;  // milliseconds
  // Since the last count.
  DWORD watched_ = 0, changes_ = 0, errors_ = 0;
  bool held_ = false;  // the line waits for CTS
  int looksHeld_ = 0;  // counts in a row, with bytes that wait
  SerialLineState state_, told_;
};

}  // namespace zeb
