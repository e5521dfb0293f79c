// Text between the program and Windows, and Windows' words for errors.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"

namespace zeb {
namespace {

TEST(WideText, GoesThereAndBack) {
  const std::string all = std::string("a\0b", 3) + "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xB5";
  EXPECT_EQ(Wide(all), std::wstring(L"a\0b\u00E9\u20AC\xD83C\xDFB5", 7));
  EXPECT_EQ(Narrow(Wide(all)), all);
  EXPECT_EQ(Wide(""), L"");
  EXPECT_EQ(Narrow(L""), "");
}

TEST(WideText, PutsTheReplacementCharacterForWhatIsNoText) {
  EXPECT_EQ(Wide("a\xFF"
                 "b"),
            L"a\uFFFDb");
  EXPECT_EQ(Narrow(L"a\xD83C"
                   L"b\xDFB5"),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
}

TEST(SystemError, IsOneLineWithoutFullStop) {
  for (const unsigned long code : {ERROR_ACCESS_DENIED, ERROR_DISK_FULL, ERROR_MORE_DATA}) {
    const std::string text = SystemErrorText(code);
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos) << text;
    EXPECT_FALSE(text.empty());
    EXPECT_NE(text.back(), '.');
    EXPECT_NE(text.back(), ' ');
  }
  EXPECT_EQ(SystemErrorText(0xE1234567), "error 3777185127");
}

}  // namespace
}  // namespace zeb
