#include "platform/common/SqliteHistoryReader.h"

#include <algorithm>
#include <utility>

#include "platform/common/HistoryFile.h"

namespace zeb {
namespace {

using Update = HistoryReader::Update;

constexpr char kItemColumns[] =
    "SELECT i.id, i.at, i.zone, i.service, i.slot, n.data, s.data, r.data FROM items i "
    "LEFT JOIN blobs n ON n.id = i.name LEFT JOIN blobs s ON s.id = i.source "
    "LEFT JOIN blobs r ON r.id = i.record ";
constexpr char kPublicationColumns[] =
    "SELECT i.id, i.at, i.zone, i.service, i.output, i.part, p.data, t.data, i.digest, i.bytes, i.latency, "
    "e.data, s.data, i.update_id, i.update_at, i.update_zone, i.encoding FROM publications i "
    "LEFT JOIN blobs p ON p.id = i.problem LEFT JOIN blobs t ON t.id = i.shown "
    "LEFT JOIN blobs e ON e.id = i.template LEFT JOIN blobs s ON s.id = i.simple ";
constexpr char kUpdateColumns[] =
    "SELECT i.id, i.at, i.zone, i.service, i.cause, i.words, i.slots FROM updates i ";
// The condition that HistoryFilter and HistoryPlace make, and the order.
constexpr char kSpan[] =
    "WHERE i.at >= max(?1, ?2) AND i.at < ?3 AND (i.at, i.id) > (?2, ?4) AND (?5 = 0 OR i.service = ?5) ";
constexpr char kInOrder[] = "ORDER BY i.at, i.id LIMIT ";

HistoryMoment MomentAt(const HistoryQuery& row, int column) {
  return {row.Number(column), std::chrono::seconds(row.Number(column + 1))};
}

HistoryItem ItemOf(const HistoryQuery& row) {
  HistoryItem item;
  item.id = row.Number(0);
  item.moment = MomentAt(row, 1);
  item.service = static_cast<int>(row.Number(3));
  item.slot = static_cast<int>(row.Number(4));
  item.serviceName = row.Text(5);
  item.source = row.Text(6);
  item.record = row.Text(7);
  return item;
}

HistoryPublication PublicationOf(const HistoryQuery& row) {
  HistoryPublication shown;
  shown.id = row.Number(0);
  shown.moment = MomentAt(row, 1);
  shown.service = static_cast<int>(row.Number(3));
  shown.output = row.Text(4);
  shown.part = row.Text(5);
  shown.problem = row.Text(6);
  shown.text = row.Text(7);
  shown.digest = row.Text(8);
  shown.bytes = static_cast<std::uint64_t>(row.Number(9));
  if (!row.IsNull(10)) shown.latency = std::chrono::microseconds(row.Number(10));
  shown.templateText = row.Text(11);
  shown.simpleText = row.Text(12);
  shown.update = row.Number(13);
  shown.updateMoment = MomentAt(row, 14);
  shown.encoding = static_cast<int>(row.Number(16));
  return shown;
}

std::optional<std::uint64_t> TakeNumber(std::string_view& bytes) {
  std::uint64_t number = 0;
  for (unsigned shift = 0; !bytes.empty() && shift < 63; shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes.front());
    bytes.remove_prefix(1);
    number |= static_cast<std::uint64_t>(byte & 0x7Fu) << shift;
    if (byte < 0x80) return number;
  }
  return std::nullopt;
}

Update UpdateOf(const HistoryQuery& row) {
  Update update;
  update.id = row.Number(0);
  update.moment = MomentAt(row, 1);
  update.service = static_cast<int>(row.Number(3));
  update.cause = static_cast<int>(row.Number(4));
  update.words = row.Number(5);
  const std::string slots = row.Text(6);
  std::string_view rest = slots;
  while (!rest.empty()) {
    const auto slot = TakeNumber(rest);
    const auto record = slot ? TakeNumber(rest) : std::nullopt;
    if (!record) break;
    const int number = static_cast<int>(*slot % 2 == 1 ? -static_cast<std::int64_t>((*slot + 1) / 2)
                                                       : static_cast<std::int64_t>(*slot / 2));
    update.items.emplace_back(number, static_cast<std::int64_t>(*record));
  }
  return update;
}

HistoryQuery& BindSpan(HistoryQuery& query, const HistoryFilter& filter, HistoryPlace place) {
  return query.Bind(filter.from).Bind(place.utc).Bind(filter.to).Bind(place.id).Bind(filter.service);
}

template <class Row>
std::vector<Row> RowsOf(HistoryQuery& query, Row (*rowOf)(const HistoryQuery&)) {
  std::vector<Row> rows;
  while (query.Step()) rows.push_back(rowOf(query));
  return rows;
}

template <class Row>
std::optional<Row> FirstOf(HistoryQuery& query, Row (*rowOf)(const HistoryQuery&)) {
  return query.Step() ? std::optional<Row>(rowOf(query)) : std::nullopt;
}

std::string TextOf(const HistoryQuery& row) {
  return row.Text(0);
}

// What the database cannot do becomes the failure of the call.
template <class Work>
auto Guarded(Work work) -> Result<decltype(work())> {
  try {
    return work();
  } catch (const HistoryFileError& error) {
    return Failure{error.outcome.reason};
  }
}

}  // namespace

SqliteHistoryReader::SqliteHistoryReader(std::unique_ptr<HistoryFile> file) : file_(std::move(file)) {}

SqliteHistoryReader::~SqliteHistoryReader() = default;

Result<std::unique_ptr<HistoryReader>> SqliteHistoryReader::Open(const std::string& path) {
  Result<std::unique_ptr<HistoryFile>> file = HistoryFile::OpenToRead(path);
  if (!file) return file.AsFailure();
  return std::unique_ptr<HistoryReader>(new SqliteHistoryReader(std::move(file.Value())));
}

Result<std::vector<HistoryItem>> SqliteHistoryReader::Items(const HistoryFilter& filter, HistoryPlace place,
                                                            int most) {
  return Guarded([&] {
    HistoryQuery query(*file_, std::string(kItemColumns) + kSpan + (filter.slot ? "AND i.slot = ?6 " : "") +
                                   kInOrder + std::to_string(most));
    BindSpan(query, filter, place);
    if (filter.slot) query.Bind(*filter.slot);
    return RowsOf(query, ItemOf);
  });
}

Result<std::vector<HistoryPublication>> SqliteHistoryReader::Publications(const HistoryFilter& filter,
                                                                          HistoryPlace place, int most) {
  return Guarded([&] {
    const bool one = !filter.output.empty();
    HistoryQuery query(*file_, std::string(kPublicationColumns) + kSpan +
                                   (one ? "AND i.output = ?6 COLLATE NOCASE " : "") + kInOrder +
                                   std::to_string(most));
    BindSpan(query, filter, place);
    if (one) query.Text(filter.output);
    return RowsOf(query, PublicationOf);
  });
}

Result<std::vector<Update>> SqliteHistoryReader::Updates(const HistoryFilter& filter, HistoryPlace place,
                                                         int most) {
  return Guarded([&] {
    HistoryQuery query(*file_, std::string(kUpdateColumns) + kSpan + kInOrder + std::to_string(most));
    BindSpan(query, filter, place);
    return RowsOf(query, UpdateOf);
  });
}

Result<std::optional<Update>> SqliteHistoryReader::FindUpdate(std::int64_t id) {
  return Guarded([&] {
    HistoryQuery query(*file_, std::string(kUpdateColumns) + "WHERE i.id = ?1");
    query.Bind(id);
    return FirstOf(query, UpdateOf);
  });
}

Result<std::string> SqliteHistoryReader::Bytes(std::int64_t number) {
  return Guarded([&] {
    HistoryQuery query(*file_, "SELECT data FROM blobs WHERE id = ?1");
    query.Bind(number);
    return query.Step() ? TextOf(query) : std::string();
  });
}

Result<std::vector<std::string>> SqliteHistoryReader::Outputs(int service) {
  return Guarded([&] {
    HistoryQuery query(*file_, "SELECT DISTINCT output FROM publications WHERE service = ?1 ORDER BY output");
    query.Bind(service);
    return RowsOf(query, TextOf);
  });
}

Result<std::vector<std::string>> SqliteHistoryReader::Parts(int service, const std::string& output) {
  return Guarded([&] {
    HistoryQuery query(*file_,
                       "SELECT DISTINCT part FROM publications WHERE service = ?1 AND output = ?2 "
                       "ORDER BY part");
    query.Bind(service).Text(output);
    return RowsOf(query, TextOf);
  });
}

Result<std::optional<HistoryPublication>> SqliteHistoryReader::LastPublication(
    int service, const std::string& output, const std::string& part, std::int64_t utc, HistoryResult result) {
  return Guarded([&] {
    const char* wanted = result == HistoryResult::kAny         ? ""
                         : result == HistoryResult::kPublished ? "AND i.failed = 0 "
                                                               : "AND i.failed = 1 ";
    HistoryQuery query(*file_, std::string(kPublicationColumns) +
                                   "WHERE i.service = ?1 AND i.output = ?2 AND i.part = ?3 AND i.at <= ?4 " +
                                   wanted + "ORDER BY i.at DESC, i.id DESC LIMIT 1");
    query.Bind(service).Text(output).Text(part).Bind(utc);
    return FirstOf(query, PublicationOf);
  });
}

Result<std::optional<HistoryItem>> SqliteHistoryReader::LastItem(int service, int slot, std::int64_t utc) {
  return Guarded([&] {
    HistoryQuery query(*file_, std::string(kItemColumns) +
                                   "WHERE i.service = ?1 AND i.slot = ?2 AND i.at <= ?3 "
                                   "ORDER BY i.at DESC, i.id DESC LIMIT 1");
    query.Bind(service).Bind(slot).Bind(utc);
    return FirstOf(query, ItemOf);
  });
}

}  // namespace zeb
