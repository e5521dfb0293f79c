#include "outputs/encoder/StreamTitles.h"

#include <algorithm>
#include <array>

#include "outputs/wire/WireCharacters.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr std::int32_t kLongestInterval = 1024 * 1024;
constexpr std::size_t kMostHeadBytes = 16u * 1024;
constexpr std::size_t kBlockUnit = 16;
constexpr std::string_view kHeadEnd = "\r\n\r\n", kTitle = "StreamTitle='", kTitleEnd = "';";

// Each byte as the character with its number.
std::string DecodeLatin1(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) AppendCharacter(text, static_cast<unsigned char>(c));
  return text;
}

// With a "?" for each character that has no place among the 256 of ISO-8859-1.
std::string ReducedToLatin1(std::string_view text) {
  std::string reduced;
  for (std::size_t at = 0; at < text.size();) {
    const char32_t character = NextCharacter(text, at);
    AppendCharacter(reduced, character > 0xFF ? U'?' : character);
  }
  return reduced;
}

// What becomes of bytes that are no UTF-8: each run of them is a `mark`.
std::string WithMarks(std::string_view text, std::string_view mark) {
  std::string marked;
  bool inRun = false;
  for (const char c : text) {
    const bool plain = static_cast<unsigned char>(c) < 0x80;
    if (plain)
      marked += c;
    else if (!inRun)
      marked += mark;
    inRun = !plain;
  }
  return marked;
}

// Two or more marks in a row as one.
std::string Gathered(std::string text, std::string_view mark) {
  const std::string twice = std::string(mark) + std::string(mark);
  for (std::size_t at = 0; !mark.empty() && (at = text.find(twice, at)) != std::string::npos;)
    text.erase(at, mark.size());
  return text;
}

// UTF-8 that was taken for one of the sets with a byte a character.
bool TakenForBytes(std::string_view sent, std::string_view seen) {
  return seen == TrimBlanks(DecodeLatin1(sent)) ||
         seen == TrimBlanks(DecodeFile(sent, {.kind = FileEncoding::kWindows1252}));
}

bool TakenForUtf8(std::string_view text, std::string_view seen) {
  constexpr std::array<std::string_view, 3> kMarks = {"\xEF\xBF\xBD", "?", ""};
  return std::any_of(kMarks.begin(), kMarks.end(), [&](std::string_view mark) {
    return Gathered(std::string(seen), mark) == TrimBlanks(Gathered(WithMarks(text, mark), mark));
  });
}

bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

void StreamTitles::Take(std::string_view bytes) {
  if (interval_ == 0) return TakeHead(bytes);
  while (!bytes.empty() && problem_.empty()) {
    if (sound_ > 0)
      TakeSound(bytes);
    else
      TakeBlock(bytes);
  }
}

void StreamTitles::TakeHead(std::string_view bytes) {
  if (!problem_.empty()) return;
  block_ += bytes.substr(0, kMostHeadBytes);
  const std::size_t end = block_.find(kHeadEnd);
  if (end == std::string::npos) {
    if (block_.size() >= kMostHeadBytes) problem_ = "the server does not answer as a stream does";
    return;
  }
  const std::string all = std::exchange(block_, {});
  head_.Take(std::string_view(all).substr(0, end + kHeadEnd.size()));
  if (head_.Status() != 200) {
    problem_ = "the server answers '" + OneLine(head_.StatusLine()) + "'";
    return;
  }
  const std::int32_t interval = LeadingDigits(head_.Header("icy-metaint"));
  if (interval < 1 || interval > kLongestInterval) {
    problem_ = "the stream has no titles for its listeners";
    return;
  }
  interval_ = sound_ = static_cast<std::size_t>(interval);
  Take(std::string_view(all).substr(end + kHeadEnd.size()));
}

void StreamTitles::TakeSound(std::string_view& bytes) {
  const std::size_t taken = std::min(sound_, bytes.size());
  sound_ -= taken;
  bytes.remove_prefix(taken);
}

// A byte that says how many units the title takes, then the title, filled up with zeros.
void StreamTitles::TakeBlock(std::string_view& bytes) {
  if (wanted_ == 0) {
    wanted_ = kBlockUnit * static_cast<unsigned char>(bytes.front());
    bytes.remove_prefix(1);
  }
  const std::size_t taken = std::min(wanted_ - block_.size(), bytes.size());
  block_ += bytes.substr(0, taken);
  bytes.remove_prefix(taken);
  if (block_.size() < wanted_) return;
  const std::size_t at = block_.find(kTitle);
  if (at != std::string::npos) {
    const std::size_t begin = at + kTitle.size();
    title_ = block_.substr(begin, block_.find(kTitleEnd, begin) - begin);
    hasTitle_ = true;
  }
  block_.clear();
  wanted_ = 0;
  sound_ = interval_;
}

std::string StreamRequest(const HttpAddress& address) {
  return "GET " + address.path + " HTTP/1.0\r\nHost: " + address.Host() +
         "\r\nUser-Agent: ZEB/" ZEB_VERSION "\r\nAccept: */*\r\nIcy-MetaData: 1\r\nConnection: close\r\n\r\n";
}

// A player takes bytes for UTF-8 where they are, else for one byte a character.
TitleVerdict CompareTitle(const PublicPlace& place, std::string_view bytes) {
  TitleVerdict verdict;
  verdict.seen = std::string(TrimBlanks(DecodeLenient(bytes)));
  const std::string text(TrimBlanks(place.text));
  const CharacterSet set = place.mount ? CharacterSet::kUtf8 : place.characterSet;
  const auto arrivesIn = [&](CharacterSet in) { return verdict.seen == TrimBlanks(KeepToSet(text, in)); };
  // A server may keep a mount's titles in a smaller set.
  verdict.same = arrivesIn(set) || (place.mount && verdict.seen == ReducedToLatin1(text));
  if (verdict.same || IsPlain(text)) return verdict;
  if (set == CharacterSet::kUtf8 && TakenForBytes(text, verdict.seen))
    verdict.advice = place.mount
                         ? "the server takes UTF-8 for ISO-8859-1; set the mount's charset to UTF-8 there"
                         : "the server takes UTF-8 for ISO-8859-1; set the output's CharacterSet to "
                           "ISO-8859-1";
  else if (set != CharacterSet::kUtf8 && TakenForUtf8(text, verdict.seen))
    verdict.advice = "the server expects UTF-8, not " + std::string(CharacterSetName(set)) +
                     "; set the output's CharacterSet to UTF-8";
  return verdict;
}

}  // namespace zeb
