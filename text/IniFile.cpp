#include "text/IniFile.h"

#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\v\f";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

bool InQuotes(std::string_view value) {
  return value.size() >= 2 && value.front() == value.back() &&
         (value.front() == '"' || value.front() == '\'');
}

std::string_view ValueOf(std::string_view line) {
  const std::string_view value = Trimmed(line.substr(line.find('=') + 1));
  return InQuotes(value) ? value.substr(1, value.size() - 2) : value;
}

std::string LineFor(std::string_view key, std::string_view value) {
  std::string written(value);
  for (char& c : written)
    if (c == '\r' || c == '\n') c = ' ';
  if (Trimmed(written).size() != written.size() || InQuotes(written)) written = '"' + written + '"';
  return std::string(key) + '=' + written;
}

}  // namespace

IniFile IniFile::FromBytes(std::string_view bytes) {
  IniFile file;
  file.encoding_ = DetectFileEncoding(bytes);
  const std::string text = DecodeFile(bytes, file.encoding_);
  const std::size_t firstEnd = text.find('\n');
  if (firstEnd != std::string::npos && (firstEnd == 0 || text[firstEnd - 1] != '\r')) file.lineEnd_ = "\n";
  for (std::size_t start = 0; start < text.size();) {
    std::size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string_view line = std::string_view(text).substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    file.lines_.emplace_back(line);
    start = end + 1;
  }
  file.Index();
  return file;
}

void IniFile::Index() {
  sections_.clear();
  Section* section = nullptr;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const std::string_view line = Trimmed(lines_[i]);
    if (line.empty()) continue;
    if (line.front() == '[') {
      const std::string_view name = Trimmed(line.substr(1, line.find(']') - 1));
      const auto [entry, isNew] = sections_.try_emplace(LowerCase(name));
      section = isNew ? &entry->second : nullptr;  // of two sections with one name the first counts
    }
    if (!section) continue;
    section->end = i + 1;
    const std::size_t equals = line.find('=');
    if (line.front() == '[' || line.front() == ';' || equals == std::string_view::npos) continue;
    section->lines.try_emplace(LowerCase(Trimmed(line.substr(0, equals))), i);
  }
}

std::optional<std::string> IniFile::Text(std::string_view section, std::string_view key) const {
  const auto found = sections_.find(LowerCase(Trimmed(section)));
  if (found == sections_.end()) return std::nullopt;
  const auto line = found->second.lines.find(LowerCase(Trimmed(key)));
  if (line == found->second.lines.end()) return std::nullopt;
  return std::string(ValueOf(lines_[line->second]));
}

std::int32_t IniFile::Integer(std::string_view section, std::string_view key) const {
  return LeadingInteger(Text(section, key).value_or(""));
}

void IniFile::Write(std::string_view section, std::string_view key, std::string_view value) {
  auto found = sections_.find(LowerCase(Trimmed(section)));
  if (found == sections_.end()) {
    if (!lines_.empty() && !lines_.back().empty()) lines_.emplace_back();
    lines_.push_back('[' + std::string(section) + ']');
    lines_.push_back(LineFor(key, value));
  } else if (const auto line = found->second.lines.find(LowerCase(Trimmed(key)));
             line != found->second.lines.end()) {
    lines_[line->second] = LineFor(key, value);
    return;
  } else {
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(found->second.end), LineFor(key, value));
  }
  Index();
}

std::string IniFile::ToBytes() const {
  std::string text;
  for (const std::string& line : lines_) text.append(line).append(lineEnd_);
  return EncodeFile(text, encoding_);
}

}  // namespace zeb
