#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "app/SetCommand.h"
#include "app/StatusTable.h"
#include "dashboard/ItemBody.h"

namespace zeb {
namespace {

TEST(StatusTableTest, TellsWhatIsWrongInWords) {
  const boost::json::value list =
      boost::json::parse(R"({"version":"3.0","time":"2026-11-24T03:14:07.000+01:00",
    "services":[
      {"number":1,"name":"Bad \u001b[31m","severity":"failing",
       "source":{"state":"failing","text":"port 6901 cannot be listened on","controller":""},
       "current":{"title":"","artists":""},
       "outputs":[{"name":"Web1","severity":"failing","problem":"cannot connect","status":"Error","text":"","pages":[],
                   "published":null,"failingSince":"2026-11-24T03:04:07.000+01:00","stale":true},
                  {"name":"File1","severity":"ok","status":"OK","problem":"","text":"","stale":true,
                   "staleSince":"2026-11-24T02:14:02Z","pages":[{"name":"/p","bytes":3,"firstLines":"x"}],
                   "published":"2026-11-23T00:14:07+01:00"}]},
      {"number":2,"name":"Good","severity":"ok","source":{"state":"ok","text":"port 6902","controller":"studio"},
       "current":{"title":"Paper Moons","artists":"Ada Quill"},
       "outputs":[{"name":"DAB1","severity":"off","status":"Off","text":"Ada","published":"2026-11-24T01:14:07Z"}]},
      "nonsense"]})");
  EXPECT_TRUE(SomethingFails(list));
  EXPECT_EQ(StatusTable(list),
            "ZEB 3.0, 2026-11-24T03:14:07: 2 stations, 1 with a failure\n"
            "\n"
            "2  Good\n"
            "  source     ok                 port 6902, studio has control\n"
            "  on air                        Paper Moons - Ada Quill\n"
            "  DAB1       off   60 min ago   Off: Ada\n"
            "\n"
            "1  Bad [31m  FAILS\n"
            "  source     FAIL               port 6901 cannot be listened on\n"
            "  on air                        (nothing yet)\n"
            "  Web1       FAIL  never        for 10 min: cannot connect\n"
            "  File1      old   27 h ago     shows an older item since 5 s: /p\n");
  EXPECT_FALSE(SomethingFails(boost::json::parse(R"({"services":[{"severity":"ok"}]})")));
  EXPECT_EQ(StatusTable(boost::json::parse("{}")), "ZEB , : 0 stations, all well\n");
}

// By the local socket an entry becomes what it becomes by the control link.
TEST(SetRequestTest, BothWaysGiveTheSameMessage) {
  SetOptions item;
  item.entry.itemName = "Paper \"Moons\" = {x}";
  item.entry.artist = "Ada\nQuill";
  item.entry.notes = "Ünï";
  item.entry.cartNumber = "12";
  item.entry.itemType = 4;
  const std::pair<ManualSlot, std::string> slots[] = {{ManualSlot::kCurrent, "items/current"},
                                                      {ManualSlot::kNext, "items/next"},
                                                      {ManualSlot::kPrevious, "items/previous"},
                                                      {ManualSlot::kComingSoon, "items/coming"}};
  for (const auto& [slot, path] : slots) {
    item.entry.slot = slot;
    const SetRequest request = SetRequestOf(item, 3);
    EXPECT_EQ(request.target, "/api/v1/services/3/" + path);
    const auto message = ItemMessageOf(request.body, slot);
    ASSERT_TRUE(message) << message.Reason();
    EXPECT_EQ(message.Value(), SetMessage(item));
  }
  for (const ManualSlot slot : {ManualSlot::kPromoteNext, ManualSlot::kPromoteComing}) {
    item.entry.slot = slot;
    EXPECT_EQ(SetRequestOf(item, 1).target, "/api/v1/services/1/promote");
    const auto message = PromoteMessageOf(SetRequestOf(item, 1).body);
    ASSERT_TRUE(message) << message.Reason();
    EXPECT_EQ(message.Value(), SetMessage(item));
  }
  SetOptions who;
  who.what = SetOptions::What::kPresenter;
  who.entry.presenterReference = "p";
  who.entry.presenterFullName = "Ada";
  EXPECT_EQ(PresenterMessageOf(SetRequestOf(who, 1).body).Value(), SetMessage(who));
  who.what = SetOptions::What::kShow;
  who.entry.showReference = "s";
  who.entry.showTitle = "Late";
  EXPECT_EQ(ShowMessageOf(SetRequestOf(who, 1).body).Value(), SetMessage(who));
}

}  // namespace
}  // namespace zeb
