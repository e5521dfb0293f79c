#include "outputs/file/clsFileParameters.h"

#include <algorithm>
#include <limits>
#include <string_view>
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

// The values of one pair: "Output" k "." name i.
class PairValues {
 public:
  PairValues(SettingsHive& hive, const std::string& key, int outputIndex, std::size_t pairNumber)
      : hive_(hive),
        key_(key),
        start_("Output" + std::to_string(outputIndex) + "."),
        end_(std::to_string(pairNumber)) {}

  std::string Text(const char* name, std::string_view byDefault = {}) const {
    return hive_.ReadText(key_, Name(name), std::string(byDefault));
  }
  std::int32_t Number(const char* name) const { return ReadWholeNumber(hive_, key_, Name(name), "0"); }
  bool Switch(const char* name, bool byDefault) const {
    return ReadSwitch(hive_, key_, Name(name), byDefault);
  }
  void SetText(const char* name, const std::string& text) { hive_.WriteText(key_, Name(name), text); }
  void SetNumber(const char* name, std::int32_t number) { WriteWholeNumber(hive_, key_, Name(name), number); }
  void SetSwitch(const char* name, bool value) { WriteSwitch(hive_, key_, Name(name), value); }

 private:
  std::string Name(const char* name) const { return start_ + name + end_; }

  SettingsHive& hive_;
  const std::string& key_;
  const std::string start_, end_;
};

std::string CountName(int outputIndex) {
  return "Output" + std::to_string(outputIndex) + ".NumberFiles";
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
  const std::int32_t count =
      std::clamp(ReadWholeNumber(hive, key, CountName(outputIndex), "0"), 0, kMaxPairs);
  std::vector<clsFileParameters> pairs(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    clsFileParameters& pair = pairs[i];
    const PairValues values(hive, key, outputIndex, i + 1);
    pair.SetSourceFileName(values.Text("SourceFileName"));
    pair.SetDestinationFileName(values.Text("DestinationFileName"));
    pair.UseUpdateRules = values.Switch("UseUpdateRules", false);
    const std::int32_t item = values.Number("UpdateRulesUsingItem");
    if (item >= clsFileParameters::kCurrentItem && item <= clsFileParameters::kComingSoonItem)
      pair.UpdateRulesUsingItem = Narrow(item);
    pair.UseMultipleVersions = values.Switch("UseMultipleVersions", false);
    pair.RefreshTagSeconds = Narrow(values.Number("RefreshTagSeconds"));
    pair.AddNoCache = values.Switch("AddNoCache", true);
    pair.UpdateRulesFlags = values.Number("UpdateRulesFlags");
    pair.SimpleTextFormat = values.Text("SimpleTextFormat", kDefaultSimpleTextFormat);
  }
  return pairs;
}

void WritePairs(SettingsHive& hive, const std::string& key, int outputIndex,
                const std::vector<clsFileParameters>& pairs) {
  WriteWholeNumber(hive, key, CountName(outputIndex), static_cast<std::int32_t>(pairs.size()));
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const clsFileParameters& pair = pairs[i];
    PairValues values(hive, key, outputIndex, i + 1);
    values.SetText("SourceFileName", pair.SourceFileName());
    values.SetText("DestinationFileName", pair.DestinationFileName());
    values.SetSwitch("UseUpdateRules", pair.UseUpdateRules);
    values.SetNumber("UpdateRulesUsingItem", pair.UpdateRulesUsingItem);
    values.SetSwitch("UseMultipleVersions", pair.UseMultipleVersions);
    values.SetNumber("RefreshTagSeconds", pair.RefreshTagSeconds);
    values.SetSwitch("AddNoCache", pair.AddNoCache);
    values.SetNumber("UpdateRulesFlags", pair.UpdateRulesFlags);
    values.SetText("SimpleTextFormat", pair.SimpleTextFormat);
  }
}

}  // namespace zeb
