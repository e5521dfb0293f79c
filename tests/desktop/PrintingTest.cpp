#include <QPrintPreviewWidget>
#include <QTextDocument>

#include "app/desktop/print/PrintPreview.h"
#include "app/desktop/print/Printing.h"
#include "app/desktop/print/ServiceReport.h"
#include "history/HistoryRecord.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/FileChoice.h"
#include "tests/desktop/WholeTree.h"

namespace zeb {
namespace {

class PrintingTest : public DesktopTest {
 protected:
  PrintingTest() {
    Station("Demo & FM");
    Output(
        1, OutputType::kHTTP,
        {{"URL1", "http://a/?x=1&token=geheim"}, {"HTTPPassword1", "geheim"}, {"Server1", "geheim.example"}});
    hive.WriteText(environment.ServiceKey(1) + "\\Hologram", "ApiKey1", "streng");
    Load();
  }

  static std::string Plain(const std::string& html) {
    return MakeDocument({"", html})->toPlainText().toStdString();
  }
  std::string Configuration() {
    return ConfigurationReport(main.Window(1)->Board().State(),
                               ReadSettingsTree(hive, environment.ServiceKey(1)), loop.Now());
  }
};

TEST_F(PrintingTest, TheConfigurationSheetHasAllSettingsAndNoSecrets) {
  const std::string text = Plain(Configuration());
  for (const char* there : {"Demo & FM", "Service 1: configuration", "HTTPRequest1", "URL",
                            "http://a/?x=1&token=***", "HTTPPassword", "Hologram1", "ServiceName"})
    EXPECT_NE(text.find(there), std::string::npos) << there << "\n" << text;
  EXPECT_EQ(text.find("geheim"), std::string::npos) << text;
  EXPECT_EQ(text.find("streng"), std::string::npos) << text;
}

TEST_F(PrintingTest, ItsWindowsAreWholeAtAllScales) {
  ExpectWholeTree([this] {
    OpenPrintPreview(desk, main.Window(1), ReportKind::kConfiguration);
    Settle();
    return Named("PrintPreview");
  });
  ExpectWholeTree([this] {
    OpenPrintPreview(desk, main.Window(1), ReportKind::kPlayHistory);
    Settle();
    return Named("PlayHistoryDay");
  });
}

TEST_F(PrintingTest, APdfIsMadeAndSaved) {
  OpenPrintPreview(desk, main.Window(1), ReportKind::kConfiguration);
  Settle();
  ASSERT_NE(Named("Pages"), nullptr);
  EXPECT_GE(dynamic_cast<QPrintPreviewWidget*>(Named("Pages"))->pageCount(), 1);
  Press("Save as PDF…", Named("PrintPreview"));
  ASSERT_TRUE(ChooseFile("/sheet.pdf"));
  Settle();
  const std::string pdf = files.Contents("/sheet.pdf");
  EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
  EXPECT_GT(pdf.size(), 2000u);
  Press("Close", Named("PrintPreview"));
}

TEST_F(PrintingTest, AServiceThatHasGoneIsTold) {
  const auto window = main.Window(1);
  ASSERT_TRUE(main.RemoveConfirmed(1));
  Pass(std::chrono::seconds(5));
  OpenPrintPreview(desk, window, ReportKind::kConfiguration);
  Settle();
  EXPECT_EQ(BoxText(), "The report could not be made.\nthe service has gone");
}

TEST_F(PrintingTest, SettingsThatCannotBeReadAreTold) {
  hive.failure = "locked";
  OpenPrintPreview(desk, main.Window(1), ReportKind::kConfiguration);
  Settle();
  hive.failure.clear();
  EXPECT_EQ(BoxText(), "The report could not be made.\nlocked");
}

// One day's items, as a store gives them.
class DayReader : public HistoryReader {
 public:
  Result<std::vector<HistoryItem>> Items(const HistoryFilter& filter, HistoryPlace place, int) override {
    std::vector<HistoryItem> rows;
    for (const HistoryItem& row : all)
      if (row.moment.utc >= filter.from && row.moment.utc < filter.to && row.moment.utc > place.utc)
        rows.push_back(row);
    return rows;
  }
  Result<std::vector<HistoryPublication>> Publications(const HistoryFilter&, HistoryPlace, int) override {
    return Failure{"not asked for"};
  }
  Result<std::vector<Update>> Updates(const HistoryFilter&, HistoryPlace, int) override {
    return Failure{"not asked for"};
  }
  Result<std::optional<Update>> FindUpdate(std::int64_t) override { return Failure{"not asked for"}; }
  Result<std::string> Bytes(std::int64_t) override { return Failure{"not asked for"}; }
  Result<std::vector<std::string>> Outputs(int) override { return Failure{"not asked for"}; }
  Result<std::vector<std::string>> Parts(int, const std::string&) override {
    return Failure{"not asked for"};
  }
  Result<std::optional<HistoryPublication>> LastPublication(int, const std::string&, const std::string&,
                                                            std::int64_t, HistoryResult) override {
    return Failure{"not asked for"};
  }
  Result<std::optional<HistoryItem>> LastItem(int, int, std::int64_t) override {
    return Failure{"not asked for"};
  }
  std::vector<HistoryItem> all;
};

constexpr std::chrono::local_days kDay{std::chrono::year(2026) / 11 / 24};

OpenHistory Played(const std::vector<std::pair<Duration, std::string>>& titles) {
  return [titles]() -> Result<std::unique_ptr<HistoryReader>> {
    auto reader = std::make_unique<DayReader>();
    for (const auto& [time, title] : titles) {
      clsZEBItemInfo item;
      item.Edit().ItemName = title;
      item.Edit().ItemType = 1;
      const WallTime moment = WallTime(kDay) + std::chrono::duration_cast<std::chrono::milliseconds>(time);
      HistoryItem row;
      row.moment = HistoryMoment(moment, std::chrono::hours(1));
      row.record = WriteItemRecord(item);
      reader->all.push_back(row);
    }
    return std::unique_ptr<HistoryReader>(std::move(reader));
  };
}

TEST_F(PrintingTest, TheDayIsThatOfTheStationsClocks) {
  using std::chrono::hours;
  const OpenHistory open = Played(
      {{-hours(1), "Yesterday"}, {hours(0), "Midnight"}, {hours(23), "Late"}, {hours(24), "Tomorrow"}});
  // Also when the clocks have been changed since.
  for (const hours offset : {hours(0), hours(1), hours(2)}) {
    const Result<PlayedDay> played = ReadPlayedDay(open, 1, kDay, offset);
    ASSERT_TRUE(played);
    const std::string text = Plain(PlayHistoryReport("Demo", played.Value(), kDay, loop.Now()));
    EXPECT_EQ(played.Value().items.size(), 2u);
    EXPECT_NE(text.find("00:00:00\nMidnight"), std::string::npos) << text;
    EXPECT_NE(text.find("23:00:00\nLate"), std::string::npos) << text;
  }
}

TEST_F(PrintingTest, ThePlayHistoryAsksForItsDay) {
  desk.openHistory = Played({{std::chrono::hours(8), "Waterloo"}});
  OpenPrintPreview(desk, main.Window(1), ReportKind::kPlayHistory);
  Settle();
  Press("OK", Named("PlayHistoryDay"));
  Settle();
  EXPECT_NE(Named("PrintPreview"), nullptr);
}

TEST_F(PrintingTest, WithoutAHistoryThatIsTold) {
  OpenPrint(desk, main.Window(1), ReportKind::kPlayHistory);
  Settle();
  Press("OK", Named("PlayHistoryDay"));
  Settle();
  EXPECT_EQ(BoxText(), "The report could not be made.\nno history is kept");
}

}  // namespace
}  // namespace zeb
