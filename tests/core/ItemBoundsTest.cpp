#include <gtest/gtest.h>

#include "core/ItemBounds.h"
#include "tests/core/ItemTexts.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

TEST(ItemBounds, CutsBehindTheLastWholeCharacter) {
  const std::string full(kMaxFieldBytes, 'x');
  const struct {
    std::string text;
    std::size_t before, after;
  } cases[] = {{"", 0, 0},
               {full, 0, kMaxFieldBytes},
               {full + "x", kMaxFieldBytes + 1, kMaxFieldBytes},
               {full + "é", kMaxFieldBytes + 2, kMaxFieldBytes},
               {full.substr(1) + "é", kMaxFieldBytes + 1, kMaxFieldBytes - 1},
               {full.substr(2) + "日", kMaxFieldBytes + 1, kMaxFieldBytes - 2},
               {full.substr(3) + "😀", kMaxFieldBytes + 1, kMaxFieldBytes - 3},
               {full.substr(4) + "😀", 0, kMaxFieldBytes}};
  for (const auto& c : cases) {
    std::string text = c.text;
    EXPECT_EQ(CutToBound(text), c.before);
    EXPECT_EQ(text.size(), c.after);
    EXPECT_TRUE(IsValidUtf8(text));
  }
}

// Every text that can be published or compared, whatever it is called.
TEST(ItemBounds, EveryTextOfAnItemHasOne) {
  clsZEBItemInfo item;
  const std::string huge(kMaxFieldBytes + 5, 'x');
  ItemFields& f = item.Edit();
  for (std::string* text : TextsOf(f)) *text = huge;
  const clsZEBItemInfo shared = item;  // who else holds it keeps what was sent
  const std::vector<Excess> excesses = CutToBounds(item);
  EXPECT_EQ(excesses.size(), 35u);
  EXPECT_EQ(ExcessText(excesses), "ItemName has 65541 bytes and is cut to 65536, as are 34 other fields");
  EXPECT_EQ(ExcessText({excesses[0]}), "ItemName has 65541 bytes and is cut to 65536");
  EXPECT_EQ(ExcessText({}), "");
  for (const Excess& excess : excesses) {
    EXPECT_EQ(excess.bytes, huge.size());
    const bool published = !excess.field.starts_with("CustomField");
    EXPECT_EQ(item.GetElementByName(excess.field, true).size(), published ? kMaxFieldBytes : 0)
        << excess.field;
  }
  EXPECT_EQ(item->CustomField3.size(), kMaxFieldBytes);
  EXPECT_EQ(shared->ItemName.size(), huge.size());
  EXPECT_TRUE(CutToBounds(item).empty());
}

TEST(ItemBounds, ListsEndAndNamesThatOpenNoFileAreNotTaken) {
  clsZEBItemInfo item;
  EXPECT_FALSE(item.AddPictureFile(std::string(kMaxFileNameBytes + 1, 'x')));
  EXPECT_TRUE(item.AddPictureFile(std::string(kMaxFileNameBytes, 'x')));
  for (int i = 0; i < 300; ++i) {
    item.AddPictureFile("p" + std::to_string(i));
    item.AddAdditionalFile("f" + std::to_string(i));
  }
  EXPECT_EQ(item.NumberPictures(), 255);
  EXPECT_EQ(item.NumberAdditionalFiles(), 255);
}

}  // namespace
}  // namespace zeb
