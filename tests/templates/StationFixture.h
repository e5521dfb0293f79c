// A station in the middle of its programme, and short ways to expand against it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/clsZEBService.h"
#include "platform/simulated/TestEnvironment.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

inline clsZEBItemInfo Item(std::string name, std::string artists, std::int32_t type) {
  clsZEBItemInfo item;
  item.Edit().ItemName = std::move(name);
  item.Edit().Artists = std::move(artists);
  item.Edit().ItemType = type;
  return item;
}

// Monday 2 March 2026, 12:00. On air: a song with two pictures and two further files. Two next and two
// previous items can be named; the second previous slot is empty.
struct Station {
  Station() {
    service.SetItemCount(2);
    clsZEBItemInfo now = Item(" Crème Brûlée ", "ABBA", 7);
    now.Edit().Notes = "No <ZEB_NOW_ITEMNAME> [in] here";
    now.Edit().ItemReference = "4711";
    now.AddPictureFile("C:\\Pics\\a.jpg");
    now.AddPictureFile("C:\\Pics\\b.jpg");
    now.AddAdditionalFile("C:\\More\\one.css");
    now.AddAdditionalFile("C:\\More\\two.js");
    service.SetCurrentItem(now);
    service.SetNextItem(1, Item("Next One", "Léa", 3));
    service.SetNextItem(2, Item("Next Two", "", 4));
    service.SetPreviousItem(1, Item("Before", "Gone", 12));
    service.SetComingSoonItem(Item("Soon", "Coming Artist", 7));
    service.ShowTitle = "Breakfast";
    service.ShowReference = "42";
    service.PresenterFullName = " Zoë ";
    service.settings.ServiceName = "Radio Ümlaut";
  }

  std::string Expand(std::string_view text, std::string_view simpleText = {}, ValueEncoding values = {}) {
    uploads = {};
    return ExpandTemplate(text, service, simpleText, uploads, values);
  }

  TestEnvironment environment;
  ServiceEvents events;
  clsZEBService service{environment.environment, [](OutputType) { return OutputPtr(); }, events};
  UploadFileList uploads;
};

}  // namespace zeb
