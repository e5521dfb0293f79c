#include "core/clsZEBItemInfo.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/SharedTime.h"

namespace zeb {

namespace {

const std::string kNothing;

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

// File names in the order added, without repeats but for case.
class FileList {
 public:
  int Count() const { return static_cast<int>(names_.size()); }

  const std::string& At(int index) const {
    RefuseNegative(index);
    return index >= 1 && index <= Count() ? names_[static_cast<std::size_t>(index) - 1] : kNothing;
  }

  void Set(int index, std::string name) {
    names_[static_cast<std::size_t>(index) - 1] = std::move(name);
    lowerCased_.clear();
    mayRepeat_ = true;
  }

  bool Add(std::string name) {
    if (names_.size() >= kMaxItemFiles || Holds(name)) return false;
    if (!lowerCased_.empty()) lowerCased_.insert(LowerCase(name));
    names_.push_back(std::move(name));
    return true;
  }

  bool MayRepeat() const { return mayRepeat_; }

  FileList WithoutRepeats() const {
    FileList list;
    for (const std::string& name : names_) list.Add(name);
    return list;
  }

  // Whether every entry here stands at the same place there; what else is there does not matter.
  bool BeginsTheSameAs(const FileList& other) const {
    for (int i = 1; i <= Count(); ++i)
      if (At(i) != other.At(i)) return false;
    return true;
  }

  static void RefuseNegative(int index) {
    if (index < 0) throw std::out_of_range("negative index of a file list");
  }

 private:
  // Short lists, which nearly all are, are looked through; long ones get an index.
  bool Holds(const std::string& name) {
    constexpr std::size_t kLookedThrough = 16;
    if (names_.size() <= kLookedThrough)
      return std::any_of(names_.begin(), names_.end(),
                         [&](const std::string& entry) { return EqualIgnoringCase(entry, name); });
    if (lowerCased_.empty())
      for (const std::string& entry : names_) lowerCased_.insert(LowerCase(entry));
    return lowerCased_.count(LowerCase(name)) > 0;
  }

  std::vector<std::string> names_;
  std::unordered_set<std::string> lowerCased_;  // empty: not made yet
  bool mayRepeat_ = false;                      // written by index since the last rebuild
};

}  // namespace

struct clsZEBItemInfo::Shared {
  ItemFields fields;
  FileList additionalFiles, pictures;

  static const Shared& Empty() {
    static const Shared empty;
    return empty;
  }
};

const clsZEBItemInfo::Shared& clsZEBItemInfo::Read() const {
  return shared_ ? *shared_ : Shared::Empty();
}

clsZEBItemInfo::Shared& clsZEBItemInfo::Own() {
  if (!shared_)
    shared_ = std::make_shared<Shared>();
  else if (shared_.use_count() > 1)
    shared_ = std::make_shared<Shared>(*shared_);
  return *shared_;
}

const ItemFields* clsZEBItemInfo::operator->() const {
  return &Read().fields;
}

const ItemFields& clsZEBItemInfo::Fields() const {
  return Read().fields;
}

ItemFields& clsZEBItemInfo::Edit() {
  return Own().fields;
}

int clsZEBItemInfo::NumberAdditionalFiles() const {
  return Read().additionalFiles.Count();
}

const std::string& clsZEBItemInfo::AdditionalFile(int index) const {
  return Read().additionalFiles.At(index);
}

void clsZEBItemInfo::SetAdditionalFile(int index, std::string fileName) {
  FileList::RefuseNegative(index);
  if (index >= 1 && index <= NumberAdditionalFiles()) Own().additionalFiles.Set(index, std::move(fileName));
}

void clsZEBItemInfo::AddAdditionalFile(std::string fileName) {
  Own().additionalFiles.Add(std::move(fileName));
}

int clsZEBItemInfo::NumberPictures() const {
  return Read().pictures.Count();
}

const std::string& clsZEBItemInfo::PictureFileName(int index) const {
  return Read().pictures.At(index);
}

void clsZEBItemInfo::SetPictureFileName(int index, std::string fileName) {
  FileList::RefuseNegative(index);
  if (index >= 1 && index <= NumberPictures()) Own().pictures.Set(index, std::move(fileName));
}

bool clsZEBItemInfo::AddPictureFile(std::string fileName) {
  return Own().pictures.Add(std::move(fileName));
}

void clsZEBItemInfo::ClearPictures() {
  if (NumberPictures() > 0) Own().pictures = FileList();
}

clsZEBItemInfo clsZEBItemInfo::Copy() const {
  clsZEBItemInfo copy = *this;
  const Shared& mine = Read();
  if (mine.additionalFiles.MayRepeat() || mine.pictures.MayRepeat()) {
    Shared& own = copy.Own();
    own.pictures = mine.pictures.WithoutRepeats();
    own.additionalFiles = mine.additionalFiles.WithoutRepeats();
  }
  return copy;
}

// ---- Elements by name

namespace {

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

}  // namespace

std::string_view ItemTypeText(std::int32_t itemType) {
  switch (itemType) {
    case 2:
    case 12:
      return "Cart";
    case 3:
    case 13:
      return "Jingle";
    case 4:
    case 14:
      return "Advert";
    case 7:
      return "Song";
    default:
      return {};
  }
}

void clsZEBItemInfo::AppendElementByName(std::string& to, std::string_view name, bool typeAsText) const {
  std::string lowered;
  if (!IsAscii(name)) {  // a few letters outside ASCII have a small letter inside it
    lowered = LowerCase(name);
    name = lowered;
  }
  if (EqualIgnoringAsciiCase(name.substr(0, kPictureElement.size()), kPictureElement)) {
    const int number = PictureNumber(name.substr(kPictureElement.size()));
    if (number > 0) to += PictureFileName(number);
    return;
  }
  const Element* element = FindElement(name);
  if (!element) return;

  const ItemFields& fields = Read().fields;
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

std::string clsZEBItemInfo::GetElementByName(std::string_view name, bool typeAsText) const {
  std::string value;
  AppendElementByName(value, name, typeAsText);
  return value;
}

// ---- Comparison

namespace {

// What two different items most often differ in comes first.
constexpr auto kComparedTexts = std::to_array<std::string ItemFields::*>({
    &F::ItemName,
    &F::Artists,
    &F::Artist1Name,
    &F::ItemReference,
    &F::CartLine1,
    &F::CartLine2,
    &F::CartLine3,
    &F::Artist2Name,
    &F::Artist3Name,
    &F::Artist1HREF,
    &F::Artist2HREF,
    &F::Artist3HREF,
    &F::CartArtistsHREF,
    &F::SchedulerReference,
    &F::ItemCode,
    &F::ItemHREF,
    &F::TitleID,
    &F::AlbumName,
    &F::CopyrightComposer,
    &F::CopyrightCode,
    &F::CopyrightMusicTitle,
    &F::CopyrightProductTitle,
    &F::CopyrightPerformer,
    &F::CopyrightPublisher,
    &F::CopyrightRecordLabel,
    &F::CopyrightRecordNumber,
    &F::Notes,
    &F::DABNotes,
    &F::RDSNotes,
    &F::WebNotes,
    &F::OnlineStoreReference,
    &F::PictureHREF,
    &F::CustomField1,
    &F::CustomField2,
    &F::CustomField3,
});

bool SameNumbers(const ItemFields& a, const ItemFields& b) {
  return a.ItemType == b.ItemType && a.CartNumber == b.CartNumber && a.CartItemLength == b.CartItemLength &&
         a.CopyrightMusicDuration == b.CopyrightMusicDuration &&
         a.CopyrightTotalDuration == b.CopyrightTotalDuration;
}

bool SameStart(const ItemFields& a, const ItemFields& b) {
  return std::abs(SecondsBetween(a.ItemStartDate, a.ItemStartTime, b.ItemStartDate, b.ItemStartTime)) <= 1;
}

}  // namespace

bool clsZEBItemInfo::IsSame(const clsZEBItemInfo& other, bool compareStartTime) const {
  if (ItemIndexNumber != other.ItemIndexNumber) return false;
  if (shared_ == other.shared_) return true;
  const Shared& mine = Read();
  const Shared& theirs = other.Read();
  if (!SameNumbers(mine.fields, theirs.fields)) return false;
  for (const auto text : kComparedTexts)
    if (mine.fields.*text != theirs.fields.*text) return false;
  if (compareStartTime && !SameStart(mine.fields, theirs.fields)) return false;
  return mine.pictures.BeginsTheSameAs(theirs.pictures) &&
         mine.additionalFiles.BeginsTheSameAs(theirs.additionalFiles);
}

}  // namespace zeb
