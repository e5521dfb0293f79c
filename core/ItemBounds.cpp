#include "core/ItemBounds.h"

#include <array>

namespace zeb {
namespace {

using F = ItemFields;

struct NamedText {
  std::string_view name;
  std::string F::*text;
};
constexpr auto kTexts = std::to_array<NamedText>({
    {"ItemName", &F::ItemName},
    {"Artists", &F::Artists},
    {"Artist1Name", &F::Artist1Name},
    {"Artist2Name", &F::Artist2Name},
    {"Artist3Name", &F::Artist3Name},
    {"Artist1HREF", &F::Artist1HREF},
    {"Artist2HREF", &F::Artist2HREF},
    {"Artist3HREF", &F::Artist3HREF},
    {"CartLine1", &F::CartLine1},
    {"CartLine2", &F::CartLine2},
    {"CartLine3", &F::CartLine3},
    {"CartArtistsHREF", &F::CartArtistsHREF},
    {"ItemHREF", &F::ItemHREF},
    {"TitleID", &F::TitleID},
    {"AlbumName", &F::AlbumName},
    {"ItemReference", &F::ItemReference},
    {"SchedulerReference", &F::SchedulerReference},
    {"ItemCode", &F::ItemCode},
    {"CustomField1", &F::CustomField1},
    {"CustomField2", &F::CustomField2},
    {"CustomField3", &F::CustomField3},
    {"OnlineStoreReference", &F::OnlineStoreReference},
    {"PictureHREF", &F::PictureHREF},
    {"CopyrightProductTitle", &F::CopyrightProductTitle},
    {"CopyrightMusicTitle", &F::CopyrightMusicTitle},
    {"CopyrightRecordLabel", &F::CopyrightRecordLabel},
    {"CopyrightRecordNumber", &F::CopyrightRecordNumber},
    {"CopyrightComposer", &F::CopyrightComposer},
    {"CopyrightPerformer", &F::CopyrightPerformer},
    {"CopyrightPublisher", &F::CopyrightPublisher},
    {"CopyrightCode", &F::CopyrightCode},
    {"Notes", &F::Notes},
    {"WebNotes", &F::WebNotes},
    {"RDSNotes", &F::RDSNotes},
    {"DABNotes", &F::DABNotes},
});
constexpr std::size_t kNumberOtherFields = 8;  // numbers; a text that is missing above does not compile
static_assert(sizeof(F) <= kTexts.size() * sizeof(std::string) + kNumberOtherFields * sizeof(float));

bool IsContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

}  // namespace

std::size_t CutToBound(std::string& text, std::size_t most) {
  const std::size_t bytes = text.size();
  if (bytes <= most) return 0;
  std::size_t end = most;
  while (end > 0 && IsContinuation(text[end])) --end;
  text.resize(end);
  text.shrink_to_fit();
  return bytes;
}

std::vector<Excess> CutToBounds(clsZEBItemInfo& item) {
  std::vector<Excess> excesses;
  for (const NamedText& named : kTexts)
    if ((item.Fields().*named.text).size() > kMaxFieldBytes)
      excesses.push_back({named.name, CutToBound(item.Edit().*named.text)});
  return excesses;
}

std::string ExcessText(const std::vector<Excess>& excesses) {
  if (excesses.empty()) return {};
  std::string text(excesses[0].field);
  text +=
      " has " + std::to_string(excesses[0].bytes) + " bytes and is cut to " + std::to_string(kMaxFieldBytes);
  if (const std::size_t more = excesses.size() - 1; more > 0)
    text += ", as are " + std::to_string(more) + " other fields";
  return text;
}

}  // namespace zeb
