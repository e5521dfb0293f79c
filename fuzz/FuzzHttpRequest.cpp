// A request as a peer sends it, in pieces: the first byte says how long they are.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "dashboard/HttpWire.h"
#include "text/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  if (size == 0) return 0;
  const std::size_t piece = data[0] + std::size_t{1};
  std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  HttpRequestReader reader;
  std::string buffer;
  auto state = HttpRequestReader::State::kMore;
  while (state == HttpRequestReader::State::kMore && !bytes.empty()) {
    buffer += bytes.substr(0, piece);
    bytes.remove_prefix(std::min(piece, bytes.size()));
    state = reader.Take(buffer);
    (void)reader.WantsContinue();
  }
  if (state == HttpRequestReader::State::kFailed) {
    if (reader.Refusal().status < 400) std::abort();
    return 0;
  }
  if (state == HttpRequestReader::State::kMore) return 0;
  const HttpRequest request = reader.TakeRequest();
  if (request.path.empty() || request.body.size() > kMostRequestBytes) std::abort();
  for (const std::string& part : request.path)
    if (part == "." || part == ".." || !IsValidUtf8(part) || part.find('\0') != std::string::npos)
      std::abort();
  (void)request.Cookie("zeb");
  return 0;
}
