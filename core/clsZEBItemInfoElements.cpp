// The elements of clsZEBItemInfo by name.
#include <algorithm>
#include <array>

#include "core/ItemType.h"
#include "core/clsZEBItemInfo.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/SharedTime.h"

namespace zeb {

namespace {

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

enum class ElementKind {
  kText,
  kReal,
  kCartNumber,
  kItemIndexNumber,
  kItemType,
  kNumberPictures,
  kStartDate,
  kStartDateTime,
  kStartDateTimeXml
};

struct Element {
  std::string_view name;
  ElementKind kind;
  std::string ItemFields::*text = nullptr;
  float ItemFields::*real = nullptr;

  constexpr Element(std::string_view itsName, ElementKind itsKind) : name(itsName), kind(itsKind) {}
  constexpr Element(std::string_view itsName, std::string ItemFields::*field)
      : name(itsName), kind(ElementKind::kText), text(field) {}
  constexpr Element(std::string_view itsName, float ItemFields::*field)
      : name(itsName), kind(ElementKind::kReal), real(field) {}
};

// By length first, so that most comparisons of a search end without looking at a letter.
constexpr bool ComesBefore(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

using F = ItemFields;
using K = ElementKind;

constexpr auto kElements = std::to_array<Element>({
    {"notes", &F::Notes},
    {"artists", &F::Artists},
    {"titleid", &F::TitleID},
    {"dabnotes", &F::DABNotes},
    {"itemcode", &F::ItemCode},
    {"itemhref", &F::ItemHREF},
    {"itemname", &F::ItemName},
    {"itemtype", K::kItemType},
    {"rdsnotes", &F::RDSNotes},
    {"webnotes", &F::WebNotes},
    {"albumname", &F::AlbumName},
    {"cartdesc1", &F::CartLine1},
    {"cartdesc2", &F::CartLine2},
    {"cartdesc3", &F::CartLine3},
    {"cartline1", &F::CartLine1},
    {"cartline2", &F::CartLine2},
    {"cartline3", &F::CartLine3},
    {"itemtitle", &F::ItemName},
    {"cartnumber", K::kCartNumber},
    {"artist1href", &F::Artist1HREF},
    {"artist1name", &F::Artist1Name},
    {"artist2href", &F::Artist2HREF},
    {"artist2name", &F::Artist2Name},
    {"artist3href", &F::Artist3HREF},
    {"artist3name", &F::Artist3Name},
    {"picturehref", &F::PictureHREF},
    {"copyrightcode", &F::CopyrightCode},
    {"itemreference", &F::ItemReference},
    {"itemstartdate", K::kStartDate},
    {"itemstarttime", &F::ItemStartTime},
    {"cartitemlength", &F::CartItemLength},
    {"numberpictures", K::kNumberPictures},
    {"cartartistshref", &F::CartArtistsHREF},
    {"itemindexnumber", K::kItemIndexNumber},
    {"cartdescription1", &F::CartLine1},
    {"cartdescription2", &F::CartLine2},
    {"cartdescription3", &F::CartLine3},
    {"copyrightcomposer", &F::CopyrightComposer},
    {"itemstartdatetime", K::kStartDateTime},
    {"copyrightperformer", &F::CopyrightPerformer},
    {"copyrightpublisher", &F::CopyrightPublisher},
    {"schedulerreference", &F::SchedulerReference},
    {"copyrightmusictitle", &F::CopyrightMusicTitle},
    {"copyrightrecordlabel", &F::CopyrightRecordLabel},
    {"itemstartdatetimexml", K::kStartDateTimeXml},
    {"onlinestorereference", &F::OnlineStoreReference},
    {"copyrightproducttitle", &F::CopyrightProductTitle},
    {"copyrightrecordnumber", &F::CopyrightRecordNumber},
    {"copyrightmusicduration", &F::CopyrightMusicDuration},
    {"copyrighttotalduration", &F::CopyrightTotalDuration},
});

constexpr bool InOrder() {
  for (std::size_t i = 1; i < kElements.size(); ++i)
    if (!ComesBefore(kElements[i - 1].name, kElements[i].name)) return false;
  return true;
}
static_assert(InOrder(), "the search below needs the table in order");

constexpr std::size_t kLongestName = kElements.back().name.size();

// `name` in ASCII, in any case.
const Element* FindElement(std::string_view name) {
  if (name.size() > kLongestName) return nullptr;
  std::array<char, kLongestName> buffer;
  std::transform(name.begin(), name.end(), buffer.begin(), AsciiLower);
  const std::string_view lowered(buffer.data(), name.size());
  const auto found = std::lower_bound(
      kElements.begin(), kElements.end(), lowered,
      [](const Element& element, std::string_view n) { return ComesBefore(element.name, n); });
  return found != kElements.end() && found->name == lowered ? found : nullptr;
}

constexpr std::string_view kPictureElement = "picturefilename";

// The picture that "picturefilename", "picturefilename3" or "picturefilename_3" asks for.
int PictureNumber(std::string_view behindName) {
  if (!behindName.empty() && behindName.front() == '_') behindName.remove_prefix(1);
  const std::int32_t number = LeadingInteger(behindName);
  return number == 0 ? 1 : number;
}

bool IsPictureElement(std::string_view name) {
  return EqualIgnoringAsciiCase(name.substr(0, kPictureElement.size()), kPictureElement);
}

}  // namespace

std::string_view ItemTypeText(std::int32_t itemType) {
  switch (KindOfItemType(itemType)) {
    case ItemKind::kCart:
      return "Cart";
    case ItemKind::kJingle:
      return "Jingle";
    case ItemKind::kAdvert:
      return "Advert";
    case ItemKind::kSong:
      return "Song";
    case ItemKind::kUnknown:
      break;
  }
  return {};
}

void clsZEBItemInfo::AppendElementByName(std::string& to, std::string_view name, bool typeAsText) const {
  std::string lowered;
  if (!IsAscii(name)) {  // a few letters outside ASCII have a small letter inside it
    lowered = LowerCase(name);
    name = lowered;
  }
  if (IsPictureElement(name)) {
    const int number = PictureNumber(name.substr(kPictureElement.size()));
    if (number > 0) to += PictureFileName(number);
    return;
  }
  const Element* element = FindElement(name);
  if (!element) return;

  const ItemFields& fields = Fields();
  switch (element->kind) {
    case ElementKind::kText:
      to += fields.*element->text;
      break;
    case ElementKind::kReal:
      AppendPlainNumber(to, fields.*element->real);
      break;
    case ElementKind::kCartNumber:
      AppendPlainNumber(to, static_cast<std::int64_t>(fields.CartNumber));
      break;
    case ElementKind::kItemIndexNumber:
      AppendPlainNumber(to, static_cast<std::int64_t>(ItemIndexNumber));
      break;
    case ElementKind::kItemType:
      if (typeAsText)
        to += ItemTypeText(fields.ItemType);
      else
        AppendPlainNumber(to, static_cast<std::int64_t>(fields.ItemType));
      break;
    case ElementKind::kNumberPictures:
      AppendPlainNumber(to, static_cast<std::int64_t>(NumberPictures()));
      break;
    case ElementKind::kStartDate:
      to += ShortDate(fields.ItemStartDate);
      break;
    case ElementKind::kStartDateTime:
      if (fields.ItemStartDate != 0)  // else never set, and the time alone would say midnight
        to.append(ShortDate(fields.ItemStartDate)).append(" ").append(TimeText(fields.ItemStartTime));
      break;
    case ElementKind::kStartDateTimeXml:
      to += XmlDateTime(fields.ItemStartDate, fields.ItemStartTime);
      break;
  }
}

bool clsZEBItemInfo::HasElement(std::string_view name) {
  const std::string lowered = LowerCase(name);
  return IsPictureElement(lowered) || (IsAscii(lowered) && FindElement(lowered) != nullptr);
}

std::string clsZEBItemInfo::GetElementByName(std::string_view name, bool typeAsText) const {
  std::string value;
  AppendElementByName(value, name, typeAsText);
  return value;
}

}  // namespace zeb
