#include "sources/ItemMessage.h"
#include "tests/sources/IntakeFixture.h"
#include "text/Parameters.h"

namespace zeb {
namespace {

using ItemMessage = IntakeFixture;

TEST_F(ItemMessage, FindsParameters) {
  struct Case {
    std::string_view arguments, key, value;
  };
  const Case cases[] = {
      {"Show=17 Title=x", "SHOW", "17"},
      {"Title=\"two words\" x=1", "title", "two words"},
      {"Title=\"runs to the end", "Title", "runs to the end"},
      {"Title=a Title=b", "Title", "a"},
      {"SubTitle=a", "Title", ""},
      {"Title =a", "Title", ""},
      {"Note=\"so Title=inner it goes\" Title=outer", "Title", "inner"},
      {"Title=", "Title", ""},
      {"Title={22}a{2C}b{22}{live}{7B}", "Title", "\"a,b\"{live}{"},
      {"Title=caf{E9}", "Title", "caf\u00e9"},
      {"Title=caf\xC3\xA9", "Title", "caf\u00e9"},
      {"Title=caf\xE9", "Title", "caf\u00e9"},
      {"", "Title", ""},
  };
  for (const Case& c : cases) EXPECT_EQ(ParameterValue(c.arguments, c.key), c.value) << c.arguments;
  // The item message finds its keys by other means, and must find the same.
  for (const Case& c : cases) EXPECT_EQ(Parsed(std::string(c.arguments) + " IRef=")->ItemReference, "");
  EXPECT_EQ(Parsed("CField1=\"so IRef=inner it goes\" IRef=outer")->ItemReference, "inner");
  EXPECT_EQ(Parsed("iref=a IREF=b")->ItemReference, "a");
  EXPECT_EQ(Parsed("xIRef=a=b IRef")->ItemReference, "");
  EXPECT_EQ(Parsed("IRef=\"half")->ItemReference, "half");
}

TEST_F(ItemMessage, NumbersFollowTheirRules) {
  struct Case {
    std::string_view message;
    std::int32_t type, date;
    float time;
    std::int32_t cart;
  };
  const Case cases[] = {
      {"IType=7 IDt=46083.5 HDRef=12", 7, 46083, 43200, 12},
      {"IType=-3 IDt=0 EstStTm=0 HDRef=-4", 0, 0, 0, 0},
      {"IType=x IDt=-5 EstStTm=nan", 0, 0, 0, 0},
      {"IDt=46083.25 EstStTm=61.5", 0, 46083, 61.5, 0},
      {"IDt=46083.999999999", 0, 46084, 0, 0},
      {"IDt=1e300 EstStTm=1e300", 0, 0, 1e7F, 0},
      {"IType=99999999999 HDRef=99999999999", 2147483647, 0, 0, 2147483647},
      {"IDt=inf CMDur=inf", 0, 0, 0, 0},
  };
  for (const Case& c : cases) {
    const clsZEBItemInfo item = Parsed(c.message);
    EXPECT_EQ(item->ItemType, c.type) << c.message;
    EXPECT_EQ(item->ItemStartDate, c.date) << c.message;
    EXPECT_EQ(item->ItemStartTime, c.time) << c.message;
    EXPECT_EQ(item->CartNumber, c.cart) << c.message;
  }
}

TEST_F(ItemMessage, CartLinesComeBeforeTheTitle) {
  ports.carts.carts[5] = {{"Line A", "Line B", "Line C"}, "CField1=kept RNotes=\"from the cart\""};
  clsZEBItemInfo item = Parsed("HDRef=5");
  EXPECT_EQ(item->ItemName, "Line A");
  EXPECT_EQ(item->Artists, "Line B and Line C");
  EXPECT_EQ(item->CustomField1, "kept");
  EXPECT_EQ(item->RDSNotes, "from the cart");

  item = Parsed("AName1=Named ITitle=Told HDRef=5 RNotes=own");
  EXPECT_EQ(item->ItemName, "Told");
  EXPECT_EQ(item->Artists, "Named");
  EXPECT_EQ(item->RDSNotes, "own");
  EXPECT_EQ(Parsed("HDRef=5 HDItem.Serialisation=x")->CustomField1, "")
      << "the message brings its own record";

  service.settings.CartItemNameLine = 3;
  service.settings.CartArtist1Line = 1;
  service.settings.CartArtist2Line = 9;
  item = Parsed("HDRef=5");
  EXPECT_EQ(item->ItemName, "Line C");
  EXPECT_EQ(item->Artists, "Line A");
  EXPECT_EQ(Parsed("HDRef=6")->ItemName, "") << "no such cart";
}

TEST_F(ItemMessage, LooksIntoTheSerialisedRecordSecond) {
  const clsZEBItemInfo item = Parsed(
      "WNotes=own HDItem.Serialisation=\"WNotes=x RNotes={22}two words{22} StNotes={7B}41{7D} ITitle=no "
      "PicFName=a.jpg 2PicFName=b.jpg\"");
  EXPECT_EQ(item->WebNotes, "own");
  EXPECT_EQ(item->RDSNotes, "\"two");  // inside the quotes it is found as it stands, escapes and all
  EXPECT_EQ(item->Notes, "{41}");
  EXPECT_EQ(item->ItemName, "no");  // likewise
  const clsZEBItemInfo nested = Parsed("HDItem.Serialisation={22}CField1=a{20}RNotes={22}");
  EXPECT_EQ(nested->CustomField1, "");
  const clsZEBItemInfo escaped =
      Parsed("HDItem.Serialisation=\"IRef={22}no{22}{20}RNotes={22}two{20}words{22}{20}PicFName=a.jpg\"");
  EXPECT_EQ(escaped->RDSNotes, "two words");
  EXPECT_EQ(escaped->ItemReference, "") << "the item's own keys stand in the message only";
  EXPECT_EQ(escaped.PictureFileName(1), "a.jpg");
}

TEST_F(ItemMessage, Pictures) {
  struct Case {
    std::string_view message;
    std::vector<std::string> names;
  };
  const Case cases[] = {
      {"PicFName=a 1PicFName=b 2PicFName=c 4PicFName=e", {"a", "b", "c"}},
      {"3PicFName=c 2PicFName=b PicFName=a", {"a", "b", "c"}},
      {"2PicFName=b", {"b"}},
      {"3PicFName=c", {"old"}},
      {"PicFName= 2PicFName=\"\" 3PicFName=c", {"c"}},
      {"PicFName=\"\"", {}},
      {"02PicFName=x 0PicFName=y 99999999999PicFName=z", {"old"}},
      {"PicFName=a 2PicFName=A", {"a"}},
  };
  for (const Case& c : cases) {
    clsZEBItemInfo item;
    item.AddPictureFile("old");
    ASSERT_TRUE(ParseItemMessage(c.message, intake, ports.carts, item));
    std::vector<std::string> names;
    for (int i = 1; i <= item.NumberPictures(); ++i) names.push_back(item.PictureFileName(i));
    EXPECT_EQ(names, c.names) << c.message;
  }
}

TEST_F(ItemMessage, PromotesACopyAndEmptiesItsSlot) {
  clsZEBItemInfo next = Parsed("IType=7 ITitle=Song AName1=Band StNotes=note PicFName=p.jpg");
  intake.SetNextItem(&next, false);
  const clsZEBItemInfo plain = Parsed("Promote=next");
  EXPECT_EQ(plain->ItemName, "Song");
  EXPECT_EQ(plain->Artists, "Band");
  EXPECT_EQ(plain->ItemType, 0) << "the type is the message's alone";
  EXPECT_EQ(plain.ItemIndexNumber, 1);
  EXPECT_EQ(Next(1), "");
  EXPECT_EQ(service.NextItem(1)->ItemIndexNumber, 1);
  EXPECT_EQ(window.informed, 1);

  intake.SetComingSoonItem(&next, false);
  const clsZEBItemInfo changed = Parsed("ITitle=New Promote=COMING StNotes= IType=3");
  EXPECT_EQ(changed->ItemName, "New");
  EXPECT_EQ(changed->Artists, "") << "artists of the old title";
  EXPECT_EQ(changed->Notes, "");
  EXPECT_EQ(changed->ItemType, 3);
  EXPECT_EQ(changed.PictureFileName(1), "p.jpg");
  EXPECT_EQ(service.ComingSoonItem()->ItemName, "");

  const clsZEBItemInfo current = Parsed("ITitle=Now IType=7");
  intake.SetCurrentItem(&current, false);
  Say("SET_CURRENT_ITEM Promote=CURRENT IType=7");
  EXPECT_EQ(Current(), "Now");
  EXPECT_EQ((*service.PreviousItem(1))->ItemName, "Now") << "it was taken off and put on again";
}

TEST_F(ItemMessage, WritesWhatItReads) {
  const std::string message =
      "IType=7 IDt=46083 EstStTm=3723.5 HDRef=5 ITitle=\"A {22}quoted{22} title = x{0D}{0A}\" "
      "IDesc1=d1 IDesc2=d2 IDesc3=d3 IRef=ref SchRef=sch AName1=\"A One\" AName2=B AName3=C CField1=1 "
      "CField2=2 "
      "CField3=3 StNotes=\"{7B}41} caf\u00e9\" DNotes=d WNotes=w RNotes=r OStRef=o Composer=co CCode=cc "
      "CMDur=181.25 CTDur=200 MTitle=mt Performer=pe PTitle=pt Publisher=pu RecLabel=rl RecNo=rn "
      "PicFName=\"one picture.jpg\" 2PicFName=two.jpg 3PicFName=three.jpg";
  const clsZEBItemInfo item = Parsed(message);
  EXPECT_EQ(item->ItemName, "A \"quoted\" title = x\r\n");
  EXPECT_EQ(item->Artists, "A One, B and C");
  EXPECT_EQ(item->Notes, "{41} caf\u00e9");
  const std::string written = WriteItemMessage(item);
  EXPECT_EQ(written.find_first_of("\r\n"), std::string::npos);
  const clsZEBItemInfo again = Parsed(written);
  EXPECT_TRUE(again.IsSame(item, true) && item.IsSame(again, true)) << written;
  EXPECT_EQ(WriteItemMessage(again), written);
  EXPECT_EQ(again->ItemStartTime, 3723.5F);
  EXPECT_EQ(WriteItemMessage({}), "");

  clsZEBItemInfo tricky;
  tricky.Edit().CartLine1 = "what if IRef=this was a key";
  EXPECT_EQ(Parsed(WriteItemMessage(tricky))->CartLine1, "what if IRef=this was a key");
  EXPECT_EQ(Parsed(WriteItemMessage(tricky))->ItemReference, "");

  clsZEBItemInfo joined;
  joined.Edit().Artists = "Only shown";
  EXPECT_EQ(Parsed(WriteItemMessage(joined))->Artists, "Only shown");
}

TEST_F(ItemMessage, AnOddMessageIsAnItemWithoutFields) {
  for (const std::string& message : {std::string(), std::string(" "), std::string("=="), std::string(3, '\0'),
                                     std::string(70000, 'x'), std::string(" = \"=\" {")})
    EXPECT_TRUE(clsZEBItemInfo().IsSame(Parsed(message), true));
}

}  // namespace
}  // namespace zeb
