#include "dialogs/EncoderOutputDialog.h"

#include "dialogs/EscapeValuesField.h"

namespace zeb {
namespace {

constexpr ChoiceText kTypes[] = {{"1", "RealProducer"},
                                 {"2", "SHOUTcast server"},
                                 {"4", "Windows Media (ASF real-time encoder)"},
                                 {"7", "Windows Media Encoder 7"}};
constexpr ChoiceText kEncodings[] = {{"", "Only blanks are encoded"}, {"full", "Everything is encoded"}};

constexpr FieldText kFields[] = {
    {.group = "Encoder",
     .name = "EncoderType",
     .caption = "Encoder type:",
     .choices = kTypes,
     .help =
         "Encoders of Windows are not available on other systems; an Icecast server is a SHOUTcast server "
         "with a mount point."},
    {.group = "Streaming server",
     .name = "SHOUTCastServerName",
     .caption = "Server:",
     .enabledBy = "EncoderType=2"},
    {.name = "SHOUTCastServerPort", .caption = "Port:", .enabledBy = "EncoderType=2"},
    {.name = "SHOUTCastServerPassword", .caption = "Password:", .enabledBy = "EncoderType=2"},
    {.name = "SHOUTCastEncoding",
     .caption = "Titles in requests:",
     .choices = kEncodings,
     .enabledBy = "EncoderType=2"},
    {.name = "IcecastMount",
     .caption = "Icecast mount point:",
     .enabledBy = "EncoderType=2",
     .help = "Such as /live.mp3; empty for a SHOUTcast server."},
    {.name = "IcecastUsername", .caption = "Icecast user:", .enabledBy = "EncoderType=2"},
    {.name = "IcecastCheckSeconds",
     .caption = "Look for a new stream every (seconds):",
     .enabledBy = "EncoderType=2",
     .help = "An Icecast server whose stream begins anew has lost the title. 0: never."},
    {.name = "VerifyStreamURL",
     .caption = "Listeners' address:",
     .help = "Where the title is looked at as listeners get it; empty: it is not looked at."},
    {.group = "Windows encoders",
     .name = "ASDFileLocation",
     .caption = "Stream descriptor file:",
     .kind = FieldKind::kFile,
     .enabledBy = "EncoderType=4",
     .filters = "Stream descriptors (*.asd)|*.ASD|All files (*.*)|*.*"},
    {.name = "WME7ComputerName", .caption = "Encoder's computer:", .enabledBy = "EncoderType=7"},
    {.name = "WME7StreamIDName", .caption = "Encoder's name:", .enabledBy = "EncoderType=7"},
    {.group = "What is sent", .name = "SimpleTextFormat", .caption = "Format:", .kind = FieldKind::kTemplate},
    {.name = "SendEmptyStrings", .caption = "Send it also when it is empty"},
    {.name = "CharacterSet", .caption = "Character set:"},
};

}  // namespace

PropertySheet EncoderSheet(clsZEBEncoderOutput& draft) {
  PropertySheet sheet;
  sheet.caption = "Encoder Output Properties";
  AddFields(sheet, EncoderSettingTable(), draft.settings, kFields);
  AddEscapeField(sheet, EncoderSettingTable(), draft.settings);
  return sheet;
}

}  // namespace zeb
