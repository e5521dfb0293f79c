#include "core/CsvCartStore.h"

#include <charconv>
#include <utility>

#include "core/ItemBounds.h"
#include "text/Encodings.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr std::size_t kMaxRecordBytes = 1024u * 1024;  // as a line of the control link

bool ReadCartNumber(std::string_view field, std::int32_t& number) {
  field = TrimBlanks(field);
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
  return error == std::errc() && end == field.data() + field.size();
}

// Reads a quoted field whose opening quote is behind `offset`.
void ReadQuoted(std::string_view text, std::size_t& offset, std::string& field) {
  while (offset < text.size()) {
    const char c = text[offset++];
    if (c != '"') {
      field += c;
    } else if (offset < text.size() && text[offset] == '"') {
      field += '"';
      ++offset;
    } else {
      return;
    }
  }
}

}  // namespace

std::vector<std::string> ReadCsvRecord(std::string_view text, std::size_t& offset) {
  std::vector<std::string> fields(1);
  while (offset < text.size()) {
    const char c = text[offset++];
    if (c == ',') {
      fields.emplace_back();
    } else if (c == '"' && fields.back().empty()) {
      ReadQuoted(text, offset, fields.back());
    } else if (c == '\n' || c == '\r') {
      if (c == '\r' && offset < text.size() && text[offset] == '\n') ++offset;
      return fields;
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

CsvCartStore::CsvCartStore(FileSystem& files, Operator& person, std::string path)
    : files_(files), person_(person), path_(std::move(path)) {}

std::optional<Cart> CsvCartStore::Find(std::int32_t cartNumber) {
  ReadWhenChanged();
  const auto found = carts_->find(cartNumber);
  if (found == carts_->end()) return std::nullopt;
  return found->second;
}

std::shared_ptr<const CartTable> CsvCartStore::All() {
  ReadWhenChanged();
  return carts_;
}

void CsvCartStore::ReadWhenChanged() {
  const std::optional<FileInfo> info = files_.Stat(path_);
  if (!info) {
    carts_ = std::make_shared<CartTable>();
    seen_ = false;
    return;
  }
  if (seen_ && info->modified == modified_ && info->size == size_) return;
  seen_ = ReadFile();
  modified_ = info->modified;
  size_ = info->size;
}

bool CsvCartStore::ReadFile() {
  const Result<std::string> bytes = files_.Read(path_, kMaxFileBytes);
  if (!bytes) {
    if (std::exchange(problem_, bytes.Reason()) != bytes.Reason())
      person_.Note("The carts stay as they were: " + bytes.Reason());
    return false;
  }
  problem_.clear();
  const std::string text = DecodeFile(bytes.Value(), DetectFileEncoding(bytes.Value()));
  const auto carts = std::make_shared<CartTable>();
  std::string tooLong;  // the first
  std::size_t offset = 0;
  while (offset < text.size()) {
    std::vector<std::string> fields = ReadCsvRecord(text, offset);
    std::int32_t number = 0;
    if (!ReadCartNumber(fields[0], number)) continue;
    fields.resize(5);
    for (std::size_t i = 1; i < fields.size(); ++i)
      if (const std::size_t bytes = CutToBound(fields[i], i < 4 ? kMaxFieldBytes : kMaxRecordBytes);
          bytes > 0)
        if (tooLong.empty())
          tooLong = "a text of cart " + std::to_string(number) + " has " + std::to_string(bytes) +
                    " bytes and is cut";
    carts->insert_or_assign(number, Cart{{std::move(fields[1]), std::move(fields[2]), std::move(fields[3])},
                                         std::move(fields[4])});
  }
  carts_ = carts;
  if (!tooLong.empty()) person_.Note("'" + path_ + "': " + tooLong);
  return true;
}

}  // namespace zeb
