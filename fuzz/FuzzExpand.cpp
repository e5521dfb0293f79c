// Templates and pages from the input, against a fixed station. Whatever they are, the result is valid text,
// not longer than the input can make it, and pieces do not split what they must not.
#include <cstdlib>

#include "templates/PageChunks.h"
#include "tests/templates/StationFixture.h"
#include "text/Utf8.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
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

  const std::string page = UndoEscapedTags(text);
  Require(page.size() <= text.size());
  UploadFileList files;
  const std::string whole = ExpandPage(page, *station.service.TakeSnapshot(), simple, files).value();
  Require(IsValidUtf8(whole));
  // A page that is one piece is a template.
  if (CountCharacters(page) <= kChunkCharacters) Require(whole == station.Expand(page, simple));

  for (const std::size_t characters : {std::size_t{2}, std::size_t{7}, std::size_t{50}})
    for (std::size_t from = 0; from < page.size();) {
      const std::size_t end = ChunkEnd(page, from, characters);
      Require(end > from && end <= page.size());
      Require(IsValidUtf8(std::string_view(page).substr(from, end - from)));
      from = end;
    }
  return 0;
}
