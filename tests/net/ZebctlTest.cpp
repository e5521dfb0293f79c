// zebctl as a process: what it prints, byte for byte, and its exit status.

#include "tests/net/Station.h"

namespace zeb {
namespace {

class ZebctlTest : public Station {};

TEST_F(ZebctlTest, ExpandsATemplateAgainstMessages) {
  WriteFile(Path("now.txt"),
            "# what is on air\r\n"
            "SET_SHOW REFERENCE=17 TITLE=\"The Early Tide\"\r\n"
            "set_current_item IType=7 ITitle=\"Café {22}5&6{22}\" AName1=Ann AName2=Bob PicFName=/p/a.jpg\n"
            "SET_COMINGSOON_ITEM ITitle=Later AName1=Caf\xE9");
  const std::vector<std::string> start = {"expand", "--messages", Path("now.txt"), "--now",
                                          "2026-03-02 07:08:09"};
  struct Case {
    std::vector<std::string> options;
    std::string input, output, error;
  };
  const Case cases[] = {
      {{}, "<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>", "Café \"5&6\" by Ann and Bob", ""},
      {{}, "no line end added\r\n\n", "no line end added\r\n\n", ""},
      {{}, "<ZEB_COMING_ARTISTS> on <ZEB_SPECIAL_SHOWTITLE>", "Café on The Early Tide", ""},
      {{}, "<ZEB_SPECIAL_CURRENTDATETIMEXML>", "2026-03-02T07:08:09", ""},
      {{}, "<ZEB_SPECIAL_SERVICENAME>", "Unknown Service", ""},
      {{"--url-encode"}, "a b=<ZEB_NOW_ITEMNAME>", "a b=Caf%C3%A9+%225%266%22", ""},
      {{"--escape", "html"}, "<ZEB_NOW_ITEMNAME>", "Café &quot;5&amp;6&quot;", ""},
      {{"--escape", "auto"}, "{\"t\":\"<ZEB_NOW_ITEMNAME>\"}", "{\"t\":\"Café \\\"5&6\\\"\"}", ""},
      {{"--page", "--escape", "auto"}, "<?xml?><ZEB_NOW_ITEMNAME>", "<?xml?>Café &quot;5&amp;6&quot;", ""},
      {{"--simple-text", "<ZEB_NOW_ITEMTYPE>!"}, "(<ZEB_SIMPLETEXT>)", "(Song!)", ""},
      {{"--list-files"}, "<ZEB_NOW_PICTUREFILENAME>", "a.jpg", "/p/a.jpg\n"},
      {{}, "&lt;ZEB_NOW_ARTISTS&gt;", "&lt;ZEB_NOW_ARTISTS&gt;", ""},
      {{"--page"}, "&lt;ZEB_NOW_ARTISTS&gt;", "Ann and Bob", ""},
      // A page comes back in its own encoding.
      {{"--page"},
       "<html><meta charset=\"iso-8859-1\"><p>\xFC <ZEB_COMING_ARTISTS>",
       "<html><meta charset=\"iso-8859-1\"><p>\xFC Caf\xE9",
       ""},
      {{"--page"},
       "\xEF\xBB\xBF<ZEB_COMING_ARTISTS>",
       "\xEF\xBB\xBF"
       "Café",
       ""},
  };
  for (const Case& c : cases) {
    std::vector<std::string> arguments = start;
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    const Finished expanded = Zebctl(arguments, c.input);
    EXPECT_EQ(expanded.status, 0) << c.input;
    EXPECT_EQ(expanded.output, c.output) << c.input;
    EXPECT_EQ(expanded.error, c.error) << c.input;
  }
  WriteFile(Path("template"), "from a file: <ZEB_NOW_ARTISTS>");
  EXPECT_EQ(Zebctl({"expand", Path("template")}).output, "from a file: ");
  EXPECT_FALSE(std::filesystem::exists(Path("settings.db")));  // a preview leaves nothing behind
}

TEST_F(ZebctlTest, ExpandsWithAServicesSettingsAndCarts) {
  AddService(1, control, "", "now.txt");
  WriteFile(Path("Carts.csv"), "12,Traffic,\"Lowgate, Ferries\"\n");
  WriteFile(Path("messages"), "SET_CURRENT_ITEM IType=2 HDRef=12\n");
  EXPECT_EQ(Zebctl({"expand", "--service", "1", "--messages", Path("messages")},
                   "<ZEB_SPECIAL_SERVICENAME>: <ZEB_NOW_ITEMNAME>, <ZEB_NOW_ARTISTS>")
                .output,
            "Station 1: Traffic, Lowgate, Ferries");
  EXPECT_EQ(Zebctl({"expand", "--service", "2"}).error, "zebctl: there is no service 2\n");
  EXPECT_FALSE(std::filesystem::exists(Path("now.txt")));
}

TEST_F(ZebctlTest, TellsEveryFailureInOneLine) {
  struct Case {
    std::vector<std::string> arguments;
    int status;
    std::string named;
  };
  const Case cases[] = {
      {{}, 2, "command"},
      {{"publish"}, 2, "'publish'"},
      {{"--loud", "send"}, 2, "'--loud'"},
      {{"expand", "--html"}, 2, "'--html'"},
      {{"expand", "--now", "2026-02-30 00:00:00"}, 2, "'2026-02-30 00:00:00'"},
      {{"expand", "--page", "--url-encode"}, 2, "--url-encode"},
      {{"expand", "a", "b"}, 2, "'b'"},
      {{"expand", "--simple-text"}, 2, "--simple-text"},
      {{"expand", "/nowhere/now.html"}, 1, "/nowhere/now.html"},
      {{"expand", "--messages", "/nowhere/list"}, 1, "/nowhere/list"},
      {{"send", "--port", "70000"}, 2, "'70000'"},
      {{"send", "--port"}, 2, "--port"},
      {{"send", "one\ntwo"}, 2, "one line"},
      {{"settings", "get", "Service1", "ServiceName"}, 1, "ServiceName"},
      {{"settings", "unset"}, 2, "unset"},
  };
  for (const Case& c : cases) {
    const Finished failed = Zebctl(c.arguments);
    const std::string what = c.arguments.empty() ? "nothing" : c.arguments.back();
    EXPECT_EQ(failed.status, c.status) << what;
    EXPECT_EQ(failed.output, "") << what;
    EXPECT_EQ(failed.error.rfind("zebctl: ", 0), 0u) << failed.error;
    EXPECT_NE(failed.error.find(c.named), std::string::npos) << failed.error;
    EXPECT_EQ(failed.error.find('\n'), failed.error.size() - 1) << failed.error;
  }
  EXPECT_NE(Zebctl({"--help"}).output.find("settings import FILE.reg"), std::string::npos);
}

}  // namespace
}  // namespace zeb
