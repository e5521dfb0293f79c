// HistoryForms: rows as a table for people, as CSV (RFC 4180) and as JSON; each row is written at once, so
// that a month costs no memory.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/HistoryStore.h"

namespace zeb {

enum class HistoryForm { kTable, kCsv, kJson };

struct HistoryColumn {
  std::string_view name;  // in CSV and JSON
  int width = 0;  // in the table, in characters; 0: it is not shown there; the last takes what it needs
  bool isNumber = false;  // in JSON; an empty one is left out there, as an empty text is
};

class HistoryTable {
 public:
  HistoryTable(std::ostream& out, HistoryForm form, std::vector<HistoryColumn> columns);
  // One value for each column.
  void Row(const std::vector<std::string>& values);
  void End();

  // A moment as the form has it: "2026-11-24 08:14:03" by the station's clocks, in JSON RFC 3339.
  std::string Moment(const HistoryMoment& moment) const;

 private:
  void TableRow(const std::vector<std::string>& values);
  void CsvRow(const std::vector<std::string>& values);
  void JsonRow(const std::vector<std::string>& values);

  std::ostream& out_;
  HistoryForm form_;
  std::vector<HistoryColumn> columns_;
  bool first_ = true;
};

// "2026-11-24 08:14:03".
std::string LocalMomentText(const HistoryMoment& moment);
// "current", "next 2", "previous 1", "coming soon".
std::string SlotText(int slot);
// In milliseconds, to the tenth.
std::string LatencyText(std::chrono::microseconds latency);

}  // namespace zeb
