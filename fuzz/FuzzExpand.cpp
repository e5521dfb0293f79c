// Templates and pages from the input, against a fixed station. Whatever they are, the result is valid text,
// not longer than the input can make it, and pieces do not split what they must not. Compiled templates give
// what the general expansion gives, and both what the rules say literally.
#include <cstdlib>

#include "templates/CompiledTemplate.h"
#include "templates/PageChunks.h"
#include "tests/templates/LiteralExpansion.h"
#include "tests/templates/StationFixture.h"
#include "text/Utf8.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// Rebuilding the text at every replacement takes its time.
constexpr std::size_t kLiterallyBytes = 1000;

void CompareCompiled(zeb::Station& station, const std::string& text, const std::string& simple) {
  using namespace zeb;
  static const SnapshotPtr snapshot = station.service.TakeSnapshot();
  const auto shared = std::make_shared<const std::string>(text);
  UploadFileList files, generalFiles;
  for (const ValueEscape escape : {ValueEscape::kNone, ValueEscape::kJson}) {
    const ValueEncoding values{false, CharacterSet::kUtf8, escape};
    Require(CompiledTemplate::OfText(shared)->Expand(*snapshot, simple, files, values) ==
            ExpandTemplate(text, *snapshot, simple, generalFiles, values));
  }
  Require(files.Paths() == generalFiles.Paths());
  const std::string first = "<!-- May -->\r\n<x>\r\n", now = "<!-- é\"€ -->\r\n<x>\r\n";
  for (const std::size_t characters : {std::size_t{7}, std::size_t{40}, kChunkCharacters}) {
    const std::size_t at = RefreshHeaderPlace(text);
    const bool hasHeader = at != std::string::npos;
    std::string page = text;
    if (hasHeader) page.insert(at, now);
    const auto compiled = CompiledTemplate::OfPage(shared, {at, hasHeader ? first : ""}, characters);
    const auto expanded = compiled->Expand(*snapshot, simple, files, {}, hasHeader ? now : "");
    if (characters == kChunkCharacters)
      Require(expanded == ExpandPage(page, *snapshot, simple, generalFiles));
    else if (text.size() <= kLiterallyBytes)
      Require(expanded == literal::ExpandPage(page, station.service, simple, generalFiles, characters));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  static Station station;
  const std::string text = DecodeLenient({reinterpret_cast<const char*>(data), size});
  const std::string simple = text.substr(0, SkipCharacters(text, 0, 100));

  const std::string expanded = station.Expand(text, simple);
  Require(IsValidUtf8(expanded));
  Require(IsValidUtf8(station.Expand(text, simple, {true, CharacterSet::kRds})));
  // However values are put in, what the text does not hold itself does not come from them.
  const bool controls = text.find_first_of("\r\n\t\x1B") != std::string::npos;
  for (const char* word : {"html", "xml", "json", "auto"}) {
    const std::string line =
        station.Expand(text, simple, {.escape = EscapeFor(word, simple, text), .oneLine = true});
    Require(IsValidUtf8(line));
    Require(controls || line.find_first_of("\r\n\t\x1B") == std::string::npos);
  }

  const std::string page = UndoEscapedTags(text);
  Require(page.size() <= text.size());
  UploadFileList files;
  const std::string whole = ExpandPage(page, *station.service.TakeSnapshot(), simple, files).value();
  Require(IsValidUtf8(whole));
  // A page that is one piece is a template.
  if (CountCharacters(page) <= kChunkCharacters) Require(whole == station.Expand(page, simple));

  CompareCompiled(station, page, simple);

  for (const std::size_t characters : {std::size_t{2}, std::size_t{7}, std::size_t{50}})
    for (std::size_t from = 0; from < page.size();) {
      const std::size_t end = ChunkEnd(page, from, characters);
      Require(end > from && end <= page.size());
      Require(IsValidUtf8(std::string_view(page).substr(from, end - from)));
      from = end;
    }
  return 0;
}
