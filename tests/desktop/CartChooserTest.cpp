#include <QLineEdit>
#include <QListWidget>
#include <memory>

#include "app/desktop/dialogs/CartChooser.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/WholeTree.h"

namespace zeb {
namespace {

class CartChooserTest : public DesktopTest {
 protected:
  void SetUp() override {
    carts.carts[12] = {{"Waterloo", "ABBA", ""}, ""};
    carts.carts[7] = {{"Dancing in the Dark", "Springsteen", ""}, ""};
    chooser = std::make_unique<CartChooser>(desk);
    chooser->Input()->setAccessibleName("Cart");
    chooser->show();
    chooser->onChosen = [this](const std::string& number) { chosen += number + ";"; };
    Settle();
  }
  void TearDown() override { chooser.reset(); }
  QListWidget* List() { return dynamic_cast<QListWidget*>(Named("Carts")); }

  std::unique_ptr<CartChooser> chooser;
  std::string chosen;
};

TEST_F(CartChooserTest, ACartIsFoundByItsLines) {
  Press("Choose...", chooser.get());
  ASSERT_NE(List(), nullptr);
  ASSERT_EQ(List()->count(), 2);
  EXPECT_EQ(List()->item(0)->text(), "7 – Dancing in the Dark – Springsteen");
  Type("CartSearch", "abba");
  ASSERT_EQ(List()->count(), 1);
  Press("OK", List()->window());
  EXPECT_EQ(chooser->Text(), "12");
  EXPECT_EQ(chosen, "12;");
}

TEST_F(CartChooserTest, ANumberMayBeTyped) {
  chooser->SetText("");
  chooser->Input()->setText("99");
  EXPECT_EQ(chooser->Text(), "99");
  EXPECT_EQ(chosen, "");
}

TEST_F(CartChooserTest, NothingIsChosenFromAListWithoutCarts) {
  carts.carts.clear();
  Press("Choose...", chooser.get());
  EXPECT_EQ(BoxText(), "There is no list of carts; the number can be typed");
}

TEST_F(CartChooserTest, SoManyCartsAreListedAndNoMore) {
  for (int i = 100; i < 100 + 2 * CartChooser::kMostListed; ++i) carts.carts[i] = {{"Cart", "", ""}, ""};
  Press("Choose...", chooser.get());
  EXPECT_EQ(List()->count(), CartChooser::kMostListed);
}

TEST_F(CartChooserTest, TheListIsWholeAtEveryScale) {
  ExpectWholeTree([&] {
    Press("Choose...", chooser.get());
    return List()->window();
  });
}

}  // namespace
}  // namespace zeb
