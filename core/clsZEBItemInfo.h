// clsZEBItemInfo: everything known about one programme item.
//
// A value. Fields are shared between copies until one of them is written, so a Copy costs a pointer and an
// empty record next to nothing (a service holds 102 of them). Read fields through `->`, write them through
// Edit():  item->ItemName;  item.Edit().ItemName = "Song".
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

inline constexpr std::size_t kMaxItemFiles = 255;       // in each list; what is added beyond is ignored
inline constexpr std::size_t kMaxFileNameBytes = 4096;  // longer names open no file, and are not added

struct ItemFields {
  std::string CartLine1, CartLine2, CartLine3, CartArtistsHREF;
  std::int32_t CartNumber = 0;
  float CartItemLength = 0;  // seconds
  std::string ItemName, ItemHREF, TitleID, AlbumName, ItemReference, SchedulerReference, ItemCode;
  std::int32_t ItemStartDate = 0;  // day number (text/SharedTime.h); 0: never set
  float ItemStartTime = 0;         // seconds after midnight
  std::string Artist1Name, Artist2Name, Artist3Name, Artists;
  std::string Artist1HREF, Artist2HREF, Artist3HREF;
  std::string CustomField1, CustomField2, CustomField3;
  std::string OnlineStoreReference, PictureHREF;
  std::int32_t ItemType = 0;
  std::string CopyrightProductTitle, CopyrightMusicTitle, CopyrightRecordLabel, CopyrightRecordNumber;
  std::string CopyrightComposer, CopyrightPerformer, CopyrightPublisher, CopyrightCode;
  float CopyrightTotalDuration = 0, CopyrightMusicDuration = 0;  // seconds
  std::string Notes, WebNotes, RDSNotes, DABNotes;
};

class clsZEBItemInfo {
 public:
  std::int16_t ItemIndexNumber =
      0;  // the slot; kept outside the shared fields, since every empty record has one

  const ItemFields* operator->() const;
  const ItemFields& Fields() const;
  ItemFields& Edit();  // valid until the record is next copied or assigned

  // The lists are numbered from 1, and unique without regard to case. Reading above the count, or at 0, gives
  // ""; writing there does nothing. A negative index throws std::out_of_range.
  int NumberAdditionalFiles() const;
  const std::string& AdditionalFile(int index) const;
  void SetAdditionalFile(int index, std::string fileName);
  void AddAdditionalFile(std::string fileName);
  int NumberPictures() const;
  const std::string& PictureFileName(int index) const;
  void SetPictureFileName(int index, std::string fileName);
  bool AddPictureFile(std::string fileName);  // false: it is there already, or beyond the bounds above
  void ClearPictures();

  // An independent record with the same contents; entries that now differ only in case become one.
  clsZEBItemInfo Copy() const;

  // The value of an element as text; "" for an unknown name. The custom fields are carried but never
  // published by name.
  std::string GetElementByName(std::string_view name, bool typeAsText) const;
  void AppendElementByName(std::string& to, std::string_view name, bool typeAsText) const;
  static bool HasElement(std::string_view name);  // whether there is an element of this name

  // Whether it was never filled in: it differs from an empty record in its slot number at most.
  bool HoldsNothing() const;

  // Whether `other` is the same item. Lists are compared over this record's count only, and start moments
  // (more than one second apart differ) only when asked for.
  bool IsSame(const clsZEBItemInfo& other, bool compareStartTime) const;

 private:
  struct Shared;
  const Shared& Read() const;
  Shared& Own();                    // for writing: made, or no longer shared
  std::shared_ptr<Shared> shared_;  // null: everything empty
};

// "Cart", "Jingle", "Advert" or "Song"; "" for other codes.
std::string_view ItemTypeText(std::int32_t itemType);

}  // namespace zeb
