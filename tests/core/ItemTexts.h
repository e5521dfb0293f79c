// Every text that an item has, for tests that set them all.
#pragma once

#include <string>
#include <vector>

#include "core/clsZEBItemInfo.h"

namespace zeb {

inline std::vector<std::string*> TextsOf(ItemFields& f) {
  return {&f.CartLine1,
          &f.CartLine2,
          &f.CartLine3,
          &f.CartArtistsHREF,
          &f.ItemName,
          &f.ItemHREF,
          &f.TitleID,
          &f.AlbumName,
          &f.ItemReference,
          &f.SchedulerReference,
          &f.ItemCode,
          &f.Artist1Name,
          &f.Artist2Name,
          &f.Artist3Name,
          &f.Artists,
          &f.Artist1HREF,
          &f.Artist2HREF,
          &f.Artist3HREF,
          &f.CustomField1,
          &f.CustomField2,
          &f.CustomField3,
          &f.OnlineStoreReference,
          &f.PictureHREF,
          &f.CopyrightProductTitle,
          &f.CopyrightMusicTitle,
          &f.CopyrightRecordLabel,
          &f.CopyrightRecordNumber,
          &f.CopyrightComposer,
          &f.CopyrightPerformer,
          &f.CopyrightPublisher,
          &f.CopyrightCode,
          &f.Notes,
          &f.WebNotes,
          &f.RDSNotes,
          &f.DABNotes};
}

}  // namespace zeb
