#include "outputs/file/clsFileParameters.h"

#include <algorithm>
#include <array>
#include <limits>

#include "core/ItemType.h"
#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {
namespace {

using Limits = std::numeric_limits<std::int16_t>;
using S = PairSettings;
constexpr auto kRows = std::to_array<SettingRow<S>>({
    {.name = "SourceFileName", .member = &S::source, .entry = kNeededFileEntry},
    {"DestinationFileName", &S::destination},
    {"UseUpdateRules", &S::UseUpdateRules},
    {.name = "UpdateRulesUsingItem",
     .member = &S::UpdateRulesUsingItem,
     .entry = {.least = clsFileParameters::kCurrentItem, .most = clsFileParameters::kComingSoonItem}},
    {"UseMultipleVersions", &S::UseMultipleVersions},
    {.name = "RefreshTagSeconds",
     .member = &S::RefreshTagSeconds,
     .least = Limits::min(),
     .most = Limits::max(),
     .entry = {.least = 0, .most = 3600}},
    {"AddNoCache", &S::AddNoCache},
    {.name = "UpdateRulesFlags", .member = &S::UpdateRulesFlags, .entry = {.least = 0, .most = 63}},
    {"SimpleTextFormat", &S::SimpleTextFormat},
    {.name = "EscapeValues", .member = &S::EscapeValues, .entry = kEscapeEntry},
    {"VerifyURL", &S::VerifyURL},
});
constexpr SettingTable<S> kTable{kRows};

}  // namespace

SettingList PairSettingList() {
  return ListOf(kTable);
}

std::string PairNamesStart(int outputIndex) {
  return "Output" + std::to_string(outputIndex) + ".";
}

std::string clsFileParameters::SourceFolder() const {
  return std::string(FolderPart(source));
}

std::string clsFileParameters::DestinationFolder() const {
  return std::string(FolderPart(destination));
}

void clsFileParameters::Allow(UpdateFlag flag) {
  if (UseUpdateRules) UpdateRulesFlags |= flag;
}

bool clsFileParameters::IsDue(const ServiceSnapshot& snapshot) const {
  if (!UseUpdateRules) return true;
  const clsZEBItemInfo* item = nullptr;
  switch (UpdateRulesUsingItem) {
    case kNextItem:
      item = snapshot.NextItem(1);
      break;
    case kPreviousItem:
      item = snapshot.PreviousItem(1);
      break;
    case kComingSoonItem:
      item = &snapshot.comingSoonItem;
      break;
    default:
      item = &snapshot.currentItem;
      break;
  }
  return item == nullptr || item->HoldsNothing() || AllowsType((*item)->ItemType);
}

// No type counts as a voice link: that switch is kept and shown, but not asked.
bool clsFileParameters::AllowsType(std::int32_t itemType) const {
  switch (KindOfItemType(itemType)) {
    case ItemKind::kCart:
      return UpdateIfCart();
    case ItemKind::kJingle:
      return UpdateIfJingle();
    case ItemKind::kAdvert:
      return UpdateIfAdvert();
    case ItemKind::kSong:
      return UpdateIfSong();
    case ItemKind::kUnknown:
      break;
  }
  return UpdateIfUnknown();
}

std::vector<clsFileParameters> ReadPairs(SettingsHive& hive, const std::string& key, int outputIndex) {
  const std::string start = PairNamesStart(outputIndex);
  const std::int32_t count = std::clamp(hive.ReadNumber(key, start + kPairCountName, 0), 0, kMaxPairs);
  std::vector<clsFileParameters> pairs(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    clsFileParameters& pair = pairs[i];
    ReadSettings<S>(hive, key, std::to_string(i + 1), kTable, pair, start);
    if (pair.UpdateRulesUsingItem < clsFileParameters::kCurrentItem ||
        pair.UpdateRulesUsingItem > clsFileParameters::kComingSoonItem)
      pair.UpdateRulesUsingItem = clsFileParameters::kCurrentItem;
  }
  return pairs;
}

void WritePairs(SettingsHive& hive, const std::string& key, int outputIndex,
                const std::vector<clsFileParameters>& pairs) {
  const std::string start = PairNamesStart(outputIndex);
  hive.WriteText(key, start + kPairCountName, std::to_string(pairs.size()));
  for (std::size_t i = 0; i < pairs.size(); ++i)
    WriteSettings<S>(hive, key, std::to_string(i + 1), kTable, pairs[i], start);
}

std::string PairsText(const std::vector<clsFileParameters>& pairs) {
  std::string text;
  for (const clsFileParameters& pair : pairs) text += SettingsText<S>(kTable, pair);
  return text;
}

}  // namespace zeb
