#include "platform/simulated/SimulatedSerialPort.h"

#include "platform/SerialLineSettings.h"

namespace zeb {

Outcome SimulatedSerialPort::Open() {
  Close();
  if (!openFailure.empty()) return Failure{openFailure};
  const Result<SerialLineSettings> settings = ParseSerialLineSettings(line.settings);
  if (!settings) return settings.AsFailure();
  open_ = true;
  ++opened;
  return {};
}

void SimulatedSerialPort::Close() {
  open_ = false;
  error_.clear();
  queued_ = 0;
  drain_.Stop();
}

Outcome SimulatedSerialPort::Output(std::string_view bytes) {
  if (!outputFailure.empty()) return Failure{outputFailure};
  if (!open_) return Failure{"the port is closed"};
  written.push_back({loop_.Monotonic(), std::string(bytes)});
  all += bytes;
  if (!stuck && byteTime == Duration::zero()) return {};
  queued_ += bytes.size();
  if (stuck || drain_.Running()) return {};
  drain_ = loop_.Every(byteTime, [this] {
    if (!stuck && queued_ > 0 && --queued_ == 0) drain_.Stop();
  });
  return {};
}

void SimulatedSerialPort::Unplug() {
  const bool wasOpen = open_;
  Close();
  error_ = openFailure = "the device is gone";
  if (const auto tell = onLost; wasOpen && tell) tell();
}

}  // namespace zeb
