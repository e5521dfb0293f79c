// Alarms of a running zebd: a real program is run and a real server is told.
#include <poll.h>

#include <algorithm>

#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

class AlarmsNetTest : public Station {
 protected:
  void Set(const std::string& name, const std::string& data, bool number = false) const {
    std::vector<std::string> command{"settings", "set", "", name, data};
    if (number) command.emplace_back("--number");
    const Finished set = Zebctl(command);
    ASSERT_EQ(set.status, 0) << set.error;
  }
  // What the program has written, once it has `lines` lines.
  std::string AwaitAlarms(std::ptrdiff_t lines) const {
    std::string text;
    for (int tries = 0; tries < 400; ++tries) {
      text = ReadFile(Path("alarms"));
      if (std::count(text.begin(), text.end(), '\n') >= lines) break;
      ::poll(nullptr, 0, 50);  // another program writes it
    }
    return text;
  }
};

TEST_F(AlarmsNetTest, AProgramIsRunAndAServerIsToldWhenAnOutputFailsAndWhenItWorksAgain) {
  AddService(1, control, "<ZEB_NOW_ITEMNAME>", "later/now.txt");
  WriteFile(Path("alarm"), "#!/bin/sh\necho \"$ZEB_ALARM|$ZEB_SERVICE|$ZEB_OUTPUT|$ZEB_PROBLEM\" >> " +
                               Path("alarms") + "\n");
  std::filesystem::permissions(Path("alarm"), std::filesystem::perms(0755));
  const Socket pager = Socket::Listen();
  Set("AlarmCommand", "alarm");  // in the data folder
  Set("AlarmURL", "http://127.0.0.1:" + std::to_string(pager.Port()) + "/alarm");
  Set("AlarmAfterSeconds", "1", true);
  Set("RetrySeconds", "1", true);
  Start();
  ASSERT_EQ(Send({"SET_CURRENT_ITEM IType=7 ITitle=\"One\""}).status, 0);
  const std::string begin = AwaitAlarms(1);
  EXPECT_EQ(begin.rfind("begin|", 0), 0U) << begin << zebd->error;
  EXPECT_NE(begin.find("|File1|"), std::string::npos) << begin;
  EXPECT_NE(begin.find("later/now.txt"), std::string::npos) << begin;
  const Socket told = pager.Accept();
  std::string request;
  ASSERT_TRUE(told.ReceiveUntil(request, "\"since\":")) << request;
  EXPECT_EQ(request.rfind("POST /alarm HTTP/1.1\r\n", 0), 0U) << request;
  EXPECT_NE(request.find("{\"alarm\":\"begin\","), std::string::npos) << request;
  told.Send("HTTP/1.1 204 No Content\r\nContent-Length: 0\r\n\r\n");
  std::filesystem::create_directories(folder / "later");
  const std::string both = AwaitAlarms(2);
  EXPECT_NE(both.find("\nend|"), std::string::npos) << both << zebd->error;
}

}  // namespace
}  // namespace zeb
