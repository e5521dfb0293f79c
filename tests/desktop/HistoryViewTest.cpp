#include <QComboBox>
#include <QPlainTextEdit>

#include "app/desktop/service/HistoryFeed.h"
#include "history/HistoryRecord.h"
#include "tests/desktop/ServiceWindowTest.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

// A history in memory, which is read as the test says.
struct Store {
  std::vector<HistoryItem> items;
  std::vector<HistoryPublication> publications;
  std::string failure;
  Duration hangs{};  // whoever opens it
  int opened = 0;
};

template <class Row>
std::vector<Row> Behind(const std::vector<Row>& rows, const HistoryFilter& filter, HistoryPlace place,
                        int most) {
  std::vector<Row> found;
  for (const Row& row : rows) {
    const bool isBehind = std::pair(row.moment.utc, row.id) > std::pair(place.utc, place.id);
    const bool isWithin = row.moment.utc >= filter.from && row.moment.utc < filter.to;
    if (isBehind && isWithin && row.service == filter.service && static_cast<int>(found.size()) < most)
      found.push_back(row);
  }
  return found;
}

class Reader : public HistoryReader {
 public:
  explicit Reader(Store& store) : store_(store) {}
  Result<std::vector<HistoryItem>> Items(const HistoryFilter& filter, HistoryPlace place, int most) override {
    if (!store_.failure.empty()) return Failure{store_.failure};
    return Behind(store_.items, filter, place, most);
  }
  Result<std::vector<HistoryPublication>> Publications(const HistoryFilter& filter, HistoryPlace place,
                                                       int most) override {
    auto found = Behind(store_.publications, filter, place, most);
    std::erase_if(found,
                  [&](const auto& row) { return !filter.output.empty() && row.output != filter.output; });
    return found;
  }
  Result<std::vector<Update>> Updates(const HistoryFilter&, HistoryPlace, int) override {
    return std::vector<Update>();
  }
  Result<std::optional<Update>> FindUpdate(std::int64_t) override { return std::optional<Update>(); }
  Result<std::string> Bytes(std::int64_t) override { return Failure{"no bytes"}; }
  Result<std::vector<std::string>> Outputs(int) override { return std::vector<std::string>{"File1"}; }
  Result<std::vector<std::string>> Parts(int, const std::string&) override {
    return std::vector<std::string>{""};
  }
  Result<std::optional<HistoryPublication>> LastPublication(int, const std::string&, const std::string&,
                                                            std::int64_t utc, HistoryResult) override {
    std::optional<HistoryPublication> last;
    for (const auto& row : store_.publications)
      if (row.moment.utc <= utc && row.problem.empty()) last = row;
    return last;
  }
  Result<std::optional<HistoryItem>> LastItem(int, int, std::int64_t) override {
    return std::optional<HistoryItem>();
  }

 private:
  Store& store_;
};

class HistoryViewTest : public ServiceWindowTest {
 protected:
  HistoryViewTest() {
    desk.openHistory = [this]() -> Result<std::unique_ptr<HistoryReader>> {
      ++store.opened;
      if (store.hangs > Duration::zero()) loop.Wait(store.hangs);
      return std::unique_ptr<HistoryReader>(std::make_unique<Reader>(store));
    };
  }
  HistoryMoment Now() const { return {loop.Now(), loop.UtcOffset()}; }
  void OnAir(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    store.items.push_back({++id, Now(), 1, kHistoryCurrent, "Demo FM", "", WriteItemRecord(item)});
  }
  void Published(const std::string& output, const std::string& text, const std::string& problem = "") {
    HistoryPublication row;
    row.id = ++id;
    row.moment = Now();
    row.service = 1;
    row.output = output;
    row.text = text;
    row.problem = problem;
    row.latency = 12ms;
    store.publications.push_back(std::move(row));
  }
  void Show() {
    Station("Demo FM");
    AddFile();
    AddSerial();
    OpenWindow();
    window->ShowPage(ServiceWindow::Page::kHistory);
    PassDrawn(3s);
  }
  int Rows() { return Grid("history")->model()->rowCount(); }

  Store store;
  std::int64_t id = 0;
};

TEST_F(HistoryViewTest, ShowsItemsAndPublicationsAndGoesOn) {
  OnAir("One");
  Published("File1", "text of One");
  Published("Serial1", "", "port 3 is not there");
  Show();
  ASSERT_EQ(Rows(), 3);
  EXPECT_EQ(Cell("history", 0, 1), "on air");
  EXPECT_EQ(Cell("history", 0, 4), "One");
  EXPECT_EQ(Cell("history", 1, 2), "published");
  EXPECT_EQ(Cell("history", 1, 3), "12 ms");
  EXPECT_EQ(Cell("history", 2, 2), "▲ failed");
  EXPECT_EQ(Cell("history", 2, 4), "port 3 is not there");
  Pass(1s);
  Published("File1", "later");
  Say("SET_CURRENT_ITEM ITitle=x");
  PassDrawn(5s);
  ASSERT_EQ(Rows(), 4);
  EXPECT_EQ(Cell("history", 3, 4), "later");
}

TEST_F(HistoryViewTest, IsLeftAloneWhenNothingHappensOrNobodyLooks) {
  Show();
  PassDrawn(10s);
  const int opened = store.opened;
  EXPECT_GT(opened, 0);
  PassDrawn(60s);
  EXPECT_EQ(store.opened, opened);
  window->ShowPage(ServiceWindow::Page::kItems);
  Say("SET_CURRENT_ITEM ITitle=x");
  PassDrawn(10s);
  EXPECT_EQ(store.opened, opened);
}

TEST_F(HistoryViewTest, OneOutputAlone) {
  OnAir("One");
  Published("File1", "f");
  Published("Serial1", "s");
  Show();
  auto* choice = window->findChild<QComboBox*>("historyOutput");
  ASSERT_EQ(choice->count(), 3);
  choice->setCurrentIndex(choice->findData("Serial1"));
  PassDrawn(3s);
  ASSERT_EQ(Rows(), 1);
  EXPECT_EQ(Cell("history", 0, 4), "s");
}

TEST_F(HistoryViewTest, SaysWhyAnOutputShowedWhatItShowed) {
  Published("File1", "text of One");
  Show();
  Grid("history")->setCurrentIndex(Grid("history")->model()->index(0, 0));
  PassDrawn(1s);
  const QString why = window->findChild<QPlainTextEdit*>("historyWhy")->toPlainText();
  EXPECT_TRUE(why.contains("text of One")) << why.toStdString();
  EXPECT_TRUE(why.contains("12.0 ms after the information")) << why.toStdString();
}

TEST_F(HistoryViewTest, IsBounded) {
  for (int i = 0; i < 5000; ++i) Published("File1", std::to_string(i));
  Show();
  EXPECT_EQ(Rows(), static_cast<int>(kMostHistoryRows));
  EXPECT_EQ(Cell("history", Rows() - 1, 4), "4999");
}

TEST_F(HistoryViewTest, TellsWhatIsWrongAndComesBack) {
  store.failure = "cannot read 'history.db': disk on fire";
  Show();
  EXPECT_EQ(Text("historyNote"), "cannot read 'history.db': disk on fire");
  store.failure.clear();
  OnAir("One");
  Say("SET_CURRENT_ITEM ITitle=x");
  PassDrawn(5s);
  EXPECT_EQ(Text("historyNote"), "");
  EXPECT_EQ(Rows(), 1);
}

TEST_F(HistoryViewTest, AStoreThatHangsIsNotAskedAgain) {
  store.hangs = 60s;
  Show();
  PassDrawn(12s);
  EXPECT_EQ(Text("historyNote"), "The history does not answer.");
  for (int i = 0; i < 10; ++i) {
    Say("SET_CURRENT_ITEM ITitle=t" + std::to_string(i));
    PassDrawn(1s);
  }
  PassDrawn(30s);
  EXPECT_EQ(store.opened, 1) << "one worker hangs, and no more";
  store.hangs = {};
  PassDrawn(10s);
  OnAir("One");
  Say("SET_CURRENT_ITEM ITitle=x");
  PassDrawn(5s);
  EXPECT_EQ(Rows(), 1) << "it came back";
}

TEST_F(HistoryViewTest, WithoutAHistoryItSaysSo) {
  desk.openHistory = {};
  Show();
  EXPECT_EQ(Text("historyNote"), "No history is kept.");
}

}  // namespace
}  // namespace zeb
