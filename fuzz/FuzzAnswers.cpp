// What foreign servers answer when they are looked at; the first byte chooses, the second is how many bytes
// come at a time.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "outputs/encoder/StreamTitles.h"
#include "outputs/http/HttpAddress.h"
#include "outputs/http/HttpAnswer.h"
#include "text/Utf8.h"

namespace {

constexpr std::size_t kMost = 4096;

template <class Reader>
void TakeInPieces(Reader& reader, std::string_view bytes, std::size_t piece) {
  for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size())))
    reader.Take(bytes.substr(0, piece));
}

void Check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  if (size < 2) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  const std::size_t piece = data[1] + 1U;
  if (data[0] == 'a') {
    HttpAnswer whole(kMost), pieces(kMost);
    whole.Take(bytes);
    TakeInPieces(pieces, bytes, piece);
    Check(whole.HasHead() == pieces.HasHead());
    whole.TakeEnd();
    pieces.TakeEnd();
    Check(whole.Ended() && pieces.Ended());
    if (whole.Problem().empty() && pieces.Problem().empty())
      Check(whole.Body().size() <= kMost && whole.Body() == pieces.Body());
  } else if (data[0] == 's') {
    StreamTitles titles;
    TakeInPieces(titles, bytes, piece);
    const PublicPlace place{PublicPlace::Kind::kStream, "", "", "Zo\xC3\xAB", CharacterSet::kUtf8, true};
    if (titles.HasTitle()) Check(IsValidUtf8(CompareTitle(place, titles.Title()).seen));
  } else if (const Result<HttpAddress> address = ParseHttpAddress(bytes); address) {
    Check(address.Value().target.port >= 1 && address.Value().target.port <= 65535);
    Check(address.Value().path.front() == '/' && !address.Value().target.host.empty());
    Check((address.Value().Host() + address.Value().path).find('\n') == std::string::npos);
  }
  return 0;
}
