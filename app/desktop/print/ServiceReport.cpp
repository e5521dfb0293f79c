#include "app/desktop/print/ServiceReport.h"

#include <QString>
#include <map>
#include <utility>

#include "app/desktop/text/Translate.h"
#include "dialogs/SecretSettings.h"
#include "history/HistoryCursor.h"
#include "history/HistoryRecord.h"
#include "text/Numbers.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

constexpr std::size_t kMostValue = 2000;  // characters of one setting

QString Escaped(const std::string& text) {
  return QString::fromStdString(text).left(kMostValue).toHtmlEscaped().replace('\n', "<br>");
}

QString Cell(const QString& html) {
  return "<td>" + html + "</td>";
}

QString Head(const std::vector<QString>& columns) {
  QString row = "<tr>";
  // Two columns are a name and what it is: in all tables of a sheet side by side.
  const QString width = columns.size() == 2 ? "<th align=\"left\" width=\"35%\">" : "<th align=\"left\">";
  for (const QString& column : columns) row += width + column.toHtmlEscaped() + "</th>";
  return row + "</tr>";
}

QString Title(const std::string& name, const QString& what, WallTime now) {
  return "<h1>" + Escaped(name) + "</h1><p>" + what.toHtmlEscaped() + "<br>" +
         T("Printed %1, ZEB %2").arg(QString::fromStdString(GeneralDate(now)), ZEB_VERSION).toHtmlEscaped() +
         "</p>";
}

constexpr char kTable[] = "<table width=\"100%\" cellspacing=\"0\" cellpadding=\"3\" border=\"1\">";

// Values of one output: "URL2" and "Output2.AddNoCache1" are of output 2; 0: of all of the type.
int OutputOf(const std::string& name, std::string& shown) {
  constexpr std::string_view kOutput = "Output";
  if (const std::size_t dot = name.find('.'); dot != std::string::npos && name.starts_with(kOutput)) {
    shown = name.substr(dot + 1);
    return WholeNumber<int>(std::string_view(name).substr(kOutput.size(), dot - kOutput.size())).value_or(0);
  }
  const std::size_t end = name.find_last_not_of("0123456789") + 1;
  shown = name.substr(0, end);
  return WholeNumber<int>(std::string_view(name).substr(end)).value_or(0);
}

QString Row(const std::string& name, const SettingsData& data) {
  const auto* text = std::get_if<std::string>(&data);
  return "<tr>" + Cell(Escaped(name)) +
         Cell(text ? Escaped(*text)
                   : QString::number(static_cast<std::int32_t>(std::get<std::uint32_t>(data)))) +
         "</tr>";
}

QString SettingsTable(const QString& rows) {
  return kTable + Head({T("Setting"), T("Value")}) + rows + "</table>";
}

QString OutputsTable(const StationState& state) {
  if (state.outputs.empty()) return "<p>" + T("No outputs").toHtmlEscaped() + "</p>";
  QString html = kTable + Head({T("Output"), T("Settings"), T("State")});
  for (const OutputState& output : state.outputs)
    html += "<tr>" + Cell(Escaped(output.Name())) + Cell(Escaped(output.info)) +
            Cell(T(output.status).toHtmlEscaped() +
                 (output.problem.empty() ? "" : ": " + Escaped(output.problem))) +
            "</tr>";
  return html + "</table>";
}

// The settings of one key below the service's: an output type, or one that this program does not know.
QString KeySections(const SettingsTreeKey& key) {
  std::map<int, QString> rows;
  for (const SettingsValue& value : key.values) {
    std::string shown;
    const int output = OutputOf(value.name, shown);
    rows[output] += Row(shown, value.data);
  }
  QString html;
  const std::string type = key.path.substr(1);
  for (const auto& [output, text] : rows)
    html +=
        "<h3>" + Escaped(type + (output > 0 ? std::to_string(output) : "")) + "</h3>" + SettingsTable(text);
  return html;
}

}  // namespace

std::string ConfigurationReport(const StationState& state, const SettingsTree& settings, WallTime now) {
  std::vector<std::string> secrets;
  const SettingsTree masked = MaskSecrets(settings, secrets);
  QString html = Title(state.name, T("Service %1: configuration").arg(state.number), now);
  html += "<p>" + T("Source: %1").arg(QString::fromStdString(state.source.text)).toHtmlEscaped() + "</p>";
  html += "<h2>" + T("Outputs").toHtmlEscaped() + "</h2>" + OutputsTable(state);
  QString rows, sections;
  for (const SettingsTreeKey& key : masked) {
    if (!key.path.empty()) {
      sections += KeySections(key);
      continue;
    }
    for (const SettingsValue& value : key.values) rows += Row(value.name, value.data);
  }
  html += "<h2>" + T("Settings").toHtmlEscaped() + "</h2>" + SettingsTable(rows) + sections;
  // A password may stand in other texts too: an address, a problem's reason.
  return HideWords(html.toStdString(), secrets);
}

Result<PlayedDay> ReadPlayedDay(const OpenHistory& open, int service, std::chrono::local_days day,
                                std::chrono::seconds utcOffset) {
  if (!open) return Failure{"no history is kept"};
  const auto reader = open();
  if (!reader) return reader.AsFailure();
  // An hour more on both sides, since the clocks may have been changed between then and now.
  constexpr std::chrono::hours kMargin(2);
  HistoryFilter filter;
  filter.service = service;
  filter.slot = kHistoryCurrent;
  filter.from = HistoryMoment(WallTime(day - kMargin), utcOffset).utc;
  filter.to = HistoryMoment(WallTime(day + std::chrono::days(1) + kMargin), utcOffset).utc;
  PlayedDay played;
  HistoryCursor<HistoryItem> items = ItemsOf(*reader.Value(), filter);
  for (; const HistoryItem* row = items.Peek(); items.Skip()) {
    const WallTime moment = row->moment.Local();
    if (std::chrono::floor<std::chrono::days>(moment) != day) continue;
    const std::optional<clsZEBItemInfo> item = ReadItemRecord(row->record);
    if (!item || row->record.empty()) continue;
    if (played.items.size() >= kMostPlayed) {
      played.more = true;
      break;
    }
    played.items.push_back({moment, *item});
  }
  if (!items.outcome()) return Failure{items.outcome().Reason()};
  return played;
}

std::string PlayHistoryReport(const std::string& serviceName, const PlayedDay& played,
                              std::chrono::local_days day, WallTime now) {
  QString html =
      Title(serviceName,
            T("Played on %1").arg(QString::fromStdString(FormatDateTime(WallTime(day), "dddddd"))), now);
  if (played.items.empty())
    return (html + "<p>" + T("Nothing was played").toHtmlEscaped() + "</p>").toStdString();
  html += kTable + Head({T("Time"), T("Title"), T("Artists"), T("Type"), T("Length")});
  for (const PlayedItem& one : played.items)
    html +=
        "<tr>" + Cell(QString::fromStdString(FormatDateTime(one.moment, "hh:nn:ss"))) +
        Cell(Escaped(one.item->ItemName)) + Cell(Escaped(one.item->Artists)) +
        Cell(T(ItemTypeText(one.item->ItemType)).toHtmlEscaped()) +
        Cell(QString::fromStdString(one.item->CartItemLength > 0 ? TimeText(one.item->CartItemLength) : "")) +
        "</tr>";
  html += "</table><p>" + T("%1 items").arg(played.items.size()).toHtmlEscaped();
  if (played.more) html += " " + T("(there were more; these are the first)").toHtmlEscaped();
  return (html + "</p>").toStdString();
}

}  // namespace zeb
