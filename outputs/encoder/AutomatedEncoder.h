// AutomatedEncoder: an output's encoder that is driven by automation, of whichever kind: made, asked how it
// is, and told texts.
//
// Encoders hang and go away. So each call is made by a worker and has a limit; past it the encoder takes no
// other call until that one has come back. Held by shared_ptr: by the output, and by each task that calls.
// Start, Look and Send are called in a task, and wait.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "outputs/encoder/EncoderSettings.h"
#include "platform/EncoderAutomation.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"
#include "platform/WorkLane.h"

namespace zeb {

class AutomatedEncoder {
 public:
  static constexpr auto kCallLimit = std::chrono::seconds(5);
  // A program may have to be started first, and a computer that is off is found out only after some 20 s.
  static constexpr auto kStartLimit = std::chrono::seconds(30);

  explicit AutomatedEncoder(EventLoop& loop) : lane_(loop) {}

  // Makes the encoder that the settings name, in place of the one before.
  Outcome Start(EncoderAutomation& automation, const EncoderSettings& settings);
  // Its state as an output's status code.
  Result<std::int32_t> Look();
  Outcome Send(const EncoderCommand& command);
  void Drop();  // what is under way fails

  bool Attached() const { return driver_ != nullptr; }
  bool Hangs() const { return lane_.Hangs(); }
  bool Busy() const { return calls_ > 0 || Hangs(); }

 private:
  struct Driver;
  struct RealProducerDriver;
  struct AsfDriver;
  struct MediaDriver;
  using DriverPtr = std::shared_ptr<Driver>;

  static Result<DriverPtr> Make(EncoderAutomation& automation, const EncoderSettings& settings);
  static Result<DriverPtr> MakeMediaDriver(EncoderAutomation& automation, const EncoderSettings& settings);
  template <class Work>
  auto Call(const std::string& name, std::chrono::seconds limit, Work work) -> decltype(work());

  WorkLane lane_;
  DriverPtr driver_;
  std::string name_;  // of the encoder, for reasons
  Epoch held_;        // from one driver to the next
  int calls_ = 0;     // that tasks wait for
};

}  // namespace zeb
