#include <gtest/gtest.h>

#include "dialogs/frmManualZEB.h"

namespace zeb {
namespace {

TEST(ManualEntry, CopiesACartByTheServicesLines) {
  struct Carts : CartStore {
    std::optional<Cart> Find(std::int32_t number) override {
      if (number == 14) return Cart{{"", "", ""}, "CField1=x"};
      return number == 12 ? std::optional<Cart>(Cart{{"one", "two", "three"}, "StNotes=\"n {22}o{22}\""})
                          : std::nullopt;
    }
  } carts;
  ServiceSettings settings;
  settings.CartItemNameLine = 3;
  ManualEntry entry;
  for (const char* none : {"", "x", "0", "-12", "12x", "99999999999", "13"}) {
    entry.cartNumber = none;
    EXPECT_FALSE(CopyCart(entry, carts, settings)) << none;
  }
  EXPECT_EQ(entry.itemName, "");
  entry.cartNumber = " 12 ";
  EXPECT_TRUE(CopyCart(entry, carts, settings));
  EXPECT_EQ(entry.itemName + "/" + entry.artist + "/" + entry.notes, "three/two and three/n \"o\"");
  EXPECT_EQ(ManualItemMessage(entry),
            "SET_CURRENT_ITEM  IType=7 HDRef=12 ITitle=\"three\" AName1=\"two and three\" "
            "StNotes=\"n {22}o{22}\"");
  entry.cartNumber = "14";  // what a cart does not have stays
  EXPECT_TRUE(CopyCart(entry, carts, settings));
  EXPECT_EQ(entry.itemName, "three");
}

TEST(ManualEntry, SendsNoPresenterOrShowWithoutAReference) {
  ManualEntry entry;
  entry.presenterFullName = "Nell";
  entry.showTitle = "Drive";
  EXPECT_EQ(ManualMessages(entry).size(), 1u);
  entry.presenterReference = entry.showReference = "1";
  EXPECT_EQ(ManualMessages(entry).size(), 3u);
}

}  // namespace
}  // namespace zeb
