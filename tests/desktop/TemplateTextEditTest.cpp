#include <QMimeData>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <chrono>
#include <functional>

#include "app/desktop/dialogs/TemplateEdit.h"
#include "app/desktop/dialogs/TemplateTextEdit.h"
#include "app/desktop/dialogs/Utf16Carets.h"
#include "tests/desktop/DesktopTest.h"

namespace zeb {
namespace {

const std::string kClef = "𝄞";

class TemplateTextEditTest : public DesktopTest {
 protected:
  TemplateTextEdit& Edit(bool multiLine = true) {
    edit_ = new TemplateTextEdit(multiLine);
    edit_->show();
    edit_->activateWindow();
    return *edit_;
  }
  // The pieces that are drawn so, each with a "|" behind it.
  std::string Pieces(const std::function<bool(const QTextCharFormat&)>& so) {
    QString pieces;
    for (QTextBlock block = edit_->document()->begin(); block.isValid(); block = block.next())
      for (const QTextLayout::FormatRange& range : block.layout()->formats())
        if (so(range.format)) pieces += block.text().mid(range.start, range.length) + "|";
    return pieces.toStdString();
  }
  std::string Coloured(QPalette::ColorRole role) {
    const QColor colour = edit_->palette().color(role);
    return Pieces([&](const QTextCharFormat& format) {
      return format.hasProperty(QTextFormat::ForegroundBrush) && format.foreground().color() == colour;
    });
  }
  std::string Underlined() {
    std::string pieces = Pieces([](const QTextCharFormat& format) {
      return format.underlineStyle() != QTextCharFormat::NoUnderline;
    });
    return pieces.substr(0, pieces.find('|'));
  }
  TemplateTextEdit* edit_ = nullptr;
};

TEST(Utf16CaretsTest, CountBothWays) {
  const std::string text = "a" + kClef + "ä<b>";  // bytes 1 4 2 1 1 1, units 1 2 1 1 1 1
  const std::pair<std::size_t, int> places[] = {{0, 0}, {1, 1}, {5, 3}, {7, 4}, {8, 5}, {10, 7}};
  Utf16Carets carets(text);
  for (const auto& [offset, caret] : places) {
    EXPECT_EQ(carets.At(offset), caret);
    EXPECT_EQ(ByteOffset(text, caret), offset);
  }
  EXPECT_EQ(carets.At(1), 1) << "also backwards";
  EXPECT_EQ(carets.At(99), 7);
  EXPECT_EQ(ByteOffset(text, 2), 5u) << "never inside a character";
  EXPECT_EQ(ByteOffset(text, 99), text.size());
}

TEST_F(TemplateTextEditTest, BackspaceTakesAWholeTag) {
  TemplateTextEdit& edit = Edit();
  edit.SetText(kClef + "x<ZEB_NOW_ItemName>");
  edit.moveCursor(QTextCursor::End);
  QTest::keyClick(&edit, Qt::Key_Backspace);
  EXPECT_EQ(edit.Text(), kClef + "x");
  QTest::keyClick(&edit, Qt::Key_Backspace);
  EXPECT_EQ(edit.Text(), kClef) << "else one character";
  edit.undo();
  edit.undo();
  EXPECT_EQ(edit.Text(), kClef + "x<ZEB_NOW_ItemName>");

  edit.SetText("a>");
  edit.moveCursor(QTextCursor::End);
  QTest::keyClick(&edit, Qt::Key_Backspace);
  EXPECT_EQ(edit.Text(), "a") << "no tag begins there";

  edit.SetText("<b>");
  edit.moveCursor(QTextCursor::End);
  edit.moveCursor(QTextCursor::Left, QTextCursor::KeepAnchor);
  QTest::keyClick(&edit, Qt::Key_Backspace);
  EXPECT_EQ(edit.Text(), "<b") << "a selection is what is deleted";
}

TEST_F(TemplateTextEditTest, TextsComeBackAsTheyWere) {
  TemplateTextEdit& edit = Edit();
  const std::string texts[] = {"",
                               "a",
                               "\n",
                               "a\r\nb\r\n",
                               "a\rb\nc",
                               "\xC2\xA0nbsp ",
                               "\xE2\x80\xA8 \xE2\x80\xA9",
                               kClef,
                               std::string("\0x", 2)};
  for (const std::string& text : texts) {
    edit.SetText(text);
    EXPECT_EQ(edit.Text(), text);
    edit.moveCursor(QTextCursor::End);
    edit.Insert("z");
    EXPECT_NE(edit.Text(), text);
    edit.undo();
    EXPECT_EQ(edit.Text(), text) << "undone";
  }
  edit.SetText("a\r\nb\xC2\xA0");
  edit.moveCursor(QTextCursor::End);
  QTest::keyClick(&edit, Qt::Key_Return);
  QTest::keyClicks(&edit, "c");
  EXPECT_EQ(edit.Text(), "a\r\nb\xC2\xA0\r\nc");
}

TEST_F(TemplateTextEditTest, MarksAreDrawnWhileTyping) {
  TemplateTextEdit& edit = Edit();
  QTest::keyClicks(&edit, "[a");
  ASSERT_EQ(edit.Marks().remarks.size(), 1u);
  EXPECT_EQ(Underlined(), "[") << "told by more than colour";
  QTest::keyClicks(&edit, "]");
  EXPECT_TRUE(edit.Marks().remarks.empty());

  edit.SetText(kClef + "<ZEB_NOW_Nothing>");
  EXPECT_EQ(Underlined(), "<ZEB_NOW_Nothing>");
  edit.SetText("[(<ZEB_NOW_ITEMTYPE>=Song)<ZEB_NOW_ITEMNAME>]\n<ZEB_NEXT_NOTES>");
  EXPECT_EQ(Coloured(QPalette::Link), "<ZEB_NOW_ITEMTYPE>|<ZEB_NOW_ITEMNAME>|<ZEB_NEXT_NOTES>|");
  EXPECT_EQ(Pieces([](const QTextCharFormat& format) { return format.fontWeight() == QFont::Bold; }),
            "[(|=Song)|]|");
  edit.undo();
  EXPECT_FALSE(edit.document()->isUndoAvailable()) << "marks cannot be undone";
}

TEST_F(TemplateTextEditTest, AMegabyteIsTakenWithoutMarks) {
  TemplateTextEdit& edit = Edit();
  std::string text;
  while (text.size() < 1024 * 1024) text += "<ZEB_NOW_ITEMNAME> and some text around it\n";
  edit.SetText(text);
  EXPECT_TRUE(edit.Marks().tooLong);
  EXPECT_EQ(Coloured(QPalette::Link), "");
  EXPECT_EQ(edit.Text(), text);
  edit.moveCursor(QTextCursor::End);
  for (int i = 0; i < 10; ++i) QTest::keyClicks(&edit, "x");
  EXPECT_EQ(edit.Text(), text + "xxxxxxxxxx");
}

TEST_F(TemplateTextEditTest, OneLineLeavesTheReturnKeyToTheDialogAndPastesNoLineEnds) {
  class Field : public TemplateTextEdit {
   public:
    Field() : TemplateTextEdit(false) {}
    using TemplateTextEdit::insertFromMimeData;
  } edit;
  edit.show();
  QTest::keyClicks(&edit, "a");
  QTest::keyClick(&edit, Qt::Key_Return);
  QMimeData pasted;
  pasted.setText("b\r\nc\n");
  edit.insertFromMimeData(&pasted);
  EXPECT_EQ(edit.Text(), "ab c");
  edit.SetText("stored\nso");
  EXPECT_EQ(edit.Text(), "stored\nso") << "what is stored is not changed";
  edit.hide();
}

TEST_F(TemplateTextEditTest, TheFieldShowsItsResultAndOpensTheBuilder) {
  auto* field = new TemplateEdit(desk, nullptr, false);
  field->Input()->setObjectName("SimpleTextFormat");
  int changes = 0;
  field->onChanged = [&] { ++changes; };
  field->SetText("<ZEB_NOW_ITEMNAME>");
  field->show();
  auto* result = dynamic_cast<QLabel*>(Named("Result"));
  EXPECT_EQ(result->text(), "");
  Pass(std::chrono::milliseconds(150));
  EXPECT_EQ(result->text(), "→ \"Paper Moons\"   11 characters");
  EXPECT_EQ(changes, 1);

  dynamic_cast<QAbstractButton*>(Named("BuildSimpleTextFormat"))->click();
  Settle();
  ASSERT_NE(Named("FormatString"), nullptr);
  QTest::keyClicks(Named("FormatString"), "!");
  Press("OK", Named("FormatCreator"));
  EXPECT_EQ(field->Text(), "<ZEB_NOW_ITEMNAME>!");
  EXPECT_GT(changes, 1);
}

}  // namespace
}  // namespace zeb
