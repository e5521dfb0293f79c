// ZEB_Class_Functions: the template language. ExpandTemplate is the one entry through which outputs turn
// templates into text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/ServiceSnapshot.h"
#include "platform/Time.h"
#include "text/Encodings.h"
#include "text/ValueEscapes.h"

namespace zeb {

class clsZEBService;

// The files that a generated text refers to, or that its items say must travel with it: full paths in the
// order found, unique without regard to case.
class UploadFileList {
 public:
  void Add(std::string_view path);
  const std::vector<std::string>& Paths() const { return paths_; }
  bool Empty() const { return paths_.empty(); }

 private:
  std::vector<std::string> paths_;
  std::unordered_set<std::string> lowerCased_;
};

// No page or text grows much beyond this, whatever its template repeats: its expansion ends there.
inline constexpr std::size_t kMaxPageBytes = 16u * 1024 * 1024;

// How values (never literal text) are put into the text: escaped, then URL-encoded. Picture names are
// only escaped and made one line.
struct ValueEncoding {
  bool urlEncode = false;
  CharacterSet characterSet = CharacterSet::kUtf8;  // whose bytes are URL-encoded
  ValueEscape escape = ValueEscape::kNone;
  // For protocols in which a line end begins something new: control characters in values become blanks.
  // URL-encoded values keep theirs, since encoded ones are harmless.
  bool oneLine = false;
};

// Expands optional sections, then tags, each in one pass from left to right with one output buffer: linear in
// template plus result. Never fails; malformed input degrades as the language says. `simpleText` is the
// template behind <ZEB_SIMPLETEXT>. The text ends with the tag that takes it beyond kMaxPageBytes.
std::string ExpandTemplate(std::string_view templateText, const ServiceSnapshot& snapshot,
                           std::string_view simpleText, UploadFileList& uploadFiles,
                           ValueEncoding values = {});
// Against the service as it stands now.
std::string ExpandTemplate(std::string_view templateText, const clsZEBService& service,
                           std::string_view simpleText, UploadFileList& uploadFiles,
                           ValueEncoding values = {});

// "A", "A and B", "A, B and C" from the item's three artist names.
std::string JoinArtistNames(const clsZEBItemInfo& item);

// Turns tags that HTML editors have escaped ("&lt;ZEB_...&gt;", "%3cZEB_...%3e", without regard to case) back
// into tags; other escaped text is left alone. Linear.
std::string UndoEscapedTags(std::string_view page);

// Expands a page piece by piece of at most 2000 characters, as the file and web outputs do. No tag or
// conditional section is ever split between two pieces. Nothing: it would be larger than kMaxPageBytes.
std::optional<std::string> ExpandPage(std::string_view page, const ServiceSnapshot& snapshot,
                                      std::string_view simpleText, UploadFileList& uploadFiles,
                                      ValueEncoding values = {});

// What marks a page as generated: a comment with the date and the program's version, and the refresh and
// no-cache tags when asked for.
struct RefreshHeader {
  std::int32_t refreshSeconds = 0;  // 0 or less: no refresh tag
  bool noCache = false;
  std::string_view version;  // "major.minor.revision"
};
std::string RefreshHeaderText(const RefreshHeader& header, WallTime now);
// Where it goes: the start of the line after the page's first "<HTML" line, which must end in CR LF; npos
// when there is none.
std::size_t RefreshHeaderPlace(std::string_view page);
// Puts it there; without a place nothing changes.
void InsertRefreshHeader(std::string& page, const RefreshHeader& header, WallTime now);

}  // namespace zeb
