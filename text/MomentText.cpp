#include "text/MomentText.h"

namespace zeb {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes things off the front of a text; once something was missing, it fails for good.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  int Digits(std::size_t count) {
    int number = 0;
    if (rest_.size() < count) return Fail();
    for (std::size_t i = 0; i < count; ++i) {
      if (!IsDigit(rest_[i])) return Fail();
      number = number * 10 + (rest_[i] - '0');
    }
    rest_.remove_prefix(count);
    return number;
  }
  bool Takes(std::string_view any) {
    if (rest_.empty() || any.find(rest_.front()) == std::string_view::npos) return false;
    taken_ = rest_.front();
    rest_.remove_prefix(1);
    return true;
  }
  void Needs(std::string_view any) {
    if (!Takes(any)) Fail();
  }
  char taken() const { return taken_; }
  // Thousandths; what is finer is left out.
  int Fraction() {
    int number = 0, digits = 0;
    for (; !rest_.empty() && IsDigit(rest_.front()); rest_.remove_prefix(1), ++digits)
      if (digits < 3) number = number * 10 + (rest_.front() - '0');
    if (digits == 0) return Fail();
    for (; digits < 3; ++digits) number *= 10;
    return number;
  }
  bool AtEnd() const { return good_ && rest_.empty(); }

 private:
  int Fail() {
    good_ = false;
    return 0;
  }
  std::string_view rest_;
  char taken_ = 0;
  bool good_ = true;
};

}  // namespace

std::optional<WrittenMoment> ReadMomentText(std::string_view text) {
  using namespace std::chrono;
  Scanner scan(text);
  const int year = scan.Digits(4);
  scan.Needs("-");
  const int month = scan.Digits(2);
  scan.Needs("-");
  const int day = scan.Digits(2);
  scan.Needs(" Tt");
  const int hour = scan.Digits(2);
  scan.Needs(":");
  const int minute = scan.Digits(2);
  int second = 0, thousandths = 0;
  if (scan.Takes(":")) {
    second = scan.Digits(2);
    if (scan.Takes(".")) thousandths = scan.Fraction();
  }
  WrittenMoment moment;
  int offsetHour = 0, offsetMinute = 0;
  if (scan.Takes("Zz")) {
    moment.utcOffset = seconds(0);
  } else if (scan.Takes("+-")) {
    const int sign = scan.taken() == '-' ? -1 : 1;
    offsetHour = scan.Digits(2);
    scan.Needs(":");
    offsetMinute = scan.Digits(2);
    moment.utcOffset = sign * (hours(offsetHour) + minutes(offsetMinute));
  }
  const year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                            std::chrono::day(static_cast<unsigned>(day))};
  if (!scan.AtEnd() || !date.ok() || hour > 23 || minute > 59 || second > 59 || offsetHour > 23 ||
      offsetMinute > 59)
    return std::nullopt;
  moment.wall = WallTime(local_days(date)) + hours(hour) + minutes(minute) + seconds(second) +
                milliseconds(thousandths);
  return moment;
}

}  // namespace zeb
