// What a label holds, as the server counts it.
#include <gtest/gtest.h>

#include "outputs/labels/LabelWords.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

std::string Times(std::string_view piece, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += piece;
  return all;
}

TEST(LabelWords, ALabelIsCutWhereItNoLongerFits) {
  struct Case {
    std::string label;
    std::string fits;
  };
  const Case cases[] = {
      {"", ""},
      {Times("x", 128), Times("x", 128)},
      {Times("x", 173), Times("x", 128)},
      {Times("é", 173), Times("é", 128)},  // one byte each in EBU Latin
      {Times("日", 43), Times("日", 42)},
      {Times("é", 100) + "日", Times("é", 100)},  // the one that EBU Latin lacks makes all of it UTF-8
      {Times("é", 60) + Times("日", 10), Times("é", 60) + "日日"},
  };
  for (const Case& c : cases) {
    const std::string_view fits = FittingLabel(c.label);
    EXPECT_EQ(fits, c.fits);
    EXPECT_LE(LabelBytes(fits), kMaxLabelBytes);
    if (fits.size() < c.label.size()) {
      const std::string_view more = FirstCharacters(c.label, CountCharacters(fits) + 1);
      EXPECT_GT(LabelBytes(more), kMaxLabelBytes);
    }
  }
}

TEST(LabelWords, LinesAreTakenApart) {
  EXPECT_EQ(FirstWord("LABEL TEXT=x"), "LABEL");
  EXPECT_EQ(AfterFirstWord("LABEL TEXT=x"), "TEXT=x");
  EXPECT_EQ(FirstWord("OK"), "OK");
  EXPECT_EQ(AfterFirstWord("OK"), "");
  EXPECT_EQ(LabelParameter("TEXT", "a\"\r\nLOGOFF"), " TEXT=\"a{22}{0D}{0A}LOGOFF\"");
}

}  // namespace
}  // namespace zeb
