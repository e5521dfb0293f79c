// EncoderAutomation: the streaming encoders that a program on the same or another computer offers by
// automation.
//
// Only some platforms have it: the environment holds null where it is not available. What an encoder cannot
// do is a reason in one line, not an exception.
//
// Every call may block for as long as the encoder likes, so none is made on the loop's thread: a WorkLane
// makes it, with a limit, and owns what it calls. An encoder takes one call after the other. Letting go of
// one never blocks, on whatever thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/Result.h"

namespace zeb {

class RealProducerEncoder {
 public:
  virtual ~RealProducerEncoder() = default;
  virtual Result<bool> IsEncoding() = 0;
  virtual Outcome SendRealMediaEvent(std::int32_t kind, const std::string& text) = 0;
};

class AsfEncoder {
 public:
  virtual ~AsfEncoder() = default;
  virtual Result<bool> Started() = 0;
  virtual Outcome LoadASD(const std::string& fileName) = 0;
  virtual Outcome SendScript(const std::string& commandType, const std::string& text) = 0;
};

class WindowsMediaEncoder {
 public:
  virtual ~WindowsMediaEncoder() = default;
  virtual Result<std::int32_t> RunState() = 0;  // 1 starting, 2 running, 3 paused, 4 stopping, 5 stopped
  virtual Outcome SendScript(std::int32_t index, const std::string& commandType, const std::string& text) = 0;
};

// Lists and hands out the encoders of one computer.
class EncoderAgent {
 public:
  virtual ~EncoderAgent() = default;
  virtual Result<std::vector<std::string>> EncoderNames() = 0;
  virtual Result<std::unique_ptr<WindowsMediaEncoder>> Encoder(const std::string& name) = 0;
};

class EncoderAutomation {
 public:
  virtual ~EncoderAutomation() = default;
  virtual Result<std::unique_ptr<RealProducerEncoder>> CreateRealProducer() = 0;
  virtual Result<std::unique_ptr<AsfEncoder>> CreateAsfEncoder() = 0;
  // "": the agent on this computer.
  virtual Result<std::unique_ptr<EncoderAgent>> CreateEncoderAgent(const std::string& computer) = 0;
};

}  // namespace zeb
