#include <gtest/gtest.h>

#include <cmath>

#include "text/SharedTime.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using std::chrono::local_days;

WallTime At(std::chrono::year_month_day date, std::chrono::milliseconds time = 0ms) {
  return local_days(date) + time;
}

class SharedTime : public testing::Test {
 protected:
  void TearDown() override { InstallLocale({}); }
};

TEST_F(SharedTime, EveryCode) {
  const WallTime moment = At(2026y / 3 / 4, 13h + 5min + 6s + 789ms);  // a Wednesday
  const struct {
    const char* pattern;
    const char* expected;
  } cases[] = {
      {"d dd ddd dddd", "4 04 Wed Wednesday"},
      {"ddddd|dddddd", "04/03/2026|04 March 2026"},
      {"ddddddd", "04 March 20264"},
      {"m mm mmm mmmm", "3 03 Mar March"},
      {"y yy yyy yyyy", "63 26 2026 2026"},
      {"q w ww", "1 4 10"},
      {"h hh n nn s ss", "13 13 5 05 6 06"},
      {"h:m hh:mm", "13:5 13:05"},
      {"hhmm hh \"x\" mm", "1305 13 x 05"},
      {"hh:mm:ss mm", "13:05:06 03"},    // a month again: the hour is not directly before it
      {"mm/dd hh:mmm", "03/04 13:Mar"},  // three letters are always a month
      {"hh am/pm", "01 pm"},
      {"h AM/PM A/P a/p AMPM", "1 PM P p PM"},
      {"hh \"am/pm\"", "13 am/pm"},  // quoted: no half-day mark
      {"ttttt tttt", "13:05:06 tttt"},
      {"c", "04/03/2026 13:05:06"},
      {"DDDD,DD MMM YYYY HH:NN", "Wednesday,04 Mar 2026 13:05"},
      {"dDdD,Dd mMm", "Wednesday,04 Mar"},
      {"\\d\\\\\\é\"dd\" \"open", "d\\édd open"},
      {"\\", "\\"},
      {"x-é/:", "x-é/:"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(FormatDateTime(moment, c.pattern), c.expected) << c.pattern;
}

TEST_F(SharedTime, HalvesOfTheDay) {
  const struct {
    std::chrono::milliseconds time;
    const char* expected;
  } cases[] = {{0ms, "12:00:00 AM"},
               {59min + 59s + 999ms, "12:59:59 AM"},
               {1h, "1:00:00 AM"},
               {11h + 59min, "11:59:00 AM"},
               {12h, "12:00:00 PM"},
               {13h, "1:00:00 PM"},
               {23h + 59min + 59s, "11:59:59 PM"}};
  for (const auto& c : cases)
    EXPECT_EQ(FormatDateTime(At(2026y / 1 / 1, c.time), "h:mm:ss AM/PM"), c.expected);
}

TEST_F(SharedTime, WeeksAndDaysOfTheYear) {
  const struct {
    std::chrono::year_month_day date;
    const char* expected;  // day of year, weekday, week, quarter
  } cases[] = {
      {2026y / 1 / 1, "1 5 1 1"},    {2026y / 1 / 3, "3 7 1 1"},      {2026y / 1 / 4, "4 1 2 1"},
      {2023y / 1 / 1, "1 1 1 1"},    {2023y / 12 / 31, "365 1 53 4"}, {2000y / 1 / 1, "1 7 1 1"},
      {2000y / 1 / 2, "2 1 2 1"},    {2000y / 2 / 29, "60 3 10 1"},   {2000y / 12 / 31, "366 1 54 4"},
      {2026y / 3 / 31, "90 3 14 1"}, {2026y / 4 / 1, "91 4 14 2"},    {1899y / 12 / 30, "364 7 52 4"}};
  for (const auto& c : cases) EXPECT_EQ(FormatDateTime(At(c.date), "y w ww q"), c.expected);
}

TEST_F(SharedTime, UsesTheInstalledLocale) {
  LocaleFormats german;
  german.shortDate = "dd.mm.yyyy";
  german.longDate = "dddd, d. mmmm yyyy";
  german.longTime = "hh:nn \"Uhr\"";
  german.monthNames[2] = "März";
  german.dayNames[3] = "Mittwoch";
  german.pm = "nachm.";
  InstallLocale(german);
  const WallTime moment = At(2026y / 3 / 4, 13h + 5min);
  EXPECT_EQ(GeneralDate(moment), "04.03.2026 13:05 Uhr");
  EXPECT_EQ(FormatDateTime(moment, "dddddd h AMPM"), "Mittwoch, 4. März 2026 1 nachm.");
  EXPECT_EQ(ShortDate(DayNumber(moment)), "04.03.2026");
  // A locale whose patterns refer to themselves ends all the same.
  german.shortDate = "ddddd c dd";
  InstallLocale(german);
  EXPECT_EQ(FormatDateTime(moment, "ddddd"), "  04");
}

TEST_F(SharedTime, XmlForm) {
  EXPECT_EQ(XmlDateTime(At(2026y / 3 / 4, 1h + 2min + 3s + 999ms)), "2026-03-04T01:02:03");
  EXPECT_EQ(XmlDateTime(46085, 3723.5F), "2026-03-04T01:02:03");
  const WallTime moment = At(2026y / 3 / 4, 1h + 2min + 3s + 7ms);
  EXPECT_EQ(Rfc3339(moment, 1h), "2026-03-04T01:02:03.007+01:00");
  EXPECT_EQ(Rfc3339(moment, -(3h + 30min)), "2026-03-04T01:02:03.007-03:30");
  EXPECT_EQ(Rfc3339(moment, 0s), "2026-03-04T01:02:03.007Z");
  EXPECT_EQ(XmlDateTime(46085, 86400.0F), "2026-03-05T00:00:00");
  EXPECT_EQ(XmlDateTime(46085, -5.0F), "2026-03-04T00:00:00");
  EXPECT_EQ(XmlDateTime(0, 3723.5F), "");
  EXPECT_EQ(XmlDateTime(2147483647, 0.0F), "9999-12-31T00:00:00");
  EXPECT_EQ(XmlDateTime(-2147483647, 0.0F), "0100-01-01T00:00:00");
  EXPECT_EQ(ShortDate(0), "");
  EXPECT_EQ(ShortDate(1), "31/12/1899");
}

TEST_F(SharedTime, TimesOfDay) {
  const struct {
    float seconds;
    const char* text;
  } cases[] = {{0.0F, "00:00:00"},      {59.99F, "00:00:59"},       {3600.0F, "01:00:00"},
               {86399.99F, "23:59:59"}, {90000.0F, "25:00:00"},     {-1.0F, "00:00:00"},
               {1e30F, "277777:46:40"}, {std::nanf(""), "00:00:00"}};
  for (const auto& c : cases) EXPECT_EQ(TimeText(c.seconds), c.text);
}

TEST_F(SharedTime, TheLastMomentOfASecondStaysInIt) {
  for (const auto whole : {0s, 1s, 43200s, 65536s, 86399s}) {
    const WallTime moment = At(2026y / 3 / 4, whole + 999ms);
    EXPECT_EQ(TimeText(SecondsOfDay(moment)), FormatDateTime(moment, "hh:nn:ss"));
    EXPECT_EQ(SecondsOfDay(At(2026y / 3 / 4, whole)), static_cast<float>(whole.count()));
  }
  EXPECT_EQ(SecondsOfDay(At(2026y / 3 / 4, 1500ms)), 1.5F);
  EXPECT_EQ(DayNumber(At(2026y / 3 / 4, 86399999ms)), 46085);
  EXPECT_EQ(DayNumber(At(1899y / 12 / 29, 1ms)), -1);
}

TEST_F(SharedTime, Differences) {
  EXPECT_EQ(SecondsBetween(46085, 10.0F, 46085, 11.5F), 1.5);
  EXPECT_EQ(SecondsBetween(46085, 86399.0F, 46086, 0.0F), 1.0);
  EXPECT_EQ(SecondsBetween(46086, 0.0F, 46085, 86399.0F), -1.0);
  EXPECT_EQ(SecondsBetween(-2147483647, 0.0F, 2147483647, 0.0F), 4294967294.0 * 86400);
}

TEST_F(SharedTime, ReadsTimeTexts) {
  const struct {
    const char* text;
    float seconds;
  } cases[] = {{"01:02:03", 3723.0F},
               {"3:45", 225.0F},
               {"00003:45", 225.0F},
               {"215", 215.0F},
               {" 1:00 ", 60.0F},
               {"90:00", 5400.0F},
               {"0:01.5", 1.5F},
               {"23:59:59", 86399.0F},
               {"1:60", 0.0F},
               {"1:60:00", 0.0F},
               {"", 0.0F},
               {":", 0.0F},
               {"1:", 0.0F},
               {":30", 0.0F},
               {"1:2:3:4", 0.0F},
               {"-1:00", 0.0F},
               {"1:+2", 0.0F},
               {"abc", 0.0F},
               {"1.", 0.0F},
               {"1:2x", 0.0F},
               {"99999999999:00", 0.0F}};
  for (const auto& c : cases) EXPECT_EQ(SecondsFromTimeText(c.text), c.seconds) << c.text;
}

}  // namespace
}  // namespace zeb
