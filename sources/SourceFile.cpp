#include "sources/SourceFile.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "text/OneLine.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

constexpr std::size_t kMostCharacters = 100;  // of a title or of the artists

std::string Described(const std::optional<clsZEBItemInfo>& item) {
  if (!item) return "nothing";
  const ItemFields& fields = item->Fields();
  std::string text = fields.ItemName.empty() ? "(no title)" : OneLine(fields.ItemName, kMostCharacters);
  if (!fields.Artists.empty()) text += " by " + OneLine(fields.Artists, kMostCharacters);
  if (fields.ItemStartTime > 0) text += ", at " + TimeText(fields.ItemStartTime);
  return text;
}

}  // namespace

Result<SourceItems> ReadSourceFile(const SourceFile& file) {
  if (file.type == kSourceDallet50) return ReadDallet50(file.bytes, file.today);
  if (file.type == kSourceDallet51) {
    if (!file.markup) return Failure{"there is no XML reader"};
    return ReadDallet51(file.bytes, *file.markup);
  }
  if (file.type != kSourceGenericText)
    return Failure{"source type " + std::to_string(file.type) + " is not that of a file"};
  Result<GenericFields> fields = ReadGenericFields(file.definitions, file.markup);
  if (!fields) return Failure{"'" + file.definitionsName + "': " + fields.Reason()};
  return ReadGenericText(file.bytes, std::move(fields.Value()));
}

Result<std::string> DescribeSourceFile(const SourceFile& file) {
  const Result<SourceItems> read = ReadSourceFile(file);
  if (!read) return read.AsFailure();
  const auto& items = read.Value().items;
  std::string text = "Current: " + Described(items.empty() ? std::nullopt : items[0]);
  for (std::size_t i = 1; i < std::min(items.size(), kMostDescribed + 1); ++i)
    text += "\nNext " + std::to_string(i) + ": " + Described(items[i]);
  const std::size_t all = items.size() + read.Value().dropped;
  if (all > kMostDescribed + 1) text += "\nand " + std::to_string(all - kMostDescribed - 1) + " more";
  return text;
}

}  // namespace zeb
