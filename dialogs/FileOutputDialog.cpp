#include "dialogs/FileOutputDialog.h"

#include "dialogs/FileParametersDialog.h"

namespace zeb {
namespace {

constexpr FieldText kSwitches[] = {
    {.name = "CopyAdditionalFiles", .caption = kCopyAdditionalCaption},
    {.name = "AlwaysCopyFiles",
     .caption = "Copy them also when an equal file is there already",
     .enabledBy = "CopyAdditionalFiles"},
};

}  // namespace

void AddPairFields(PropertySheet& sheet, PairSwitches& draft) {
  AddField(sheet, {.group = "Files", .name = "Pairs", .caption = "Files", .kind = FieldKind::kPairs});
  AddFields(sheet, PairSwitchTable(), draft, kSwitches);
}

PropertySheet FileSheet(clsZEBFileOutput& draft) {
  PropertySheet sheet;
  sheet.caption = "File Output Properties";
  AddPairFields(sheet, draft);
  return sheet;
}

}  // namespace zeb
