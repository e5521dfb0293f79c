#include "outputs/OutputTable.h"

#include <memory>

#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/file/DestinationsInProgress.h"
#include "outputs/file/PublishedNames.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/labels/LabelClient.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/web/clsZEBWebOutput.h"
#include "platform/SerialPortControl.h"
#include "platform/Tcp.h"
#include "templates/TemplateStore.h"

namespace zeb {
namespace {

// What outputs of a program share.
struct Shared {
  Environment& environment;
  std::shared_ptr<DestinationsInProgress> destinations = std::make_shared<DestinationsInProgress>();
  std::shared_ptr<PublishedNames> names = std::make_shared<PublishedNames>();
  std::shared_ptr<TemplateStore> templates = std::make_shared<TemplateStore>();
};

using ControlPtr = std::shared_ptr<Control>;

struct Row {
  OutputType type;
  OutputPtr (*make)(const Shared& shared);
  ControlPtr (*makeControl)(Environment& environment);  // null: it needs none
};

template <class Output>
OutputPtr Make(const Shared& shared) {
  return std::make_shared<Output>(shared.environment);
}

ControlPtr MakeTcpClient(Environment& environment) {
  return environment.network.MakeClient();
}

ControlPtr MakeLabelClient(Environment& environment) {
  return std::make_shared<LabelClient>(environment.network);
}

ControlPtr MakeSerialPort(Environment& environment) {
  return environment.serialPorts ? environment.serialPorts->MakePort() : nullptr;
}

OutputPtr MakeFileOutput(const Shared& shared) {
  return std::make_shared<clsZEBFileOutput>(shared.environment, shared.destinations, shared.templates,
                                            shared.names);
}

OutputPtr MakeWebOutput(const Shared& shared) {
  return std::make_shared<clsZEBWebOutput>(shared.environment, shared.templates, shared.names);
}

constexpr Row kTable[] = {
    {OutputType::kFile, MakeFileOutput, nullptr},
    {OutputType::kHTTP, Make<clsZEBHTTPOutput>, MakeTcpClient},
    {OutputType::kWeb, MakeWebOutput, nullptr},
    {OutputType::kEncoder, Make<clsZEBEncoderOutput>, MakeTcpClient},
    {OutputType::kDAB, Make<clsZEBDABOutput>, MakeLabelClient},
    {OutputType::kSerial, Make<clsZEBSerialOutput>, MakeSerialPort},
};

const Row* FindRow(OutputType type) {
  for (const Row& row : kTable)
    if (row.type == type) return &row;
  return nullptr;
}

}  // namespace

OutputFactory MakeOutputFactory(Environment& environment) {
  return [shared = Shared{environment}](OutputType type) -> OutputPtr {
    const Row* row = FindRow(type);
    return row ? row->make(shared) : nullptr;
  };
}

std::shared_ptr<Control> MakeControl(Environment& environment, OutputType type) {
  const Row* row = FindRow(type);
  return row && row->makeControl ? row->makeControl(environment) : nullptr;
}

}  // namespace zeb
