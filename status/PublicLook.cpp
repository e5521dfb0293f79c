#include "status/PublicLook.h"

#include <algorithm>
#include <array>

#include "core/Shown.h"
#include "outputs/encoder/StreamTitles.h"
#include "outputs/http/HttpFetch.h"
#include "text/Encodings.h"
#include "text/OneLine.h"
#include "text/Sha256.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

constexpr std::size_t kShownCharacters = 80;

std::string Quoted(const std::string& text) {
  return "'" + OneLine(text, kShownCharacters) + "'";
}

// What is at the address instead of what was published.
std::string Shows(const PublicPlace& place, const std::string& seen) {
  return "'" + place.url + "' shows " + Quoted(seen) + ", published was " + Quoted(place.text);
}

// As it is, or as it stands in a page of the usual kinds.
bool Holds(const std::string& body, const std::string& title) {
  constexpr std::array<ValueEscape, 4> kForms = {ValueEscape::kNone, ValueEscape::kHtml, ValueEscape::kXml,
                                                 ValueEscape::kJson};
  return std::any_of(kForms.begin(), kForms.end(), [&](ValueEscape form) {
    std::string written;
    AppendEscaped(written, title, form);
    return body.find(written) != std::string::npos;
  });
}

std::optional<std::string> LookAtPage(Environment& environment, const WantedPlace& wanted,
                                      const Epoch::Mark& mine) {
  const PublicPlace place = *wanted();
  HttpOrder order;
  order.url = place.url;
  order.limit = kPageLookLimit;
  order.mostBytes = kMostPageBytes;
  const Result<HttpAnswer> answer = Fetch(environment, order, mine);
  if (!mine.Holds()) return std::nullopt;
  if (!answer) return answer.Reason();
  const HttpAnswer& page = answer.Value();
  if (page.Status() != 200) return "'" + place.url + "' answers '" + OneLine(page.StatusLine()) + "'";
  const PublicPlace* const now = wanted();
  if (!now || *now != place) return std::nullopt;
  const std::string text = DecodeFile(page.Body(), DetectFileEncoding(page.Body()));
  if (place.kind == PublicPlace::Kind::kPage)
    return Sha256Text(page.Body()) == place.digest ? "" : Shows(place, FirstLines(text));
  if (Holds(text, place.text)) return "";
  return "'" + place.url + "' does not show the title " + Quoted(place.text) + ", but begins with " +
         Quoted(FirstLines(text));
}

std::string WhyNoTitle(const CallResult& call, const StreamTitles& titles) {
  if (call.end == CallEnd::kNoConnection) return call.problem;
  return titles.Problem().empty() ? "listeners are sent no title" : titles.Problem();
}

// Each title that comes is compared with what is wanted at that moment.
std::optional<std::string> LookAtStream(Environment& environment, const WantedPlace& wanted,
                                        const Epoch::Mark& mine) {
  const std::string url = wanted()->url;
  const Result<HttpAddress> address = ParseHttpAddress(url);
  if (!address) return address.Reason();
  StreamTitles titles;
  std::optional<PublicPlace> seen;
  const CallResult call = Call(environment, address.Value().target, StreamRequest(address.Value()),
                               kStreamLookLimit, mine, [&](std::string_view bytes) {
                                 titles.Take(bytes);
                                 const PublicPlace* const place = wanted();
                                 if (place && titles.HasTitle() && CompareTitle(*place, titles.Title()).same)
                                   seen = *place;
                                 return seen || !place || !titles.Problem().empty();
                               });
  if (!mine.Holds()) return std::nullopt;
  const PublicPlace* const place = wanted();
  if (!place || (seen && *seen != *place)) return std::nullopt;
  if (seen) return "";
  if (!titles.HasTitle()) return "'" + url + "': " + WhyNoTitle(call, titles);
  const TitleVerdict verdict = CompareTitle(*place, titles.Title());
  std::string wrong =
      "'" + url + "' sends its listeners " + Quoted(verdict.seen) + ", published was " + Quoted(place->text);
  if (!verdict.advice.empty()) wrong += ": " + verdict.advice;
  return wrong;
}

}  // namespace

std::optional<std::string> LookAt(Environment& environment, const WantedPlace& wanted,
                                  const Epoch::Mark& mine) {
  const PublicPlace* const place = wanted();
  if (!place) return std::nullopt;
  return place->kind == PublicPlace::Kind::kStream ? LookAtStream(environment, wanted, mine)
                                                   : LookAtPage(environment, wanted, mine);
}

}  // namespace zeb
