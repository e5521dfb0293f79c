#include "outputs/OutputTable.h"

#include <memory>

#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/file/DestinationsInProgress.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/web/clsZEBWebOutput.h"

namespace zeb {
namespace {

// What outputs of a program share.
struct Shared {
  Environment& environment;
  std::shared_ptr<DestinationsInProgress> destinations = std::make_shared<DestinationsInProgress>();
};

struct Row {
  OutputType type;
  OutputPtr (*make)(const Shared& shared);
};

constexpr Row kTable[] = {
    {OutputType::kFile,
     [](const Shared& shared) -> OutputPtr {
       return std::make_shared<clsZEBFileOutput>(shared.environment, shared.destinations);
     }},
    {OutputType::kHTTP,
     [](const Shared& shared) -> OutputPtr {
       return std::make_shared<clsZEBHTTPOutput>(shared.environment);
     }},
    {OutputType::kWeb,
     [](const Shared& shared) -> OutputPtr { return std::make_shared<clsZEBWebOutput>(shared.environment); }},
    {OutputType::kEncoder,
     [](const Shared& shared) -> OutputPtr {
       return std::make_shared<clsZEBEncoderOutput>(shared.environment);
     }},
    {OutputType::kDAB,
     [](const Shared& shared) -> OutputPtr { return std::make_shared<clsZEBDABOutput>(shared.environment); }},
    {OutputType::kSerial,
     [](const Shared& shared) -> OutputPtr {
       return std::make_shared<clsZEBSerialOutput>(shared.environment);
     }},
};

}  // namespace

OutputFactory MakeOutputFactory(Environment& environment) {
  return [shared = Shared{environment}](OutputType type) -> OutputPtr {
    for (const Row& row : kTable)
      if (row.type == type) return row.make(shared);
    return nullptr;
  };
}

}  // namespace zeb
