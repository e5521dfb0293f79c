#include "app/desktop/service/ShownText.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

#include "text/Lines.h"
#include "text/OneLine.h"
#include "text/SharedTime.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

constexpr std::size_t kMostBytesOfACharacter = 4;

// Marks and overrides of direction: one in a title would turn the artist beside it round.
bool TurnsDirection(QChar c) {
  const char16_t code = c.unicode();
  return code == 0x200E || code == 0x200F || code == 0x061C || (code >= 0x202A && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

QString WithoutTurns(std::string_view text) {
  QString shown = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  shown.removeIf(TurnsDirection);
  return shown;
}

}  // namespace

QString CellText(std::string_view text, std::size_t mostCharacters) {
  const std::string_view start =
      FirstCharacters(text.substr(0, (mostCharacters + 1) * kMostBytesOfACharacter), mostCharacters + 1);
  QString shown = WithoutTurns(OneLine(start, mostCharacters));
  if (CountCharacters(start) > mostCharacters) shown += QChar(0x2026);
  return shown;
}

QString LinesText(std::string_view text, std::size_t mostCharacters) {
  QStringList lines;
  ForEachLine(FirstCharacters(text.substr(0, mostCharacters * kMostBytesOfACharacter), mostCharacters),
              [&](std::string_view line) { lines << WithoutTurns(OneLine(line, mostCharacters)); });
  return lines.join('\n');
}

QString TitleAndArtists(const clsZEBItemInfo& item) {
  const QString title = CellText(item->ItemName), artists = CellText(item->Artists);
  if (title.isEmpty() || artists.isEmpty()) return title + artists;
  return title + QStringLiteral(" — ") + artists;
}

QString ClockText(WallTime moment) {
  return QString::fromStdString(FormatDateTime(moment, "hh:nn:ss"));
}

QString LengthText(float seconds) {
  if (!(seconds >= 1)) return {};
  const auto whole = static_cast<int>(std::min(seconds, 359999.0F));
  const int hours = whole / 3600, minutes = whole / 60 % 60;
  const QString tail = QStringLiteral("%1").arg(whole % 60, 2, 10, QChar('0'));
  if (hours == 0) return QString::number(minutes) + ':' + tail;
  return QStringLiteral("%1:%2:%3").arg(hours).arg(minutes, 2, 10, QChar('0')).arg(tail);
}

QString ItemLengthText(const clsZEBItemInfo& item) {
  return LengthText(item->CartItemLength > 0 ? item->CartItemLength : item->CopyrightTotalDuration);
}

QString TookText(Duration time) {
  const double ms = std::chrono::duration<double, std::milli>(time).count();
  if (ms < 10) return QString::number(ms, 'f', 1) + QStringLiteral(" ms");
  if (ms < 1000) return QString::number(ms, 'f', 0) + QStringLiteral(" ms");
  if (ms < 120000) return QString::number(ms / 1000, 'f', 1) + QStringLiteral(" s");
  return QString::number(ms / 60000, 'f', 0) + QStringLiteral(" min");
}

}  // namespace zeb
