#include <QComboBox>
#include <QLineEdit>
#include <vector>

#include "app/OptionsSheet.h"
#include "platform/SerialPortControl.h"
#include "tests/desktop/DialogTest.h"
#include "tests/desktop/WholeTree.h"

namespace zeb {
namespace {

class TwoPorts : public SerialPorts {
 public:
  std::shared_ptr<SerialPortControl> MakePort() override { return nullptr; }
  std::vector<Found> Available() override { return {{"/dev/ttyS0", ""}, {"/dev/ttyUSB0", "USB adapter"}}; }
};

class OptionsDialogTest : public DialogTest {
 protected:
  void OpenThem() {
    OpenOptions(desk);
    Settle();
    ASSERT_NE(Dialog(), nullptr);
  }
  TwoPorts ports;
};

TEST_F(OptionsDialogTest, OnlyWhatIsChangedIsStored) {
  hive.WriteText(environment.settingsRoot, "RetrySeconds", "7");
  int reloads = 0;
  desk.reload = [&] { ++reloads; };
  const std::string before = Stored("");
  OpenThem();
  EXPECT_EQ(Dialog()->Field("HistoryDays")->Text(), "30") << "what is not stored is shown as it is used";
  EXPECT_EQ(Dialog()->Field("RetrySeconds")->Text(), "7");
  Press("OK", Dialog());
  EXPECT_EQ(Stored(""), before);
  OpenThem();
  EnterInto("HistoryDays", "14");
  EnterInto("CommPortDevice3", "/dev/ttyUSB0");
  Press("OK", Dialog());
  EXPECT_EQ(reloads, 2);
  EXPECT_EQ(hive.ReadNumber(environment.settingsRoot, "HistoryDays", 0), 14);
  EXPECT_EQ(hive.ReadText(environment.settingsRoot, "CommPortDevice3", ""), "/dev/ttyUSB0");
  EXPECT_FALSE(hive.HasValue(environment.settingsRoot, "HistoryMegabytes"));
  EXPECT_FALSE(hive.HasValue(environment.settingsRoot, "DashboardPort"));
  EXPECT_EQ(hive.ReadText(environment.settingsRoot, "RetrySeconds", ""), "7");
}

TEST_F(OptionsDialogTest, TheSerialPortsAndLanguagesThereAreAreOffered) {
  environment.serialPorts = &ports;
  files.Put("/data/Languages/lang-Deutsch.txt", "");
  files.Put("/data/Languages/readme.txt", "");
  OpenThem();
  EnterInto("CommPortDevice1", "tcp:10.0.0.7:4001");
  Pass(std::chrono::seconds(1));
  const auto* device = dynamic_cast<QComboBox*>(Named("CommPortDevice1"));
  ASSERT_NE(device, nullptr);
  ASSERT_EQ(device->count(), 2);
  EXPECT_EQ(device->itemText(1), "/dev/ttyUSB0");
  EXPECT_EQ(device->itemData(1, Qt::ToolTipRole), QString("/dev/ttyUSB0 – USB adapter"));
  EXPECT_EQ(device->currentText(), "tcp:10.0.0.7:4001") << "what was typed meanwhile stays";
  const auto* language = dynamic_cast<QComboBox*>(Named("Language"));
  ASSERT_EQ(language->count(), 1);
  EXPECT_EQ(language->itemText(0), "Deutsch");
}

TEST_F(OptionsDialogTest, BadInputIsShownAndStoresNothing) {
  const std::string before = Stored("");
  for (const auto& [field, text, box] : std::vector<std::array<std::string, 3>>{
           {"DashboardPort", "65536", "Port (0: none) takes a whole number from 0 to 65535, not '65536'"},
           {"HistoryDays", "-1", "Keep it for (days) takes a whole number from 0 to 3650, not '-1'"},
           {"AlarmAfterSeconds", "",
            "After a failure of (seconds) takes a whole number from 0 to 86400, not ''"}}) {
    OpenThem();
    EnterInto(field, text);
    Press("OK", Dialog());
    EXPECT_EQ(BoxText(), box);
    Press("OK");
    EXPECT_EQ(Focused(), field);
    Press("Cancel", Dialog());
    EXPECT_EQ(Stored(""), before);
  }
}

TEST_F(OptionsDialogTest, AStoreThatFailsIsTold) {
  hive.failure = "settings.db: locked";
  OpenOptions(desk);
  Settle();
  EXPECT_EQ(BoxText(), "The options cannot be read: settings.db: locked");
  Press("OK");
  hive.failure.clear();
  OpenThem();
  EnterInto("HistoryDays", "14");
  hive.failure = "settings.db: disk full";
  Press("OK", Dialog());
  EXPECT_EQ(BoxText(), "The options could not be saved: settings.db: disk full");
  hive.failure.clear();
  EXPECT_FALSE(hive.HasValue(environment.settingsRoot, "HistoryDays"));
}

TEST_F(OptionsDialogTest, TheDialogIsWholeAtEveryScale) {
  ExpectWholeTree([&]() -> QWidget* {
    OpenThem();
    return Dialog();
  });
}

}  // namespace
}  // namespace zeb
