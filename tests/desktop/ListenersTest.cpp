#include <QComboBox>
#include <QTextEdit>

#include "app/desktop/service/ListenersText.h"
#include "tests/desktop/ServiceWindowTest.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr OutputRoom kRds{CharacterSet::kRds, kRdsCharacters};

std::string Marked(const ListenersText& seen) {
  std::string marks;
  for (const auto& one : seen.replaced) marks += "[" + seen.text.mid(one.at, one.length).toStdString() + "]";
  return seen.text.toStdString() + " " + marks;
}

TEST(ListenersTextTest, WhatTheSetLacksIsMarkedWhereItStands) {
  struct Case {
    const char* published;
    CharacterSet set;
    const char* seen;
    const char* lost;
  };
  for (const Case& one : {
           Case{"Waterloo", CharacterSet::kRds, "Waterloo ", ""},
           Case{"Łódź", CharacterSet::kWindows1252, "Lódz [L][z]",
                "cannot be sent: \"Ł\" → \"L\", \"ź\" → \"z\""},
           Case{"Łódź", CharacterSet::kUtf8, "Łódź ", ""},
           Case{"日本 日本", CharacterSet::kIso8859_1, "?? ?? [?][?][?][?]",
                "cannot be sent: \"日\" → \"?\", \"本\" → \"?\""},
           Case{"e\u0301t\u00E9", CharacterSet::kWindows1252, "eté [e]",
                "cannot be sent: \"e\u0301\" → \"e\""},  // an accent apart from its letter
           Case{"", CharacterSet::kRds, " ", ""},
       }) {
    const OutputRoom room{one.set};
    const ListenersText seen = SeenByListeners(one.published, "", room);
    EXPECT_EQ(Marked(seen), one.seen) << one.published;
    EXPECT_EQ(seen.Lost().toStdString(), one.lost);
  }
}

TEST(ListenersTextTest, CountsAgainstTheRoom) {
  EXPECT_EQ(SeenByListeners("Waterloo", "", kRds).Counter(kRds).toStdString(), "8 / 64");
  const OutputRoom label{CharacterSet::kUtf8, 128, true};
  EXPECT_EQ(SeenByListeners("été", "", label).Counter(label).toStdString(), "3 / 128");
  EXPECT_EQ(SeenByListeners("日本", "", label).Counter(label).toStdString(), "6 / 128")
      << "as UTF-8 on the air";
  EXPECT_EQ(SeenByListeners("x", "", {CharacterSet::kUtf8}).Counter({}).toStdString(), "1");
}

TEST(ListenersTextTest, TellsWhatWasCutWhenItIsKnownWhatWasWanted) {
  const ListenersText cut = SeenByListeners("Dancing in", "Dancing in the Dark", kRds);
  EXPECT_EQ(cut.text.toStdString(), "Dancing in");
  EXPECT_EQ(cut.Lost().toStdString(), "does not fit: \" the Dark\"");
  const ListenersText kept = SeenByListeners("Lodz", "Łodz", {CharacterSet::kRds});
  EXPECT_EQ(Marked(kept), "Lodz [L]") << "it was put into the set before it was sent";
  // Other items by now: what they would give says nothing.
  EXPECT_EQ(SeenByListeners("Waterloo", "Fernando", kRds).Lost().toStdString(), "");
}

class ListenersViewTest : public ServiceWindowTest {
 protected:
  void Show() {
    OpenWindow();
    window->ShowPage(ServiceWindow::Page::kListeners);
  }
  std::string Whole() { return window->findChild<QTextEdit*>("listenersText")->toPlainText().toStdString(); }
};

// Columns.
constexpr int kSees = 1, kCharacters = 2, kSet = 3, kLost = 4;

TEST_F(ListenersViewTest, EachTypeInItsOwnCharacterSet) {
  Station("Demo FM");
  AddFile();
  AddSerial();
  Output(1, OutputType::kHTTP, {{"ServerName1", "nobody"}, {"CharacterSet1", "ISO-8859-1"}});
  Output(1, OutputType::kEncoder, {{"EncoderType1", "2"}});
  Output(1, OutputType::kDAB, {{"ServerName1", "nobody"}});
  Show();
  Say("SET_CURRENT_ITEM IType=7 ITitle=\"Łódź日\" AName1=X");
  PassDrawn(3s);
  const QAbstractItemModel* model = Grid("listeners")->model();
  std::map<std::string, int> rows;
  for (int row = 0; row < model->rowCount(); ++row) rows[Cell("listeners", row, 0)] = row;
  ASSERT_EQ(rows.size(), 5U);
  EXPECT_EQ(Cell("listeners", rows["File 1"], kSees), "now.txt");
  EXPECT_EQ(Cell("listeners", rows["File 1"], kSet), "of the template");
  EXPECT_EQ(Cell("listeners", rows["Serial 1"], kSet), "RDS");
  EXPECT_EQ(Cell("listeners", rows["Serial 1"], kSees), "Lódź? by X...");
  EXPECT_EQ(Cell("listeners", rows["Serial 1"], kCharacters), "13 / 64");
  EXPECT_EQ(Cell("listeners", rows["Serial 1"], kLost), "▲ 2 replaced");
  EXPECT_EQ(Cell("listeners", rows["HTTP 1"], kSet), "ISO-8859-1");
  EXPECT_EQ(Cell("listeners", rows["HTTP 1"], kSees), "") << "nothing was taken by anybody";
  EXPECT_EQ(Cell("listeners", rows["Encoder 1"], kSet), "UTF-8");
  EXPECT_EQ(Cell("listeners", rows["DAB 1"], kSet), "UTF-8");
}

TEST_F(ListenersViewTest, FollowsTheChosenOutputAndShowsItWhole) {
  Station("Demo FM");
  AddFile();
  AddSerial();
  Show();
  EXPECT_EQ(Text("listenersCaption"), "Choose an output to see its whole text.");
  Say("SET_CURRENT_ITEM IType=7 ITitle=\"Łódź日\" AName1=X");
  PassDrawn(3s);
  Choose(1);
  Drawn();
  EXPECT_EQ(Text("listenersCaption"),
            "Serial 1 · 13 / 64 characters in RDS · cannot be sent: \"Ł\" → \"L\", \"日\" → \"?\"");
  EXPECT_EQ(Whole(), "Lódź? by X...\n");
  QTextCursor cursor(window->findChild<QTextEdit*>("listenersText")->document());
  cursor.setPosition(1);
  EXPECT_EQ(cursor.charFormat().underlineStyle(), QTextCharFormat::WaveUnderline);
  cursor.setPosition(2);
  EXPECT_NE(cursor.charFormat().underlineStyle(), QTextCharFormat::WaveUnderline);
  Choose(0);
  Drawn();
  EXPECT_NE(Whole().find("/w/now.txt ("), std::string::npos);
  EXPECT_NE(Whole().find("Now: Łódź"), std::string::npos);
}

}  // namespace
}  // namespace zeb
