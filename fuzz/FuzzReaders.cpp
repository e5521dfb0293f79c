// The readers of foreign files; the first byte chooses.
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "platform/common/LibxmlMarkup.h"
#include "sources/ZEB_FN.h"
#include "text/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  static LibxmlMarkup markup;
  static const GenericFields fields =
      ReadGenericFields(
          "[ZEBSource]\nItemStatus.Start=1\nItemStatus.Length=1\nItemType.Start=3\nItemType.Length=5\n"
          "ItemLength.Start=9\nItemLength.Length=8\nItemHDReference.Start=18\nItemTitle.HTMLCellNumber=1\n"
          "ItemArtist.Prefix=Artist=\n",
          &markup)
          .Value();
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const Result<SourceItems> read = data[0] == '0'   ? ReadDallet50(bytes, 46000)
                                   : data[0] == '1' ? ReadDallet51(bytes, markup)
                                                    : ReadGenericText(bytes, fields);
  if (!read) return 0;
  if (read.Value().items.size() > 51) std::abort();
  for (std::size_t i = 0; i < read.Value().items.size(); ++i) {
    const auto& item = read.Value().items[i];
    if (!item) continue;
    if (item->ItemIndexNumber != static_cast<int>(i)) std::abort();
    for (const std::string* text : {&(*item)->ItemName, &(*item)->Artists, &(*item)->TitleID})
      if (!IsValidUtf8(*text)) std::abort();
    if (!std::isfinite((*item)->ItemStartTime) || (*item)->ItemStartDate < 0) std::abort();
  }
  return 0;
}
