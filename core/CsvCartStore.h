// CsvCartStore: the built-in store of carts: a CSV file, `number,line1,line2,line3[,serialisation]` a line.
//
// Quoting as in RFC 4180 (fields in double quotes may hold commas, line ends and doubled quotes). The file is
// read again when its time stamp or size changes; one that cannot be read leaves the carts as they were and
// is tried again at the next look-up, a missing one means no carts. Lines without a number in front (a
// heading) are passed over; a number that comes twice counts as it came last.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CartStore.h"
#include "platform/FileSystem.h"
#include "platform/Operator.h"

namespace zeb {

class CsvCartStore : public CartStore {
 public:
  // `person` is told when the file cannot be read.
  CsvCartStore(FileSystem& files, Operator& person, std::string path);
  std::optional<Cart> Find(std::int32_t cartNumber) override;
  std::shared_ptr<const CartTable> All() override;

 private:
  void ReadWhenChanged();
  bool ReadFile();  // false: it could not be read

  FileSystem& files_;
  Operator& person_;
  std::string path_;
  bool seen_ = false;    // and read
  std::string problem_;  // the last one reported
  std::int64_t modified_ = 0;
  std::uint64_t size_ = 0;
  std::shared_ptr<const CartTable> carts_ = std::make_shared<CartTable>();  // never changed, only replaced
};

// The fields of one record from `offset` on, which moves behind the record's line end. A quote that is never
// closed runs to the end of the text.
std::vector<std::string> ReadCsvRecord(std::string_view text, std::size_t& offset);

}  // namespace zeb
