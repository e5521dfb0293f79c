#include "dialogs/TemplatePreview.h"

#include <memory>
#include <utility>

#include "core/ItemType.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/OneLine.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr std::size_t kValueCharacters = 80;

clsZEBItemInfo Item(std::int32_t type, std::string name, std::string artist, std::string notes = {}) {
  clsZEBItemInfo item;
  ItemFields& fields = item.Edit();
  fields.ItemType = type;
  fields.ItemName = std::move(name);
  fields.Artist1Name = fields.Artists = std::move(artist);
  fields.Notes = std::move(notes);
  return item;
}

clsZEBItemInfo SampleSong() {
  clsZEBItemInfo song = Item(kItemTypeSong, "Paper Moons", "Ada Quill", "Live from the harbour");
  ItemFields& fields = song.Edit();
  fields.AlbumName = "Tin Roof Weather";
  fields.CartNumber = 1203;
  fields.CartItemLength = 214;
  fields.CartLine1 = fields.ItemName;
  fields.CartLine2 = fields.Artist1Name;
  fields.CopyrightRecordLabel = "Lantern Records";
  song.AddPictureFile("paper-moons.jpg");
  return song;
}

// Line ends as a sign that can be seen, other control characters as blanks.
std::string InOneLine(std::string_view text) {
  std::string line;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n') continue;
    if (text[at] == '\n' || text[at] == '\r')
      line += "↵";
    else
      line += text[at];
  }
  BlankControls(line);
  return line;
}

}  // namespace

SnapshotPtr SampleSnapshot(PreviewItem item, WallTime now) {
  auto snapshot = std::make_shared<ServiceSnapshot>();
  snapshot->moment = now;
  snapshot->ServiceName = "Sample FM";
  snapshot->NoPictureFileName = "nopicture.jpg";
  snapshot->nextItems.resize(1);
  snapshot->previousItems.resize(1);
  if (item == PreviewItem::kEmpty) return snapshot;
  snapshot->PresenterReference = "NC";
  snapshot->PresenterFullName = "Nell Carver";
  snapshot->ShowReference = "17";
  snapshot->ShowTitle = "Drive Time";
  snapshot->currentItem =
      item == PreviewItem::kAdvert ? Item(kItemTypeAdvert, "Harbour Bakery", {}) : SampleSong();
  snapshot->nextItems[0] = Item(kItemTypeSong, "Nine Lives of a Tram", "The Overhead Wires");
  snapshot->previousItems[0] = Item(kItemTypeJingle, "Station ident", {});
  snapshot->comingSoonItem = Item(kItemTypeSong, "Salt and Copper", "Ines Calder");
  return snapshot;
}

std::optional<TemplateResultText> PreviewTemplate(std::string_view templateText,
                                                  const ServiceSnapshot& snapshot) {
  if (templateText.size() > kMostPreviewedBytes) return std::nullopt;
  UploadFileList unused;
  // A format is its own simple text, as it is for the outputs.
  const std::string all = ExpandTemplate(templateText, snapshot, templateText, unused);
  return TemplateResultText{InOneLine(FirstCharacters(all, kMostResultCharacters)), CountCharacters(all)};
}

std::string PreviewValue(std::string_view tag, const ServiceSnapshot& snapshot) {
  UploadFileList unused;
  return OneLine(ExpandTemplate(tag, snapshot, {}, unused), kValueCharacters);
}

}  // namespace zeb
