// FormatDateTime of text/SharedTime.h: the language of date patterns.
#include <algorithm>

#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

using std::chrono::days;

enum class TokenKind { kEnd, kLiteral, kCode, kHalfDay };

// A piece of a pattern. Of a code, `letter` in small letters and how often it stands there; of a half-day
// mark and a literal, the text.
struct Token {
  TokenKind kind = TokenKind::kEnd;
  char letter = 0;
  std::size_t count = 0;
  std::string_view text;
};

// The longest run of each letter that is one code; 0: no code.
std::size_t LongestCode(char letter) {
  switch (letter) {
    case 'd':
      return 6;
    case 't':
      return 5;
    case 'm':
    case 'y':
      return 4;
    case 'w':
    case 'h':
    case 'n':
    case 's':
      return 2;
    case 'q':
    case 'c':
      return 1;
    default:
      return 0;
  }
}

// The half-day mark at the start of the text: "AM/PM", "A/P" or "AMPM" in any case, or "".
std::string_view HalfDayMark(std::string_view text) {
  if (text.empty() || AsciiLower(text[0]) != 'a') return {};
  for (const std::string_view mark : {"AM/PM", "A/P", "AMPM"})
    if (EqualIgnoringAsciiCase(text.substr(0, mark.size()), mark)) return text.substr(0, mark.size());
  return {};
}

class Scanner {
 public:
  explicit Scanner(std::string_view pattern) : rest_(pattern) {}

  Token Next() {
    if (rest_.empty()) return {};
    if (rest_[0] == '"') return Quoted();
    if (rest_[0] == '\\' && rest_.size() > 1) {
      rest_.remove_prefix(1);
      return Take(TokenKind::kLiteral, 1);  // further bytes of its character follow as literals
    }
    if (const std::string_view mark = HalfDayMark(rest_); !mark.empty())
      return Take(TokenKind::kHalfDay, mark.size());
    const char letter = AsciiLower(rest_[0]);
    const std::size_t longest = LongestCode(letter);
    std::size_t count = 1;
    while (count < longest && count < rest_.size() && AsciiLower(rest_[count]) == letter) ++count;
    // Of the "t"s only five in a row are a code.
    if (longest == 0 || (letter == 't' && count < longest)) return Take(TokenKind::kLiteral, count);
    Token token = Take(TokenKind::kCode, count);
    token.letter = letter;
    token.count = count;
    return token;
  }

 private:
  Token Take(TokenKind kind, std::size_t size) {
    Token token{kind, 0, 0, rest_.substr(0, size)};
    rest_.remove_prefix(size);
    return token;
  }
  // An open quote runs to the end.
  Token Quoted() {
    rest_.remove_prefix(1);
    const std::size_t end = std::min(rest_.find('"'), rest_.size());
    Token token = Take(TokenKind::kLiteral, end);
    if (!rest_.empty()) rest_.remove_prefix(1);
    return token;
  }

  std::string_view rest_;
};

bool HasHalfDayMark(std::string_view pattern) {
  if (pattern.find_first_of("aA") == std::string_view::npos) return false;
  Scanner scanner(pattern);
  for (Token token = scanner.Next(); token.kind != TokenKind::kEnd; token = scanner.Next())
    if (token.kind == TokenKind::kHalfDay) return true;
  return false;
}

class Formatter {
 public:
  explicit Formatter(WallTime moment)
      : day_(std::chrono::floor<days>(moment)),
        date_(day_),
        weekday_(std::chrono::weekday(day_).c_encoding()),
        time_(std::chrono::floor<std::chrono::seconds>(moment - day_)) {}

  std::string Format(std::string_view pattern) {
    Run(pattern, Whose::kCallers);
    return std::move(result_);
  }

 private:
  // The locale's own patterns may not refer to themselves: there, the codes for them are passed over.
  enum class Whose { kCallers, kLocales };
  void Run(std::string_view pattern, Whose whose) {
    const bool twelveHours = HasHalfDayMark(pattern);
    bool afterHour = false;
    Scanner scanner(pattern);
    for (Token token = scanner.Next(); token.kind != TokenKind::kEnd; token = scanner.Next()) {
      if (token.kind == TokenKind::kLiteral) {
        result_ += token.text;
        continue;
      }
      if (token.kind == TokenKind::kHalfDay) {
        HalfDay(token.text);
      } else if (token.letter == 'h') {
        Hour(token.count, twelveHours);
      } else if (token.letter == 'm' && token.count <= 2 && afterHour) {
        Number(time_.minutes().count(), token.count);
      } else if (IsLocalePattern(token)) {
        if (whose == Whose::kCallers) LocalePattern(token);
      } else {
        DateOrTimeCode(token);
      }
      afterHour = token.letter == 'h';
    }
  }

  static bool IsLocalePattern(const Token& token) {
    return token.letter == 'c' || token.letter == 't' || (token.letter == 'd' && token.count > 4);
  }

  void LocalePattern(const Token& token) {
    const LocaleFormats& locale = CurrentLocale();
    if (token.letter == 't') return Run(locale.longTime, Whose::kLocales);
    if (token.letter == 'd')
      return Run(token.count == 5 ? locale.shortDate : locale.longDate, Whose::kLocales);
    Run(locale.shortDate, Whose::kLocales);
    result_ += ' ';
    Run(locale.longTime, Whose::kLocales);
  }

  void DateOrTimeCode(const Token& token) {
    switch (token.letter) {
      case 'd':
        return Day(token.count);
      case 'm':
        return Month(token.count);
      case 'y':
        return Year(token.count);
      case 'w':
        return Number(token.count == 1 ? weekday_ + 1 : WeekOfYear(), 1);
      case 'q':
        return Number((static_cast<unsigned>(date_.month()) + 2) / 3, 1);
      case 'n':
        return Number(time_.minutes().count(), token.count);
      case 's':
        return Number(time_.seconds().count(), token.count);
      default:
        return;
    }
  }

  void Number(std::int64_t number, std::size_t width) {
    result_ += PaddedNumber(number, static_cast<int>(width));
  }

  void Day(std::size_t count) {
    const LocaleFormats& locale = CurrentLocale();
    if (count <= 2)
      Number(static_cast<unsigned>(date_.day()), count);
    else
      result_ += count == 3 ? locale.shortDayNames[weekday_] : locale.dayNames[weekday_];
  }

  void Month(std::size_t count) {
    const LocaleFormats& locale = CurrentLocale();
    const unsigned month = static_cast<unsigned>(date_.month());
    if (count <= 2)
      Number(month, count);
    else
      result_ += count == 3 ? locale.shortMonthNames[month - 1] : locale.monthNames[month - 1];
  }

  // Three letters are meant as the year in full.
  void Year(std::size_t count) {
    const int year = static_cast<int>(date_.year());
    if (count == 1)
      Number(DayOfYear() + 1, 1);
    else
      Number(count == 2 ? (year % 100 + 100) % 100 : year, count == 2 ? 2 : 4);
  }

  void Hour(std::size_t count, bool twelveHours) {
    auto hour = time_.hours().count();
    if (twelveHours) hour = hour % 12 == 0 ? 12 : hour % 12;
    Number(hour, count);
  }

  // "AMPM" is the locale's text; the others follow the case of the pattern.
  void HalfDay(std::string_view mark) {
    const bool afternoon = time_.hours().count() >= 12;
    if (mark.size() == 4)
      result_ += afternoon ? CurrentLocale().pm : CurrentLocale().am;
    else if (mark.size() == 5)
      result_ += afternoon ? mark.substr(3) : mark.substr(0, 2);
    else
      result_ += afternoon ? mark[2] : mark[0];
  }

  std::int64_t DayOfYear() const {
    return (day_ - std::chrono::local_days(date_.year() / std::chrono::January / 1)).count();
  }

  std::int64_t WeekOfYear() const {
    const std::int64_t dayOfYear = DayOfYear();
    const std::int64_t weekdayOfFirst = (weekday_ - dayOfYear % 7 + 7) % 7;
    return (dayOfYear + weekdayOfFirst) / 7 + 1;
  }

  std::chrono::local_days day_;
  std::chrono::year_month_day date_;
  unsigned weekday_;  // 0 is Sunday
  std::chrono::hh_mm_ss<std::chrono::seconds> time_;
  std::string result_;
};

}  // namespace

std::string FormatDateTime(WallTime moment, std::string_view pattern) {
  return Formatter(moment).Format(pattern);
}

}  // namespace zeb
