#include <gtest/gtest.h>

#include "text/MomentText.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

// As RFC 3339 of the same moment; "" for none, and without an offset where none was written.
std::string Read(std::string_view text) {
  const auto moment = ReadMomentText(text);
  if (!moment) return "";
  return moment->utcOffset ? Rfc3339(moment->wall, *moment->utcOffset) : XmlDateTime(moment->wall);
}

TEST(MomentTextTest, ReadsWhatPeopleAndProgramsWrite) {
  struct Case {
    std::string_view text, moment;
  };
  const Case cases[] = {
      {"2026-11-24 08:14", "2026-11-24T08:14:00"},
      {"2026-11-24T08:14", "2026-11-24T08:14:00"},
      {"2026-11-24 23:59:59", "2026-11-24T23:59:59"},
      {"2024-02-29 00:00", "2024-02-29T00:00:00"},
      {"2026-11-24T08:14:03Z", "2026-11-24T08:14:03.000Z"},
      {"2026-11-24t08:14:03z", "2026-11-24T08:14:03.000Z"},
      {"2026-11-24T08:14:03.25+01:00", "2026-11-24T08:14:03.250+01:00"},
      {"2026-11-24 08:14:03.123456789-09:30", "2026-11-24T08:14:03.123-09:30"},
      {"2026-11-24 08:14-00:00", "2026-11-24T08:14:00.000Z"},
      {"2026-02-29 00:00", ""},
      {"2026-13-01 00:00", ""},
      {"2026-11-24 24:00", ""},
      {"2026-11-24 08:60", ""},
      {"2026-11-24 08:14:60", ""},
      {"2026-11-24 08:14:03.", ""},
      {"2026-11-24 08:14:", ""},
      {"2026-11-24 08:14 ", ""},
      {" 2026-11-24 08:14", ""},
      {"2026-11-24", ""},
      {"2026-11-24 8:14", ""},
      {"2026-11-24  08:14", ""},
      {"2026-11-24 08:14+1:00", ""},
      {"2026-11-24 08:14+25:00", ""},
      {"2026-11-24 08:14+01:00Z", ""},
      {"-026-11-24 08:14", ""},
      {"24.11.2026 08:14", ""},
      {"", ""},
  };
  for (const Case& c : cases) EXPECT_EQ(Read(c.text), c.moment) << c.text;
}

}  // namespace
}  // namespace zeb
