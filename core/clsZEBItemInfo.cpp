#include "core/clsZEBItemInfo.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "text/LetterCase.h"
#include "text/SharedTime.h"

namespace zeb {

namespace {

const std::string kNothing;

// File names in the order added, without repeats that differ only in case.
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
    if (names_.size() >= kMaxItemFiles || name.size() > kMaxFileNameBytes || Holds(name)) return false;
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

// ---- Comparison

namespace {

using F = ItemFields;

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

bool clsZEBItemInfo::HoldsNothing() const {
  if (!shared_) return true;
  clsZEBItemInfo empty;
  empty.ItemIndexNumber = ItemIndexNumber;
  return NumberPictures() == 0 && NumberAdditionalFiles() == 0 && IsSame(empty, true);
}

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
