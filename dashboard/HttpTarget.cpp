#include "dashboard/HttpTarget.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "text/HexDigits.h"
#include "text/Lines.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

constexpr std::size_t kMostParts = 32;
constexpr std::size_t kMostValues = 64;

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

enum class Blanks { kAsTheyAre, kAsPlus };

// Strict: whatever is not meant as an escape is a mistake or an attempt.
std::optional<std::string> Decode(std::string_view text, Blanks blanks) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    char c = text[at];
    if (c == '%') {
      if (at + 2 >= text.size()) return std::nullopt;
      const int high = HexDigit(text[at + 1]), low = HexDigit(text[at + 2]);
      if (high < 0 || low < 0) return std::nullopt;
      c = static_cast<char>(high * 16 + low);
      at += 2;
    } else if (c == '+' && blanks == Blanks::kAsPlus) {
      c = ' ';
    }
    decoded += c;
  }
  return IsValidUtf8(decoded) ? std::optional<std::string>(decoded) : std::nullopt;
}

}  // namespace

Result<NamedTexts> ReadForm(std::string_view text) {
  NamedTexts values;
  for (const std::string_view pair : SplitAt(text, "&")) {
    if (pair.empty()) continue;
    if (values.size() == kMostValues) return Failure{"there are more than 64 values"};
    const std::size_t equals = std::min(pair.find('='), pair.size());
    const auto name = Decode(pair.substr(0, equals), Blanks::kAsPlus);
    const auto value = Decode(pair.substr(std::min(equals + 1, pair.size())), Blanks::kAsPlus);
    if (!name || !value) return Failure{"a value has a wrong escape or is not UTF-8"};
    values.emplace_back(*name, *value);
  }
  return values;
}

Result<HttpTarget> ReadHttpTarget(std::string_view target) {
  if (!target.starts_with('/')) return Failure{"the address must begin with a slash"};
  const std::size_t question = std::min(target.find('?'), target.size());
  const std::vector<std::string_view> parts = SplitAt(target.substr(1, question - 1), "/");
  if (parts.size() > kMostParts) return Failure{"the address has too many parts"};
  HttpTarget read;
  for (const std::string_view part : parts) {
    const auto decoded = Decode(part, Blanks::kAsTheyAre);
    if (!decoded || std::any_of(decoded->begin(), decoded->end(), IsControl))
      return Failure{"the address has a wrong escape or is not UTF-8"};
    if (*decoded == "." || *decoded == "..") return Failure{"the address has dots as a part"};
    read.path.push_back(*decoded);
  }
  Result<NamedTexts> query = ReadForm(target.substr(std::min(question + 1, target.size())));
  if (!query) return query.AsFailure();
  read.query = std::move(query.Value());
  return read;
}

}  // namespace zeb
