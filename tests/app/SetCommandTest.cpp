#include <gtest/gtest.h>

#include "app/SetCommand.h"
#include "sources/frmManualZEB.h"

namespace zeb {
namespace {

TEST(SetCommand, BecomesTheMessagesOfAPlayout) {
  const struct {
    std::vector<std::string> arguments;
    std::string message;
  } cases[] = {
      {{"current", "--title", " Say \"Hi\" ", "--artist", "A=B"},
       "SET_CURRENT_ITEM  IType=7 ITitle=\"Say {22}Hi{22}\" AName1=\"A{3D}B\""},
      {{"next", "--type", "spot"}, "SET_NEXT_ITEM  IType=4"},
      {{"previous", "--type", "link"}, "SET_PREVIOUS_ITEM  IType=3"},
      {{"coming", "--type", "12"}, "SET_COMINGSOON_ITEM  IType=12"},
      {{"promote", "next"}, "SET_CURRENT_ITEM Promote=NEXT IType=7"},
      {{"promote", "coming", "--type", "other"}, "SET_CURRENT_ITEM Promote=COMING IType=2"},
      {{"presenter", "--reference", "NC", "--name", "Nell Carver"},
       "SET_PRESENTER  Presenter=\"NC\" Fullname=\"Nell Carver\""},
      {{"show", "--reference", "17", "--title", "Drive FULLNAME=x"},
       "SET_SHOW  Show=\"17\" Title=\"Drive FULLNAME{3D}x\""},
  };
  for (const auto& item : cases) {
    const auto options = ReadSetOptions(item.arguments);
    ASSERT_TRUE(options) << options.Reason();
    EXPECT_EQ(options.Value().messages, std::vector<std::string>{item.message});
  }
  const auto options = ReadSetOptions({"current", "--host", "h", "--port", "6903", "--controller", "me"});
  ASSERT_TRUE(options);
  EXPECT_EQ(options.Value().host + " " + std::to_string(options.Value().port) + " " + options.Value().name,
            "h 6903 me");
}

TEST(SetCommand, NamesWhatItDoesNotTake) {
  const struct {
    std::vector<std::string> arguments;
    std::string reason;
  } cases[] = {
      {{}, "set what? current, next, previous, coming, promote, presenter or show"},
      {{"now"}, "'now' cannot be set"},
      {{"promote", "previous"}, "set promote takes next or coming"},
      {{"current", "--name", "x"}, "set current has no option '--name'"},
      {{"current", "--title"}, "--title needs a value"},
      {{"current", "--controller", ""}, "--controller needs a value"},
      {{"current", "--type", "tune"}, "--type takes a number, not 'tune'"},
      {{"current", "--cart", "-1"}, "--cart takes a number, not '-1'"},
      {{"presenter", "--name", "Nell"}, "set presenter needs --reference"},
      {{"next", "--port", "0"}, "'0' is no port number"},
  };
  for (const auto& item : cases) {
    const auto options = ReadSetOptions(item.arguments);
    ASSERT_FALSE(options) << item.reason;
    EXPECT_EQ(options.Reason(), item.reason);
  }
}

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
