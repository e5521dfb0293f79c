// Two zebd processes, the first relaying to the second.

#include <csignal>

#include "tests/net/Station.h"

namespace zeb {
namespace {

class FirstSite : public Station {
 public:
  void TestBody() override {}
  using Station::AddService;
  using Station::AwaitPage;
  using Station::control;
  using Station::Send;
  using Station::Start;
  using Station::Zebctl;
  using Station::zebd;
};

class BounceTest : public Station {};

TEST_F(BounceTest, TheSecondSitePublishesWhatTheFirstReceives) {
  const std::string page = "<ZEB_NOW_ITEMNAME>\n";
  AddService(1, control, page, "now.txt");
  Start();

  FirstSite first;
  for (int tries = 0; first.control == control && tries < 100; ++tries) first.control = FreeControlPort();
  first.AddService(1, first.control, page, "now.txt");
  const auto set = [&](const std::string& name, const std::string& value, bool number) {
    std::vector<std::string> words = {"settings", "set", "Service1", name, value};
    if (number) words.push_back("--number");
    EXPECT_EQ(first.Zebctl(words).status, 0);
  };
  set("UseBounce", "1", true);
  set("BounceServer", "127.0.0.1", false);
  set("BouncePort", std::to_string(control), true);
  EXPECT_EQ(first.Zebctl({"settings", "set", "", "BounceRetrySeconds", "1", "--number"}).status, 0);
  first.Start();
  ASSERT_TRUE(first.zebd->WaitForError("relays to 127.0.0.1"));

  EXPECT_EQ(first.Send({"SET_CURRENT_ITEM ITitle=\"Caf{C3}{A9}\""}).status, 0);
  EXPECT_EQ(first.AwaitPage("now.txt", "Café"), "Café\n");
  EXPECT_EQ(AwaitPage("now.txt", "Café"), "Café\n");

  // The second site is lost and comes back.
  zebd->Signal(SIGKILL);
  ASSERT_TRUE(first.zebd->WaitForError("does not relay"));
  EXPECT_EQ(first.Send({"SET_CURRENT_ITEM ITitle=Alone"}).status, 0);
  EXPECT_EQ(first.AwaitPage("now.txt", "Alone"), "Alone\n");
  Start();
  ASSERT_TRUE(first.zebd->WaitForError("relays to 127.0.0.1"));
  EXPECT_EQ(first.Send({"SET_CURRENT_ITEM ITitle=Together"}).status, 0);
  EXPECT_EQ(AwaitPage("now.txt", "Together"), "Together\n");
}

TEST_F(BounceTest, ManualEntriesGoTheWayOfTheControlLink) {
  AddService(1, control,
             "<ZEB_NOW_ITEMTYPE> <ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>, <ZEB_SPECIAL_PRESENTERFULLNAME>, "
             "next <ZEB_NEXT_ITEMNAME>\n",
             "now.txt");
  WriteFile(Path("Carts.csv"), "12,\"Say \"\"Hi\"\"\",The Carters,\n");
  Start();
  const auto set = [&](std::vector<std::string> words) {
    words.insert(words.begin(), "set");
    words.insert(words.end(), {"--port", std::to_string(6900 + control)});
    const Finished done = Zebctl(words);
    EXPECT_EQ(done.status, 0) << done.error;
  };
  set({"presenter", "--reference", "NC", "--name", "Nell \"C\" Carver"});
  set({"next", "--title", "Rain", "--artist", "Gwen", "--type", "spot"});
  set({"current", "--cart", "12", "--type", "other"});
  EXPECT_EQ(AwaitPage("now.txt", "The Carters"),
            "Cart Say \"Hi\" by The Carters, Nell \"C\" Carver, next Rain\n");
  // An edited cart file counts from the next look-up on.
  WriteFile(Path("Carts.csv"), "12,Late change,Others,\n");
  set({"current", "--cart", "12"});
  EXPECT_EQ(AwaitPage("now.txt", "Others"), "Song Late change by Others, Nell \"C\" Carver, next Rain\n");
  set({"promote", "next"});
  EXPECT_EQ(AwaitPage("now.txt", "Song Rain"), "Song Rain by Gwen, Nell \"C\" Carver, next \n");
}

}  // namespace
}  // namespace zeb
