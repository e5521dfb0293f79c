#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "text/Numbers.h"

namespace zeb {
namespace {

TEST(Numbers, LeadingNumbers) {
  const struct {
    const char* text;
    std::int32_t integer;
    double number;
  } cases[] = {
      {"", 0, 0},
      {"  42abc", 42, 42},
      {"-7.5e1x", -7, -75},
      {"+3", 3, 3},
      {"+-3", 0, 0},
      {"--3", 0, 0},
      {"-", 0, 0},
      {".5", 0, 0.5},
      {"-.5", 0, -0.5},
      {".", 0, 0},
      {"1e", 1, 1},
      {"1.2.3", 1, 1.2},
      {"\t1", 0, 0},
      {"inf", 0, 0},
      {"nan", 0, 0},
      {"- 5", 0, 0},
      {"2147483648", 2147483647, 2147483648.0},
      {"-2147483649", -2147483648, -2147483649.0},
      {"99999999999999999999", 2147483647, 1e20},
      {"1e999", 1, std::numeric_limits<double>::max()},
      {"-1e999", -1, std::numeric_limits<double>::lowest()},
      {"1e-999", 1, 0},
      {"0.00001e400", 0, std::numeric_limits<double>::max()},
      {"1000000e-400", 1000000, 0},
      {"1e99999999999", 1, std::numeric_limits<double>::max()},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(LeadingInteger(c.text), c.integer) << c.text;
    EXPECT_EQ(LeadingNumber(c.text), c.number) << c.text;
    EXPECT_FALSE(std::signbit(LeadingNumber(c.text)) && c.number == 0) << c.text;
  }
}

TEST(Numbers, LeadingDigits) {
  EXPECT_EQ(LeadingDigits("12x"), 12);
  EXPECT_EQ(LeadingDigits("-1"), 0);
  EXPECT_EQ(LeadingDigits(" 1"), 0);
  EXPECT_EQ(LeadingDigits(""), 0);
  EXPECT_EQ(LeadingDigits("9999999999"), 2147483647);
}

TEST(Numbers, PlainDecimalText) {
  const struct {
    float number;
    const char* text;
  } cases[] = {{0.0F, "0"},
               {-0.0F, "0"},
               {-3.5F, "-3.5"},
               {0.1F, "0.1"},
               {100.0F, "100"},
               {215.25F, "215.25"},
               {16777216.0F, "16777216"},
               {1e-7F, "0.0000001"},
               {std::numeric_limits<float>::infinity(), "0"},
               {std::numeric_limits<float>::quiet_NaN(), "0"}};
  for (const auto& c : cases) EXPECT_EQ(PlainNumber(c.number), c.text);
  EXPECT_EQ(PlainNumber(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(PaddedNumber(7, 3), "007");
  EXPECT_EQ(PaddedNumber(-7, 3), "-007");
  EXPECT_EQ(PaddedNumber(1234, 3), "1234");
}

TEST(Numbers, FloatsReadBackAsTheSame) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> exponent(-44, 38);
  for (int i = 0; i < 5000; ++i) {
    const float number = std::pow(10.0F, exponent(random)) * (i % 2 == 0 ? 1.0F : -1.0F);
    const std::string text = PlainNumber(number);
    ASSERT_EQ(text.find_first_not_of("-.0123456789"), std::string::npos) << text;
    ASSERT_EQ(static_cast<float>(LeadingNumber(text)), number) << text;
  }
  EXPECT_EQ(static_cast<float>(LeadingNumber(PlainNumber(std::numeric_limits<float>::denorm_min()))),
            std::numeric_limits<float>::denorm_min());
}

TEST(Numbers, TrimsBlanksOnly) {
  EXPECT_EQ(TrimBlanks("  a b "), "a b");
  EXPECT_EQ(TrimBlanks("   "), "");
  EXPECT_EQ(TrimBlanks(""), "");
  EXPECT_EQ(TrimBlanks("\ta\n"), "\ta\n");
}

}  // namespace
}  // namespace zeb
