#include "platform/system/SystemLocale.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <vector>

#include "platform/posix/StrftimePatterns.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"

namespace zeb {
namespace {

enum class PieceKind { kDate, kTime, kLiteral };
struct Piece {
  PieceKind kind;
  std::string pattern;  // of a literal: its plain text
};

struct Conversion {
  char code;
  PieceKind kind;
  std::string_view pattern;
};
constexpr Conversion kConversions[] = {
    {'a', PieceKind::kDate, "ddd"},        {'A', PieceKind::kDate, "dddd"},
    {'b', PieceKind::kDate, "mmm"},        {'h', PieceKind::kDate, "mmm"},
    {'B', PieceKind::kDate, "mmmm"},       {'d', PieceKind::kDate, "dd"},
    {'e', PieceKind::kDate, "d"},          {'m', PieceKind::kDate, "mm"},
    {'y', PieceKind::kDate, "yy"},         {'Y', PieceKind::kDate, "yyyy"},
    {'G', PieceKind::kDate, "yyyy"},       {'g', PieceKind::kDate, "yy"},
    {'j', PieceKind::kDate, "y"},          {'u', PieceKind::kDate, "w"},
    {'w', PieceKind::kDate, "w"},          {'U', PieceKind::kDate, "ww"},
    {'V', PieceKind::kDate, "ww"},         {'W', PieceKind::kDate, "ww"},
    {'D', PieceKind::kDate, "mm/dd/yy"},   {'F', PieceKind::kDate, "yyyy-mm-dd"},
    {'x', PieceKind::kDate, "yyyy-mm-dd"}, {'H', PieceKind::kTime, "hh"},
    {'k', PieceKind::kTime, "h"},          {'I', PieceKind::kTime, "hh"},
    {'l', PieceKind::kTime, "h"},          {'M', PieceKind::kTime, "nn"},
    {'S', PieceKind::kTime, "ss"},         {'T', PieceKind::kTime, "hh:nn:ss"},
    {'X', PieceKind::kTime, "hh:nn:ss"},   {'R', PieceKind::kTime, "hh:nn"},
};

// Codes without zeros or blanks before the number ("%-d").
std::string_view Unpadded(std::string_view pattern) {
  return pattern == "dd" || pattern == "mm" || pattern == "hh" || pattern == "nn" || pattern == "ss"
             ? pattern.substr(1)
             : pattern;
}

class StrftimeReader {
 public:
  explicit StrftimeReader(bool twelveHours) : twelveHours_(twelveHours) {}

  std::vector<Piece> Read(std::string_view format) {
    std::size_t at = 0;
    while (at < format.size()) {
      if (format[at] != '%' || at + 1 == format.size()) {
        Literal(format[at++]);
        continue;
      }
      ++at;
      bool unpadded = false;
      while (at + 1 < format.size() &&
             std::string_view("EO-_0^#+").find(format[at]) != std::string_view::npos)
        unpadded |= format[at++] == '-';
      Code(format[at++], unpadded);
    }
    return std::move(pieces_);
  }

 private:
  void Literal(char c) {
    if (pieces_.empty() || pieces_.back().kind != PieceKind::kLiteral)
      pieces_.push_back({PieceKind::kLiteral, ""});
    pieces_.back().pattern += c;
  }

  void Code(char code, bool unpadded) {
    if (code == '%') return Literal('%');
    if (code == 'n' || code == 't') return Literal(' ');
    if (code == 'p' || code == 'P') {
      pieces_.push_back({PieceKind::kTime, twelveHours_ ? "AMPM" : ""});
    } else if (code == 'r') {
      pieces_.push_back({PieceKind::kTime, twelveHours_ ? "hh:nn:ss AMPM" : "hh:nn:ss"});
    } else if (code == 'Z' || code == 'z') {
      // The zone has no code of ours; being a time, it takes its literals with it.
      pieces_.push_back({PieceKind::kTime, ""});
    } else {
      for (const Conversion& known : kConversions)
        if (known.code == code)
          pieces_.push_back({known.kind, std::string(unpadded ? Unpadded(known.pattern) : known.pattern)});
    }
  }

  bool twelveHours_;
  std::vector<Piece> pieces_;
};

// Letters are put into quotes, since they would be codes; marks stand for themselves.
void AppendLiteral(std::string& pattern, std::string_view text) {
  bool quoted = false;
  for (const char c : text) {
    const bool letter =
        (AsciiLower(c) >= 'a' && AsciiLower(c) <= 'z') || static_cast<unsigned char>(c) >= 0x80;
    if (letter != quoted && (letter || c == '"' || c == '\\')) {
      pattern += '"';
      quoted = letter;
    }
    if (!letter && (c == '"' || c == '\\')) pattern += '\\';
    pattern += c;
  }
  if (quoted) pattern += '"';
}

void TrimEnd(std::string& text) {
  text.erase(text.find_last_not_of(" ,;-") + 1);
}
void TrimStart(std::string& text) {
  text.erase(0, text.find_first_not_of(" ,;-"));
}

std::string Joined(std::vector<Piece> pieces) {
  // What was left out at either end must not leave its blank.
  while (!pieces.empty() && pieces.back().pattern.empty()) {
    pieces.pop_back();
    if (!pieces.empty() && pieces.back().kind == PieceKind::kLiteral) TrimEnd(pieces.back().pattern);
  }
  if (pieces.size() > 1 && pieces[0].pattern.empty() && pieces[1].kind == PieceKind::kLiteral)
    TrimStart(pieces[1].pattern);
  std::string pattern;
  for (const Piece& piece : pieces) {
    if (piece.kind == PieceKind::kLiteral)
      AppendLiteral(pattern, piece.pattern);
    else
      pattern += piece.pattern;
  }
  return pattern;
}

// Text of the locale's own character set as UTF-8.
std::string ToUtf8(const char* text, const std::string& charset) {
  const std::string_view given(text);
  if (EqualIgnoringAsciiCase(charset, "UTF-8")) return DecodeLenient(given);
  const iconv_t converter = iconv_open("UTF-8", charset.c_str());
  if (converter == reinterpret_cast<iconv_t>(-1)) return DecodeLenient(given);
  std::string input(given);
  std::string output(given.size() * 4 + 16, '\0');
  char* from = input.data();
  char* to = output.data();
  std::size_t fromLeft = input.size();
  std::size_t toLeft = output.size();
  const std::size_t result = iconv(converter, &from, &fromLeft, &to, &toLeft);
  iconv_close(converter);
  if (result == static_cast<std::size_t>(-1)) return DecodeLenient(given);
  output.resize(output.size() - toLeft);
  return output;
}

template <std::size_t kSize, class Read>
void ReadNames(std::array<std::string, kSize>& names, const std::array<nl_item, kSize>& items, Read read) {
  for (std::size_t i = 0; i < kSize; ++i)
    if (std::string name = read(items[i]); !name.empty()) names[i] = std::move(name);
}

// A locale of the system by its name, for as long as it is used.
class Locale {
 public:
  // LC_CTYPE is taken with the rest: it tells the character set that the names are in.
  explicit Locale(const std::string& name)
      : handle_(newlocale(LC_ALL_MASK, name.c_str(), nullptr), &freelocale) {}
  bool Given() const { return handle_ != nullptr; }
  locale_t Get() const { return handle_.get(); }

 private:
  std::unique_ptr<std::remove_pointer_t<locale_t>, decltype(&freelocale)> handle_;
};

LocaleFormats FormatsOf(locale_t locale) {
  const std::string charset = nl_langinfo_l(CODESET, locale);
  const auto read = [&](nl_item item) { return ToUtf8(nl_langinfo_l(item, locale), charset); };
  LocaleFormats formats;
  ReadNames<7>(formats.dayNames, {DAY_1, DAY_2, DAY_3, DAY_4, DAY_5, DAY_6, DAY_7}, read);
  ReadNames<7>(formats.shortDayNames, {ABDAY_1, ABDAY_2, ABDAY_3, ABDAY_4, ABDAY_5, ABDAY_6, ABDAY_7}, read);
  ReadNames<12>(formats.monthNames,
                {MON_1, MON_2, MON_3, MON_4, MON_5, MON_6, MON_7, MON_8, MON_9, MON_10, MON_11, MON_12},
                read);
  ReadNames<12>(formats.shortMonthNames,
                {ABMON_1, ABMON_2, ABMON_3, ABMON_4, ABMON_5, ABMON_6, ABMON_7, ABMON_8, ABMON_9, ABMON_10,
                 ABMON_11, ABMON_12},
                read);
  const std::string am = read(AM_STR);
  const std::string pm = read(PM_STR);
  const bool twelveHours = !am.empty() && !pm.empty();
  if (twelveHours) {
    formats.am = am;
    formats.pm = pm;
  }
  const auto install = [](std::string& pattern, std::string read) {
    if (!read.empty()) pattern = std::move(read);
  };
  install(formats.shortDate, PatternFromStrftime(read(D_FMT), twelveHours));
  install(formats.longTime, PatternFromStrftime(read(T_FMT), twelveHours));
  install(formats.longDate, DatePatternFromStrftime(read(D_T_FMT), twelveHours));
  return formats;
}

}  // namespace

std::string PatternFromStrftime(std::string_view format, bool twelveHours) {
  return Joined(StrftimeReader(twelveHours).Read(format));
}

std::string DatePatternFromStrftime(std::string_view format, bool twelveHours) {
  const std::vector<Piece> pieces = StrftimeReader(twelveHours).Read(format);
  std::vector<Piece> date;
  bool afterTime = false;
  for (const Piece& piece : pieces) {
    if (piece.kind == PieceKind::kTime) {
      afterTime = true;
    } else if (piece.kind == PieceKind::kLiteral && afterTime) {
      // Belongs to the time before it. Where the pattern goes on with a date, one literal must remain.
      if (!date.empty() && date.back().kind != PieceKind::kLiteral) date.push_back(piece);
    } else {
      date.push_back(piece);
      afterTime = false;
    }
  }
  if (!date.empty() && date.front().kind == PieceKind::kLiteral) TrimStart(date.front().pattern);
  if (!date.empty() && date.back().kind == PieceKind::kLiteral) TrimEnd(date.back().pattern);
  return Joined(std::move(date));
}

LocaleFormats ReadLocale(const std::string& name) {
  Locale locale(name);
  if (!locale.Given()) locale = Locale("C");
  return locale.Given() ? FormatsOf(locale.Get()) : LocaleFormats();
}

void UseEnglishSystemMessages() {
  setlocale(LC_MESSAGES, "C");
}

SystemLocale ReadSystemLocale() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* name = std::getenv(variable);
    if (name == nullptr || *name == '\0') continue;
    SystemLocale read = {ReadLocale(name), ""};
    if (!Locale(name).Given())
      read.problem = std::string("The locale '") + name + "' (" + variable +
                     ") is not installed: dates and times are written as in the locale 'C'";
    return read;
  }
  return {ReadLocale("C"), ""};
}

}  // namespace zeb
