#include "dialogs/TemplateBuilder.h"

namespace zeb {

namespace {

constexpr std::string_view kItemFields[] = {"ItemName",
                                            "ItemHREF",
                                            "Artists",
                                            "Artist1Name",
                                            "Artist1HREF",
                                            "Artist2Name",
                                            "Artist2HREF",
                                            "Artist3Name",
                                            "Artist3HREF",
                                            "OnlineStoreReference",
                                            "CustomField1",
                                            "CustomField2",
                                            "CustomField3",
                                            "PictureFileName",
                                            "PictureHREF",
                                            "ItemType",
                                            "--------------------",
                                            "CartNumber",
                                            "CartItemLength",
                                            "CartLine1",
                                            "CartLine2",
                                            "CartLine3",
                                            "CartArtistsHREF",
                                            "NumberPictures",
                                            "AlbumName",
                                            "ItemCode",
                                            "ItemReference",
                                            "ItemStartDateTimeXML",
                                            "ItemStartDate",
                                            "ItemStartTime",
                                            "SchedulerReference",
                                            "TitleID",
                                            "CopyrightProductTitle",
                                            "CopyrightMusicTitle",
                                            "CopyrightRecordLabel",
                                            "CopyrightRecordNumber",
                                            "CopyrightComposer",
                                            "CopyrightPerformer",
                                            "CopyrightPublisher",
                                            "CopyrightCode",
                                            "CopyrightTotalDuration",
                                            "CopyrightMusicDuration",
                                            "DABNotes",
                                            "DABNotesRTF",
                                            "Notes",
                                            "NotesRTF",
                                            "RDSNotes",
                                            "WebNotes"};

constexpr std::string_view kSpecialFields[] = {
    "CurrentDateTime",  "CurrentDateTimeXML", "Now_DDDD,DD MMM YYYY HH:NN",
    "LastUpdateNumber", "PresenterReference", "PresenterFullName",
    "ShowReference",    "ShowTitle",          "NoPictureFileName"};

constexpr std::string_view kTagStarts[] = {"<ZEB_NOW_", "<ZEB_NEXT_", "<ZEB_PREVIOUS_", "<ZEB_COMING_",
                                           "<ZEB_SPECIAL_"};

constexpr std::string_view kNoStart =
    "You cannot have a ']' (condition end) without a matching '[' (condition start)";
constexpr std::string_view kNoEnd =
    "You cannot have a '[' (condition start) without a matching ']' (condition end)";
constexpr std::string_view kNested =
    "You cannot have a '[' (condition start) without a matching ']' (condition end)\n"
    "You cannot nest condition statements.";

}  // namespace

const std::string_view kBuilderHelp =
    "The Format Creator helps you to create format strings by presenting you with all of the fields that are "
    "available. \r\n"
    "Double clicking on a field in the Field Chooser adds the field to the format string at the current "
    "cursor. \r\n"
    "You can have 'Optional Sections' (that only display if a certain condition is met) by surrounding them "
    "with square brackets [] and then putting a condition at the beginning of the section surrounded by "
    "round "
    "brackets () \r\n"
    "Note : If you need to use the [ or < characters, you should use two of them ie [[\r\n"
    "You can also use #### to give additional strings to be sent.";

std::span<const std::string_view> BuilderFields(BuilderSlot slot) {
  if (slot == BuilderSlot::kSpecial) return kSpecialFields;
  return kItemFields;
}

std::string BuilderInsertion(BuilderSlot slot, std::string_view field) {
  if (field.starts_with("--")) return {};
  return std::string(kTagStarts[static_cast<std::size_t>(slot)]).append(field).append(">");
}

std::optional<std::size_t> TagBeforeCaret(std::string_view text, std::size_t caret) {
  const std::string_view before = text.substr(0, caret);
  if (!before.ends_with('>')) return std::nullopt;
  const std::size_t open = before.rfind('<');
  return open == std::string_view::npos ? std::nullopt : std::optional(open);
}

std::optional<SectionFault> FindSectionFault(std::string_view text) {
  constexpr std::size_t kNone = std::string_view::npos;
  std::size_t open = text.find('['), close = text.find(']');
  while (open != kNone || close != kNone) {
    if (close < open) return SectionFault{SectionFault::kNoStart, close};
    if (close == kNone) return SectionFault{SectionFault::kNoEnd, open};
    if (const std::size_t inner = text.find('[', open + 1); inner < close)
      return SectionFault{SectionFault::kNested, inner};
    open = text.find('[', close + 1);
    close = text.find(']', close + 1);
  }
  return std::nullopt;
}

std::string_view SectionProblem(std::string_view text) {
  const std::optional<SectionFault> fault = FindSectionFault(text);
  if (!fault) return {};
  switch (fault->kind) {
    case SectionFault::kNoStart:
      return kNoStart;
    case SectionFault::kNoEnd:
      return kNoEnd;
    case SectionFault::kNested:
      break;
  }
  return kNested;
}

}  // namespace zeb
