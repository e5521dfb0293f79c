#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "platform/posix/StrftimePatterns.h"
#include "platform/system/SystemLocale.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

TEST(SystemLocale, TranslatesPatterns) {
  const struct {
    const char* format;
    bool twelveHours;
    const char* pattern;
  } cases[] = {
      {"%d.%m.%Y", false, "dd.mm.yyyy"},
      {"%m/%d/%y", false, "mm/dd/yy"},
      {"%H:%M:%S", false, "hh:nn:ss"},
      {"%T", true, "hh:nn:ss"},
      {"%r", true, "hh:nn:ss AMPM"},
      {"%I:%M:%S %p", true, "hh:nn:ss AMPM"},
      {"%I:%M:%S %p", false, "hh:nn:ss"},  // no texts for the halves: 24 hours, and no blank left over
      {"%Z %H:%M", false, "hh:nn"},
      {"%-d.%-m.%Y", false, "d.m.yyyy"},
      {"%Ey-%Om", false, "yy-mm"},
      {"%d de %B", false, "dd \"de \"mmmm"},
      {"%Y年%m月", false, "yyyy\"年\"mm\"月\""},
      {R"(kl. %H "x\)", false, R"("kl. "hh \""x"\\)"},  // quotes and backslashes are escaped
      {"100%%", false, "100%"},
      {"%", false, "%"},
      {"", false, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(PatternFromStrftime(c.format, c.twelveHours), c.pattern) << c.format;
}

TEST(SystemLocale, LongDateLeavesTheTimeOut) {
  const struct {
    const char* format;
    const char* pattern;
  } cases[] = {
      {"%a %b %e %H:%M:%S %Y", "ddd mmm d yyyy"},
      {"%a %d %b %Y %T %Z", "ddd dd mmm yyyy"},
      {"%a %d %b %Y, %r", "ddd dd mmm yyyy"},
      {"%Y年%m月%d日 %H時%M分%S秒", "yyyy\"年\"mm\"月\"dd\"日\""},
      {"%T %d/%m/%Y", "dd/mm/yyyy"},
      {"%T", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(DatePatternFromStrftime(c.format, false), c.pattern) << c.format;
}

TEST(SystemLocale, LocaleCAndUnknownOnes) {
  const WallTime moment{std::chrono::local_days(2026y / 3 / 4) + 13h + 5min + 6s};
  for (const char* name : {"C", "POSIX", "no_SUCH.locale"}) {
    const LocaleFormats formats = ReadLocale(name);
    EXPECT_EQ(FormatDateTime(moment, formats.shortDate), "03/04/26") << name;
    EXPECT_EQ(FormatDateTime(moment, formats.longDate), "Wed Mar 4 2026") << name;
    EXPECT_EQ(FormatDateTime(moment, formats.longTime), "13:05:06") << name;
    EXPECT_EQ(formats.monthNames[2], "March");
    EXPECT_EQ(formats.shortDayNames[0], "Sun");
  }
}

// Sets a variable of the environment, and puts the former value back.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* now = std::getenv(name)) former_ = now;
    value != nullptr ? setenv(name, value, 1) : unsetenv(name);
  }
  ~Variable() { former_ ? setenv(name_, former_->c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::optional<std::string> former_;
};

TEST(SystemLocale, NamesTheLocaleThatIsNotInstalled) {
  const std::string end = " is not installed: dates and times are written as in the locale 'C'";
  const struct {
    const char *all, *time, *lang;
    std::string problem;
  } cases[] = {
      {nullptr, nullptr, nullptr, ""},
      {"", "", "C.UTF-8", ""},
      {nullptr, "POSIX", "no_SUCH", ""},  // LANG is not asked
      {nullptr, nullptr, "no_SUCH.UTF-8", "The locale 'no_SUCH.UTF-8' (LANG)" + end},
      {nullptr, "xx_YY", "C", "The locale 'xx_YY' (LC_TIME)" + end},
      {"zz", "C", "C", "The locale 'zz' (LC_ALL)" + end},
  };
  for (const auto& c : cases) {
    const Variable all("LC_ALL", c.all), time("LC_TIME", c.time), lang("LANG", c.lang);
    const SystemLocale read = ReadSystemLocale();
    EXPECT_EQ(read.problem, c.problem);
    EXPECT_EQ(read.formats.monthNames[2], "March");
  }
}

}  // namespace
}  // namespace zeb
