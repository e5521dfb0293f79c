#include "core/ServiceSnapshot.h"

#include "text/LetterCase.h"
#include "text/SharedTime.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

const clsZEBItemInfo* InSlot(const std::vector<clsZEBItemInfo>& items, int slot) {
  return slot >= 1 && static_cast<std::size_t>(slot) <= items.size()
             ? &items[static_cast<std::size_t>(slot) - 1]
             : nullptr;
}

}  // namespace

const clsZEBItemInfo* ServiceSnapshot::NextItem(int slot) const {
  return InSlot(nextItems, slot);
}

const clsZEBItemInfo* ServiceSnapshot::PreviousItem(int slot) const {
  return InSlot(previousItems, slot);
}

std::string ServiceSnapshot::GetSpecialElementByName(std::string_view name) const {
  constexpr std::size_t kNowAndSeparator = 4;  // characters
  const std::string upper = UpperCase(name);
  if (upper == "PRESENTERFULLNAME") return PresenterFullName;
  if (upper == "PRESENTERREFERENCE") return PresenterReference;
  if (upper == "SHOWREFERENCE") return ShowReference;
  if (upper == "SHOWTITLE") return ShowTitle;
  if (upper == "SERVICENAME") return ServiceName;
  if (upper == "NOPICTUREFILENAME") return NoPictureFileName;
  if (upper == "CURRENTDATETIME") return GeneralDate(moment);
  if (upper == "CURRENTDATETIMEXML") return XmlDateTime(moment);
  if (upper.compare(0, 3, "NOW") == 0)  // the pattern as written, so that its literal letters keep their case
    return FormatDateTime(moment, name.substr(SkipCharacters(name, 0, kNowAndSeparator)));
  return std::string("Unknown tag ").append(name);
}

}  // namespace zeb
