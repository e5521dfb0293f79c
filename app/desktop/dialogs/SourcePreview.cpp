#include "app/desktop/dialogs/SourcePreview.h"

#include <chrono>
#include <optional>
#include <utility>

#include "platform/FileSystem.h"
#include "platform/Result.h"
#include "sources/SourceFile.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

constexpr Duration kDelay = std::chrono::milliseconds(300);
constexpr Duration kLimit = std::chrono::seconds(10);

// What a worker needs.
struct Order {
  FileSystem& files;
  Markup* markup = nullptr;
  std::int32_t type = 0;
  std::string path, definitionsPath;
  std::int32_t today = 0;
};

std::string Describe(const Order& order) {
  const Result<std::string> bytes = order.files.Read(order.path, kMaxFileBytes);
  if (!bytes) return bytes.Reason();
  std::string definitions;
  if (order.type == kSourceGenericText) {
    Result<std::string> read = order.files.Read(order.definitionsPath, kMaxFileBytes);
    if (!read) return read.Reason();
    definitions = std::move(read.Value());
  }
  const Result<std::string> text = DescribeSourceFile(
      {order.type, bytes.Value(), definitions, order.definitionsPath, order.markup, order.today});
  return text ? text.Value() : text.Reason();
}

}  // namespace

SourcePreview::SourcePreview(Environment& environment, std::function<void(const std::string&)> tell)
    : environment_(environment), tell_(std::move(tell)) {}

void SourcePreview::Show(std::int32_t type, const std::string& name) {
  if (type == type_ && name == name_) return;
  type_ = type;
  name_ = name;
  epoch_.Next();
  delay_.Stop();
  tell_("");
  if (!name.empty()) delay_ = environment_.loop.After(kDelay, [this] { Read(); });
}

void SourcePreview::Read() {
  const std::string& folder = environment_.dataFolder;
  const Order order{environment_.files,
                    environment_.markup,
                    type_,
                    JoinPath(folder, name_),
                    JoinPath(folder, "Generic.ini"),
                    DayNumber(environment_.loop.Now())};
  environment_.loop.Start("describing a file", [this, order, &loop = environment_.loop, mine = epoch_.Now()] {
    const std::optional<std::string> text = loop.RunBlocking([order] { return Describe(order); }, kLimit);
    if (mine.Holds()) tell_(text ? *text : "'" + order.path + "' does not answer");
  });
}

}  // namespace zeb
