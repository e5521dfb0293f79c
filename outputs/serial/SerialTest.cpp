#include "outputs/serial/SerialTest.h"

#include <memory>
#include <optional>
#include <string>

#include "platform/FileSystem.h"
#include "platform/SerialLineSettings.h"

namespace zeb {

void SerialTest::Run(TestSteps& steps) {
  const std::string port = "port " + std::to_string(line_.commPort) + ", '" + line_.device + "'";
  if (inUse_) {
    steps.Add(port, {}, "the running output has it open; it is not opened a second time");
    return;
  }
  if (!steps.Add("line settings '" + line_.settings + "'", ParseSerialLineSettings(line_.settings))) return;
  // Not one on the network, nor COM1, which is no file.
  const bool isFile = line_.device.starts_with('/');
  if (isFile && !steps.Add(port, LookForDevice())) return;
  steps.Add("opening " + port, TryToOpen());
}

Outcome SerialTest::LookForDevice() {
  FileSystem& files = environment_.files;
  const auto there =
      lane_.Run([&files, device = line_.device] { return files.Stat(device).has_value(); }, kTestStepLimit);
  if (!there) return Failure{"the device has not answered for 10 seconds"};
  return *there ? Outcome() : Outcome(Failure{"there is no such device"});
}

Outcome SerialTest::TryToOpen() {
  if (!environment_.serialPorts) return Failure{"this program has no serial ports"};
  const std::shared_ptr<SerialPortControl> port = environment_.serialPorts->MakePort();
  port->SetLine(line_);
  if (Outcome opened = port->Open(); !opened) return opened;
  const bool ended = environment_.loop.WaitUntil([&port] { return !port->Opening(); }, kTestStepLimit);
  const bool open = port->PortOpen();
  const std::string why = port->LastError();
  port->Close();
  if (open) return {};
  if (!why.empty()) return Failure{why};
  return Failure{ended ? "the port was closed" : "no answer within 10 seconds"};
}

}  // namespace zeb
