// WinEncoderAutomation: the encoders that register themselves for automation on this computer, and the
// encoder agents of this and other computers.
//
// Each encoder has a thread of its own, which its calls wait for (ComThread). So that one that hangs can be
// given up, nothing here touches this object once it waits.
#pragma once

#include <memory>
#include <string>

#include "platform/EncoderAutomation.h"
#include "platform/windows/ComThread.h"

namespace zeb {

class WinEncoderAutomation : public EncoderAutomation {
 public:
  Result<std::unique_ptr<RealProducerEncoder>> CreateRealProducer() override;
  Result<std::unique_ptr<AsfEncoder>> CreateAsfEncoder() override;
  Result<std::unique_ptr<EncoderAgent>> CreateEncoderAgent(const std::string& computer) override;

 private:
  ComThreads threads_;
};

}  // namespace zeb
