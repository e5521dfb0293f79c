#include "outputs/file/clsFileParameters.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {
namespace {

std::int32_t ReadWholeNumber(SettingsHive& hive, const std::string& key, const std::string& name,
                             const char* byDefault) {
  return LeadingInteger(hive.ReadText(key, name, byDefault));
}

void WriteWholeNumber(SettingsHive& hive, const std::string& key, const std::string& name,
                      std::int32_t value) {
  hive.WriteText(key, name, PlainNumber(static_cast<std::int64_t>(value)));
}

std::int16_t Narrow(std::int32_t number) {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<std::int16_t>(std::clamp<std::int32_t>(number, Limits::min(), Limits::max()));
}

// A record that differs from an empty one in its slot number only was never filled in.
bool HoldsNothing(const clsZEBItemInfo& item) {
  clsZEBItemInfo empty;
  empty.ItemIndexNumber = item.ItemIndexNumber;
  return item.NumberPictures() == 0 && item.NumberAdditionalFiles() == 0 && item.IsSame(empty, true);
}

}  // namespace

void clsFileParameters::SetSourceFileName(std::string name) {
  sourceFileName_ = std::move(name);
  sourceFolder_ = FolderPart(sourceFileName_);
}

void clsFileParameters::SetDestinationFileName(std::string name) {
  destinationFileName_ = std::move(name);
  destinationFolder_ = FolderPart(destinationFileName_);
}

void clsFileParameters::Allow(UpdateFlag flag) {
  if (UseUpdateRules) UpdateRulesFlags |= flag;
}

bool clsFileParameters::IsDue(const clsZEBService& service) const {
  if (!UseUpdateRules) return true;
  const clsZEBItemInfo* item = nullptr;
  switch (UpdateRulesUsingItem) {
    case kNextItem:
      item = service.NextItem(1);
      break;
    case kPreviousItem:
      item = service.PreviousItem(1);
      break;
    case kComingSoonItem:
      item = &service.ComingSoonItem();
      break;
    default:
      item = &service.CurrentItem();
      break;
  }
  return item == nullptr || HoldsNothing(*item) || AllowsType((*item)->ItemType);
}

// No type counts as a voice link: that switch is kept and shown, but not asked.
bool clsFileParameters::AllowsType(std::int32_t itemType) const {
  switch (itemType) {
    case 2:
    case 12:
      return UpdateIfCart();
    case 3:
    case 13:
      return UpdateIfJingle();
    case 4:
    case 14:
      return UpdateIfAdvert();
    case 7:
      return UpdateIfSong();
    default:
      return UpdateIfUnknown();
  }
}

bool ReadSwitch(SettingsHive& hive, const std::string& key, const std::string& name, bool byDefault) {
  return ReadWholeNumber(hive, key, name, byDefault ? "1" : "0") != 0;
}

void WriteSwitch(SettingsHive& hive, const std::string& key, const std::string& name, bool value) {
  hive.WriteText(key, name, value ? "1" : "0");
}

std::vector<clsFileParameters> ReadPairs(SettingsHive& hive, const std::string& key, int outputIndex) {
  const std::string start = "Output" + std::to_string(outputIndex) + ".";
  const std::int32_t count = std::clamp(ReadWholeNumber(hive, key, start + "NumberFiles", "0"), 0, kMaxPairs);
  std::vector<clsFileParameters> pairs(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    clsFileParameters& pair = pairs[i];
    const std::string end = std::to_string(i + 1);
    pair.SetSourceFileName(hive.ReadText(key, start + "SourceFileName" + end, ""));
    pair.SetDestinationFileName(hive.ReadText(key, start + "DestinationFileName" + end, ""));
    pair.UseUpdateRules = ReadSwitch(hive, key, start + "UseUpdateRules" + end, false);
    std::int32_t item = ReadWholeNumber(hive, key, start + "UpdateRulesUsingItem" + end, "0");
    if (item >= clsFileParameters::kCurrentItem && item <= clsFileParameters::kComingSoonItem)
      pair.UpdateRulesUsingItem = Narrow(item);
    pair.UseMultipleVersions = ReadSwitch(hive, key, start + "UseMultipleVersions" + end, false);
    pair.RefreshTagSeconds = Narrow(ReadWholeNumber(hive, key, start + "RefreshTagSeconds" + end, "0"));
    pair.AddNoCache = ReadSwitch(hive, key, start + "AddNoCache" + end, true);
    pair.UpdateRulesFlags = ReadWholeNumber(hive, key, start + "UpdateRulesFlags" + end, "0");
    pair.SimpleTextFormat =
        hive.ReadText(key, start + "SimpleTextFormat" + end, std::string(kDefaultSimpleTextFormat));
  }
  return pairs;
}

void WritePairs(SettingsHive& hive, const std::string& key, int outputIndex,
                const std::vector<clsFileParameters>& pairs) {
  const std::string start = "Output" + std::to_string(outputIndex) + ".";
  WriteWholeNumber(hive, key, start + "NumberFiles", static_cast<std::int32_t>(pairs.size()));
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const clsFileParameters& pair = pairs[i];
    const std::string end = std::to_string(i + 1);
    hive.WriteText(key, start + "SourceFileName" + end, pair.SourceFileName());
    hive.WriteText(key, start + "DestinationFileName" + end, pair.DestinationFileName());
    WriteSwitch(hive, key, start + "UseUpdateRules" + end, pair.UseUpdateRules);
    WriteWholeNumber(hive, key, start + "UpdateRulesUsingItem" + end, pair.UpdateRulesUsingItem);
    WriteSwitch(hive, key, start + "UseMultipleVersions" + end, pair.UseMultipleVersions);
    WriteWholeNumber(hive, key, start + "RefreshTagSeconds" + end, pair.RefreshTagSeconds);
    WriteSwitch(hive, key, start + "AddNoCache" + end, pair.AddNoCache);
    WriteWholeNumber(hive, key, start + "UpdateRulesFlags" + end, pair.UpdateRulesFlags);
    hive.WriteText(key, start + "SimpleTextFormat" + end, pair.SimpleTextFormat);
  }
}

}  // namespace zeb
