#include "app/desktop/service/StationRows.h"

#include <utility>

#include "app/desktop/service/SeverityMark.h"
#include "app/desktop/service/ShownText.h"
#include "app/desktop/text/Translate.h"
#include "text/SharedTime.h"

namespace zeb {

namespace {

// Keys of the items' rows, in their order.
constexpr std::uint64_t kNowKey = 0, kComingKey = 1000, kPreviousKey = 2000;

GridRow ItemRow(std::uint64_t key, const QString& slot, const clsZEBItemInfo& item) {
  GridRow row;
  row.key = key;
  row.strong = key == kNowKey;
  const bool timed = item->ItemStartTime > 0 || item->ItemStartDate > 0;
  row.cells = {{slot},
               {CellText(item->ItemName)},
               {CellText(item->Artists)},
               {T(ItemTypeText(item->ItemType))},
               {timed ? QString::fromStdString(TimeText(item->ItemStartTime)) : QString()},
               {ItemLengthText(item)}};
  return row;
}

void AddSlots(std::vector<GridRow>& rows, std::uint64_t firstKey, const QString& caption,
              const std::vector<clsZEBItemInfo>& items) {
  for (std::size_t i = 0; i < items.size(); ++i)
    rows.push_back(ItemRow(firstKey + i, caption.arg(i + 1), items[i]));
}

// All that is wrong, each in a line.
QString WholeProblem(const OutputState& state, clsZEBTemplate& output) {
  QStringList lines;
  if (state.failingSince) lines << T("Failing since %1").arg(ClockText(*state.failingSince));
  if (state.stale && state.staleSince)
    lines << T("Shows an older item since %1").arg(ClockText(*state.staleSince));
  for (const clsZEBTemplate::Problem& problem : output.Problems())
    lines << CellText((problem.thing.empty() ? "" : problem.thing + ": ") + problem.reason, 1000);
  if (output.Problems().empty() && !state.problem.empty()) lines << CellText(state.problem, 1000);
  return lines.join('\n');
}

QString WholeShown(const OutputState& state) {
  QStringList lines;
  if (!state.shown.text.empty()) lines << LinesText(state.shown.text);
  for (const Shown::Page& page : state.shown.pages)
    lines << T("%1 (%2 bytes)").arg(CellText(page.name)).arg(page.bytes);
  return lines.join('\n');
}

GridCell StateCell(const OutputState& state) {
  if (!state.progress) return {StateWord(state)};
  return {QStringLiteral("%1 %").arg(*state.progress), {}, *state.progress};
}

GridRow OutputRow(const OutputState& state, const OutputPtr& output) {
  GridRow row;
  row.key = KeyOf(output);
  row.mark = MarkOf(state);
  row.strong = state.severity == Severity::kFailing;
  const QString title = OutputTitle(*output, state.number), status = T(state.status),
                problem = CellText(state.problem);
  row.accessible = title + ", " + StateWord(state) + ", " + status;
  QString sent = state.published ? ClockText(*state.published) : QString();
  if (const QString line = ShownLine(state.shown); !line.isEmpty()) sent += "  " + line;
  row.cells = {{title},
               StateCell(state),
               {status},
               {CellText(state.info)},
               {sent, WholeShown(state)},
               {state.latency ? TookText(*state.latency) : QString()},
               {problem, WholeProblem(state, *output)}};
  return row;
}

}  // namespace

// ---- Items

QStringList ItemColumns() {
  return {T("Slot"), T("Title"), T("Artists"), T("Type"), T("Start"), T("Length")};
}

std::vector<GridRow> ItemRows(const StationState& state) {
  std::vector<GridRow> rows;
  rows.push_back(ItemRow(kNowKey, T("now"), state.current));
  AddSlots(rows, kNowKey + 1, T("next %1"), state.next);
  if (!state.comingSoon.HoldsNothing())
    rows.push_back(ItemRow(kComingKey, T("coming soon"), state.comingSoon));
  AddSlots(rows, kPreviousKey, T("previous %1"), state.previous);
  return rows;
}

// ---- Outputs

QStringList OutputColumns() {
  return {T("Output"), T("State"), T("Status"), T("Settings"), T("Last sent"), T("Took"), T("Problem")};
}

std::vector<GridRow> OutputRows(const StationState& state, const clsZEBService& service) {
  std::vector<GridRow> rows;
  for (const OutputState& one : state.outputs)
    if (const OutputPtr output = service.Output(one.type, one.number)) rows.push_back(OutputRow(one, output));
  return rows;
}

std::uint64_t KeyOf(const OutputPtr& output) {
  return reinterpret_cast<std::uintptr_t>(output.get());
}

OutputPtr OutputOf(std::uint64_t key, const clsZEBService& service) {
  for (const OutputTypeInfo& info : kOutputTypes)
    for (int i = 1; OutputPtr output = service.Output(info.type, i); ++i)
      if (KeyOf(output) == key) return output;
  return nullptr;
}

QString OutputTitle(const clsZEBTemplate& output, int number) {
  return QStringLiteral("%1 %2").arg(QString::fromStdString(output.GetShortTypeDescription())).arg(number);
}

QString ShownLine(const Shown& shown) {
  if (!shown.text.empty()) return CellText(shown.text);
  QStringList names;
  for (const Shown::Page& page : shown.pages) names << FileNameOf(page.name);
  return CellText(names.join(", ").toStdString());
}

QString FileNameOf(const std::string& path) {
  const std::size_t cut = path.find_last_of("/\\");
  return CellText(cut == std::string::npos ? path : path.substr(cut + 1));
}

}  // namespace zeb
