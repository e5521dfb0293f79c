#include "dialogs/OutputSheets.h"

#include "core/clsZEBService.h"
#include "dialogs/DABOutputDialog.h"
#include "dialogs/EncoderOutputDialog.h"
#include "dialogs/FileOutputDialog.h"
#include "dialogs/HTTPOutputDialog.h"
#include "dialogs/SerialOutputDialog.h"
#include "dialogs/WebOutputDialog.h"
#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/web/clsZEBWebOutput.h"

namespace zeb {
namespace {

template <class Output, PropertySheet (*sheet)(Output&)>
PropertySheet Make(clsZEBTemplate& draft) {
  auto* own = dynamic_cast<Output*>(&draft);
  return own ? sheet(*own) : PropertySheet();
}

struct Row {
  OutputType type;
  PropertySheet (*make)(clsZEBTemplate& draft);
};
constexpr Row kRows[] = {
    {OutputType::kWeb, Make<clsZEBWebOutput, WebSheet>},
    {OutputType::kEncoder, Make<clsZEBEncoderOutput, EncoderSheet>},
    {OutputType::kFile, Make<clsZEBFileOutput, FileSheet>},
    {OutputType::kDAB, Make<clsZEBDABOutput, DABSheet>},
    {OutputType::kHTTP, Make<clsZEBHTTPOutput, HTTPSheet>},
    {OutputType::kSerial, Make<clsZEBSerialOutput, SerialSheet>},
};

// Of a setting in the list of those that all outputs have.
constexpr FieldText kDelay{.group = "All outputs",
                           .name = "DelaySeconds",
                           .caption = "Show everything later by (seconds):",
                           .help = "So that the title fits a stream that is behind the air."};

}  // namespace

PropertySheet SheetOf(OutputType type, clsZEBTemplate& draft) {
  PropertySheet sheet;
  for (const Row& row : kRows)
    if (row.type == type) sheet = row.make(draft);
  if (sheet.fields.empty()) return sheet;
  for (const SettingInfo& setting : CommonOutputSettings())
    if (setting.name == kDelay.name) AddField(sheet, kDelay, setting, &draft.DelaySeconds);
  return sheet;
}

}  // namespace zeb
