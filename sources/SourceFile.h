// SourceFile: the bytes of a playout system's file, read by the reader of its source type, and told to a
// person who chooses one. Touches nothing but what it is given; may be used on a worker thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Markup.h"
#include "platform/Result.h"
#include "sources/ZEB_FN.h"

namespace zeb {

struct SourceFile {
  std::int32_t type = 0;         // kSourceDallet50 and so on
  std::string_view bytes;        // at most kMaxFileBytes
  std::string_view definitions;  // Generic.ini, of a generic text file
  std::string definitionsName;   // for reasons
  Markup* markup = nullptr;      // null: files of markup cannot be read
  std::int32_t today = 0;        // as a day number
};

Result<SourceItems> ReadSourceFile(const SourceFile& file);

// What the file holds, for the dialog in which it is chosen: an item a line, the current one first, at most
// kMostDescribed next ones. Fails as reading does.
inline constexpr std::size_t kMostDescribed = 10;
Result<std::string> DescribeSourceFile(const SourceFile& file);

}  // namespace zeb
