#include <gtest/gtest.h>

#include "platform/posix/SystemLocale.h"

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

}  // namespace
}  // namespace zeb
