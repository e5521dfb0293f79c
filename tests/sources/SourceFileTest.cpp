#include <gtest/gtest.h>

#include "platform/common/LibxmlMarkup.h"
#include "sources/SourceFile.h"

namespace zeb {
namespace {

SourceFile File(std::int32_t type, std::string_view bytes, std::string_view definitions = "",
                Markup* markup = nullptr) {
  return {type, bytes, definitions, "Generic.ini", markup, 46000};
}

TEST(SourceFile, IsDescribedByItsItems) {
  EXPECT_EQ(DescribeSourceFile(File(kSourceDallet50, "TITLE=Waterloo\nARTIST=ABBA\nECH=01:02:03")).Value(),
            "Current: Waterloo by ABBA, at 01:02:03");
  EXPECT_EQ(DescribeSourceFile(File(kSourceDallet50, "")).Value(), "Current: (no title)");
  LibxmlMarkup markup;
  const auto xml = [&](const std::string& bytes) {
    return DescribeSourceFile(File(kSourceDallet51, bytes, "", &markup)).Value();
  };
  EXPECT_EQ(xml("<BroadcastMonitor><Next><titleName>a&#10;b</titleName></Next></BroadcastMonitor>"),
            "Current: nothing\nNext 1: a b");
  const std::string title(150, 'x');
  EXPECT_EQ(
      xml("<BroadcastMonitor><Current><titleName>" + title + "</titleName></Current></BroadcastMonitor>"),
      "Current: " + title.substr(0, 100));
}

TEST(SourceFile, SaysHowManyItemsItDoesNotList) {
  LibxmlMarkup markup;
  for (const auto& [count, last] :
       {std::pair<int, std::string>{10, "Next 10: t"}, {11, "and 1 more"}, {70, "and 60 more"}}) {
    std::string bytes = "<BroadcastMonitor>";
    for (int i = 0; i < count; ++i) bytes += "<Next><titleName>t</titleName></Next>";
    const std::string text =
        DescribeSourceFile(File(kSourceDallet51, bytes + "</BroadcastMonitor>", "", &markup)).Value();
    EXPECT_EQ(text.substr(text.rfind('\n') + 1), last) << count;
  }
}

TEST(SourceFile, SaysWhyItCannotBeRead) {
  EXPECT_EQ(DescribeSourceFile(File(kSourceDallet51, "<BroadcastMonitor/>")).Reason(),
            "there is no XML reader");
  EXPECT_EQ(DescribeSourceFile(File(kSourceGenericText, "x")).Reason(),
            "'Generic.ini': its section ZEBSource defines no field");
  EXPECT_EQ(DescribeSourceFile(File(0, "x")).Reason(), "source type 0 is not that of a file");
}

}  // namespace
}  // namespace zeb
