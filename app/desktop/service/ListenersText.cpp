#include "app/desktop/service/ListenersText.h"

#include <QStringList>
#include <QTextBoundaryFinder>
#include <algorithm>

#include "app/desktop/service/ShownText.h"
#include "app/desktop/text/Translate.h"
#include "history/HistorySnapshots.h"
#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/labels/LabelWords.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/wire/WireCharacters.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

OutputRoom SerialRoom(const SerialSettings& settings) {
  OutputRoom room{settings.characterSet};
  if (settings.MaxNumberChars > 0)
    room.most = static_cast<std::size_t>(settings.MaxNumberChars);
  else if (settings.characterSet == CharacterSet::kRds)
    room.most = kRdsCharacters;
  return room;
}

OutputRoom DABRoom(const DABSettings& settings) {
  const std::int32_t most = LeadingInteger(settings.MaxNumberChars);
  if (most > 0 && static_cast<std::size_t>(most) < kMaxLabelBytes)
    return {settings.characterSet, static_cast<std::size_t>(most)};
  return {settings.characterSet, kMaxLabelBytes, true};
}

CharacterSet EncoderSet(const EncoderSettings& settings) {
  return settings.IcecastMount.empty() ? settings.characterSet : CharacterSet::kUtf8;
}

}  // namespace

OutputRoom RoomOf(const clsZEBTemplate& output) {
  if (const auto* serial = dynamic_cast<const clsZEBSerialOutput*>(&output))
    return SerialRoom(serial->settings);
  if (const auto* dab = dynamic_cast<const clsZEBDABOutput*>(&output)) return DABRoom(dab->settings);
  if (const auto* encoder = dynamic_cast<const clsZEBEncoderOutput*>(&output))
    return {EncoderSet(encoder->settings)};
  if (const auto* http = dynamic_cast<const clsZEBHTTPOutput*>(&output)) return {http->settings.characterSet};
  return {};
}

namespace {

// Piece by piece as a reader takes them, so that a letter and its accents count as one.
void AppendKept(ListenersText& seen, const QString& text, CharacterSet set) {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  for (qsizetype from = 0, to = finder.toNextBoundary(); to > from; from = to, to = finder.toNextBoundary()) {
    const QString piece = text.mid(from, to - from);
    if (piece == QStringLiteral("\n") || set == CharacterSet::kUtf8) {
      seen.text += piece;
      continue;
    }
    const QString kept = QString::fromStdString(KeepToSet(piece.toStdString(), set));
    if (kept != piece.normalized(QString::NormalizationForm_C))
      seen.replaced.push_back({seen.text.size(), kept.size(), piece, kept});
    seen.text += kept;
  }
}

std::size_t CharactersOf(const std::string& text, CharacterSet set, bool asLabel) {
  return asLabel ? LabelBytes(text) : CountInSet(text, set);
}

}  // namespace

// What was published may have been cut and put into the set already; then what it was made of says what is
// missing. That is of use only when it gives the same text, for the items may be others by now.
ListenersText SeenByListeners(const std::string& published, const std::string& wanted,
                              const OutputRoom& room) {
  const CharacterSet set = room.set.value_or(CharacterSet::kUtf8);
  ListenersText seen, whole;
  AppendKept(seen, LinesText(published), set);
  AppendKept(whole, LinesText(wanted), set);
  if (!seen.text.isEmpty() && whole.text.startsWith(seen.text)) {
    whole.cut = whole.text.mid(seen.text.size());
    whole.text.truncate(seen.text.size());
    std::erase_if(whole.replaced, [&](const auto& one) { return one.at >= seen.text.size(); });
    seen = std::move(whole);
  }
  seen.characters = CharactersOf(seen.text.toStdString(), set, room.asLabel);
  return seen;
}

std::string WantedText(const Shown& shown, const SnapshotPtr& snapshot) {
  if (!shown.source.templateText || !snapshot) return {};
  const ValueEncoding values{.urlEncode = shown.source.urlEncode, .escape = shown.source.escape};
  return ExpandAgainst(*snapshot, *shown.source.templateText, false, shown.source.simpleText, values)
      .value_or("");
}

QString ListenersText::Counter(const OutputRoom& room) const {
  if (!room.most) return QString::number(characters);
  return QStringLiteral("%1 / %2").arg(characters).arg(*room.most);
}

QString ListenersText::Lost() const {
  constexpr qsizetype kMost = 20;
  QStringList lines;
  for (const Replaced& one : replaced) {
    const QString line = one.to.isEmpty() ? T("\"%1\" is left out").arg(one.from)
                                          : QStringLiteral("\"%1\" → \"%2\"").arg(one.from, one.to);
    if (lines.size() < kMost && !lines.contains(line)) lines << line;
  }
  if (!lines.isEmpty()) lines = {T("cannot be sent: %1").arg(lines.join(", "))};
  if (!cut.isEmpty()) lines << T("does not fit: \"%1\"").arg(cut);
  return lines.join(QStringLiteral(" · "));
}

}  // namespace zeb
