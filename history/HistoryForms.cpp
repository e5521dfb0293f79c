#include "history/HistoryForms.h"

#include <algorithm>
#include <utility>

#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/SharedTime.h"
#include "text/Utf8.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

constexpr std::size_t kTableText = 160;  // characters of the last column

std::string CsvValue(const std::string& value) {
  if (value.find_first_of(",\"\r\n") == std::string::npos) return value;
  std::string quoted = "\"";
  for (const char c : value) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

std::string Upper(std::string_view name) {
  std::string upper(name);
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return upper;
}

}  // namespace

HistoryTable::HistoryTable(std::ostream& out, HistoryForm form, std::vector<HistoryColumn> columns)
    : out_(out), form_(form), columns_(std::move(columns)) {
  std::vector<std::string> names;
  for (const HistoryColumn& column : columns_)
    names.push_back(form == HistoryForm::kTable ? Upper(column.name) : std::string(column.name));
  if (form_ == HistoryForm::kTable) TableRow(names);
  if (form_ == HistoryForm::kCsv) CsvRow(names);
}

void HistoryTable::Row(const std::vector<std::string>& values) {
  switch (form_) {
    case HistoryForm::kTable:
      return TableRow(values);
    case HistoryForm::kCsv:
      return CsvRow(values);
    case HistoryForm::kJson:
      return JsonRow(values);
  }
}

void HistoryTable::End() {
  if (form_ == HistoryForm::kJson) out_ << (first_ ? "[]\n" : "\n]\n");
  out_.flush();
}

void HistoryTable::TableRow(const std::vector<std::string>& values) {
  std::string line;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].width == 0) continue;
    std::string value = OneLine(values[i], kTableText);
    const auto width = static_cast<std::size_t>(columns_[i].width);
    const std::size_t characters = CountCharacters(value);
    if (characters < width) value.append(width - characters, ' ');
    line += value + "  ";
  }
  line.erase(line.find_last_not_of(' ') + 1);
  out_ << line << '\n';
}

void HistoryTable::CsvRow(const std::vector<std::string>& values) {
  for (std::size_t i = 0; i < columns_.size(); ++i) out_ << (i == 0 ? "" : ",") << CsvValue(values[i]);
  out_ << "\r\n";
}

void HistoryTable::JsonRow(const std::vector<std::string>& values) {
  std::string object = std::exchange(first_, false) ? "[\n{" : ",\n{";
  bool firstValue = true;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (values[i].empty()) continue;
    if (!std::exchange(firstValue, false)) object += ',';
    object.append("\"").append(columns_[i].name).append("\":");
    if (columns_[i].isNumber) {
      object += values[i];
      continue;
    }
    object += '"';
    AppendEscaped(object, values[i], ValueEscape::kJson);
    object += '"';
  }
  out_ << object << '}';
}

std::string HistoryTable::Moment(const HistoryMoment& moment) const {
  return form_ == HistoryForm::kJson ? Rfc3339(moment.Local(), moment.offset) : LocalMomentText(moment);
}

std::string LocalMomentText(const HistoryMoment& moment) {
  std::string text = XmlDateTime(moment.Local());
  if (const std::size_t t = text.find('T'); t != std::string::npos) text[t] = ' ';
  return text;
}

std::string SlotText(int slot) {
  if (slot == kHistoryCurrent) return "current";
  if (slot == kHistoryComingSoon) return "coming soon";
  return slot > 0 ? "next " + std::to_string(slot) : "previous " + std::to_string(-slot);
}

std::string LatencyText(std::chrono::microseconds latency) {
  const auto tenths = std::max<std::int64_t>(0, (latency.count() + 50) / 100);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

}  // namespace zeb
