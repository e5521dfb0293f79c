#include "outputs/OutputTable.h"

#include <memory>
#include <utility>

#include "outputs/dab/DABTest.h"
#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/encoder/EncoderTest.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/file/DestinationsInProgress.h"
#include "outputs/file/FileTest.h"
#include "outputs/file/PublishedNames.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "outputs/http/HTTPTest.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/labels/LabelClient.h"
#include "outputs/serial/SerialTest.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/web/WebTest.h"
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
  OutputSettings (*settings)();
  std::unique_ptr<OutputTest> (*test)(Environment& environment, const clsZEBTemplate& output);
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

template <class Test, class Output>
std::unique_ptr<OutputTest> MakeTest(Environment& environment, const clsZEBTemplate& output) {
  const auto* own = dynamic_cast<const Output*>(&output);
  return own ? std::make_unique<Test>(environment, *own) : nullptr;
}

template <auto table>
OutputSettings Own() {
  return {ListOf(table()), {}};
}

OutputSettings WithPairs(SettingList own) {
  const SettingList switches = ListOf(PairSwitchTable());
  own.insert(own.end(), switches.begin(), switches.end());
  return {std::move(own), PairSettingList()};
}

constexpr Row kTable[] = {
    {OutputType::kFile, MakeFileOutput, nullptr, [] { return WithPairs({}); },
     MakeTest<FileTest, clsZEBFileOutput>},
    {OutputType::kHTTP, Make<clsZEBHTTPOutput>, MakeTcpClient, Own<HTTPSettingTable>,
     MakeTest<HTTPTest, clsZEBHTTPOutput>},
    {OutputType::kWeb, MakeWebOutput, nullptr, [] { return WithPairs(ListOf(WebSettingTable())); },
     MakeTest<WebTest, clsZEBWebOutput>},
    {OutputType::kEncoder, Make<clsZEBEncoderOutput>, MakeTcpClient, Own<EncoderSettingTable>,
     MakeTest<EncoderTest, clsZEBEncoderOutput>},
    {OutputType::kDAB, Make<clsZEBDABOutput>, MakeLabelClient, Own<DABSettingTable>,
     MakeTest<DABTest, clsZEBDABOutput>},
    {OutputType::kSerial, Make<clsZEBSerialOutput>, MakeSerialPort, Own<SerialSettingTable>,
     MakeTest<SerialTest, clsZEBSerialOutput>},
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

OutputSettings SettingsOf(OutputType type) {
  const Row* row = FindRow(type);
  if (!row) return {};
  OutputSettings settings = row->settings();
  const SettingList common = CommonOutputSettings();
  settings.own.insert(settings.own.end(), common.begin(), common.end());
  return settings;
}

std::unique_ptr<OutputTest> MakeOutputTest(Environment& environment, OutputType type,
                                           const clsZEBTemplate& output) {
  const Row* row = FindRow(type);
  return row ? row->test(environment, output) : nullptr;
}

std::shared_ptr<Control> MakeControl(Environment& environment, OutputType type) {
  const Row* row = FindRow(type);
  return row && row->makeControl ? row->makeControl(environment) : nullptr;
}

}  // namespace zeb
