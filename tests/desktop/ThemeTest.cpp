#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <set>

#include "app/desktop/frame/Theme.h"

namespace zeb {
namespace {

constexpr Severity kAll[] = {Severity::kOk, Severity::kBusy, Severity::kOff, Severity::kFailing};

TEST(ThemeTest, ContrastIsThatOfTheGuidelines) {
  EXPECT_NEAR(Contrast(Qt::black, Qt::white), 21.0, 0.01);
  EXPECT_NEAR(Contrast(QColor(0x777777), Qt::white), 4.48, 0.01);
  EXPECT_DOUBLE_EQ(Contrast(Qt::red, Qt::red), 1.0);
}

TEST(ThemeTest, EveryTextAndMarkCanBeReadOnItsBackground) {
  for (const ThemeChoice choice : {ThemeChoice::kLight, ThemeChoice::kDark}) {
    ApplyTheme(choice);
    const QPalette palette = QApplication::palette();
    for (const auto back : {QPalette::Window, QPalette::Base, QPalette::AlternateBase, QPalette::Button}) {
      const QColor background = palette.color(back);
      for (const Severity severity : kAll)
        EXPECT_GE(Contrast(ColourOf(severity, palette), background), 4.5)
            << WordOf(choice) << " " << WordOf(severity) << " on role " << back;
      EXPECT_GE(Contrast(WarningColour(palette), background), 4.5) << WordOf(choice) << " warning " << back;
      for (const auto text : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText, QPalette::Link,
                              QPalette::PlaceholderText})
        EXPECT_GE(Contrast(palette.color(text), background), 4.5)
            << WordOf(choice) << " role " << text << " on role " << back;
    }
    EXPECT_GE(Contrast(palette.color(QPalette::HighlightedText), palette.color(QPalette::Highlight)), 4.5);
    EXPECT_GE(Contrast(palette.color(QPalette::ToolTipText), palette.color(QPalette::ToolTipBase)), 4.5);
  }
  ApplyTheme(ThemeChoice::kLight);
}

// In one colour, as for who sees none.
TEST(ThemeTest, MarksAreToldApartByTheirShape) {
  std::set<QByteArray> pictures;
  for (const Severity severity : kAll) {
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    PaintMark(painter, QRectF(0, 0, 16, 16), severity, Qt::black);
    painter.end();
    pictures.insert(QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
  }
  EXPECT_EQ(pictures.size(), std::size(kAll));
}

TEST(ThemeTest, AnUnknownWordIsTheSystemsTheme) {
  for (const ThemeChoice choice : {ThemeChoice::kSystem, ThemeChoice::kLight, ThemeChoice::kDark})
    EXPECT_EQ(ThemeByWord(WordOf(choice)), choice);
  EXPECT_EQ(ThemeByWord("Purple"), ThemeChoice::kSystem);
}

}  // namespace
}  // namespace zeb
