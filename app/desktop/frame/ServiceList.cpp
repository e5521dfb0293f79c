#include "app/desktop/frame/ServiceList.h"

#include <algorithm>

#include "app/desktop/frame/Theme.h"
#include "app/desktop/text/Translate.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

QString Text(const std::string& text) {
  return QString::fromStdString(OneLine(text));
}

QString NowText(const StationState& state) {
  QString title = Text(state.current->ItemName), artists = Text(state.current->Artists);
  if (artists.isEmpty()) return title;
  return title.isEmpty() ? artists : artists + " – " + title;
}

// What is wrong, in a few words: the worst output's name and its problem, else the source's.
QString TroubleText(const StationState& state) {
  const auto worst = std::max_element(
      state.outputs.begin(), state.outputs.end(),
      [](const OutputState& one, const OutputState& other) { return one.severity < other.severity; });
  if (worst != state.outputs.end() && worst->severity == Severity::kFailing)
    return Text(worst->Name() + (worst->problem.empty() ? "" : ": " + worst->problem));
  return state.source.healthy ? QString() : Text(state.source.text);
}

}  // namespace

ServiceList::ServiceList(const frmMain& main) : main_(main) {
  ListChanged();
}

void ServiceList::ListChanged() {
  std::vector<Row> rows;
  for (int number = 1; number <= main_.NumberServices(); ++number)
    rows.push_back({main_.Window(number), false, {}, {}, Severity::kOk});
  const bool same = rows.size() == rows_.size() &&
                    std::equal(rows.begin(), rows.end(), rows_.begin(),
                               [](const Row& one, const Row& other) { return one.service == other.service; });
  if (same) return;
  // Added behind the others, as it is while the program starts: what is selected stays so.
  const bool longer = rows.size() > rows_.size() && std::equal(rows_.begin(), rows_.end(), rows.begin(),
                                                               [](const Row& one, const Row& other) {
                                                                 return one.service == other.service;
                                                               });
  if (longer) {
    beginInsertRows({}, static_cast<int>(rows_.size()), static_cast<int>(rows.size()) - 1);
    rows_.insert(rows_.end(), rows.begin() + static_cast<std::ptrdiff_t>(rows_.size()), rows.end());
    return endInsertRows();
  }
  beginResetModel();
  rows_ = std::move(rows);
  endResetModel();
}

void ServiceList::ServiceChanged(int number) {
  if (number < 1 || number > static_cast<int>(rows_.size())) return;
  rows_[static_cast<std::size_t>(number) - 1].fresh = false;
  const QModelIndex changed = index(number - 1);
  emit dataChanged(changed, changed);
}

std::shared_ptr<frmService> ServiceList::At(int row) const {
  return row < 0 || row >= static_cast<int>(rows_.size()) ? nullptr
                                                          : rows_[static_cast<std::size_t>(row)].service;
}

int ServiceList::RowOf(const std::shared_ptr<frmService>& service) const {
  const auto found =
      std::find_if(rows_.begin(), rows_.end(), [&](const Row& row) { return row.service == service; });
  return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

int ServiceList::PutTogether() const {
  return static_cast<int>(
      std::count_if(rows_.begin(), rows_.end(), [](const Row& row) { return row.fresh; }));
}

int ServiceList::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

const ServiceList::Row& ServiceList::Fresh(int row) const {
  Row& kept = rows_[static_cast<std::size_t>(row)];
  if (kept.fresh) return kept;
  const StationState state = kept.service->Board().State();
  kept.now = NowText(state);
  kept.severity = state.Worst();
  kept.trouble = TroubleText(state);
  kept.fresh = true;
  return kept;
}

QVariant ServiceList::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const QString name =
      Text(rows_[static_cast<std::size_t>(index.row())].service->service().settings.ServiceName);
  if (role == Qt::DisplayRole) return name;
  if (role != kNowRole && role != kTroubleRole && role != kSeverityRole && role != Qt::ToolTipRole &&
      role != Qt::AccessibleTextRole)
    return {};
  const Row& row = Fresh(index.row());
  if (role == kNowRole) return row.now;
  if (role == kTroubleRole) return row.trouble;
  if (role == kSeverityRole) return static_cast<int>(row.severity);
  QStringList parts = {name, WordFor(row.severity)};
  if (!row.trouble.isEmpty()) parts << row.trouble;
  if (!row.now.isEmpty()) parts << row.now;
  return parts.join(role == Qt::ToolTipRole ? "\n" : ", ");
}

}  // namespace zeb
