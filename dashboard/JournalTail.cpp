#include "dashboard/JournalTail.h"

#include <utility>

#include "text/Encodings.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

constexpr std::size_t kMostCharacters = 1000;

}  // namespace

void JournalTail::Keep(std::string_view text) {
  lines_.push_back({clock_.Now(), OneLine(DecodeLenient(text), kMostCharacters)});
  ++told_;
  if (lines_.size() > most_) lines_.pop_front();
  if (onLine) onLine(lines_.back());
}

void JournalTail::Note(std::string_view line) {
  behind_.Note(line);
  Keep(line);
}

void JournalTail::Show(MessageIcon icon, const std::string& text) {
  behind_.Show(icon, text);
  Keep(text);
}

void JournalTail::Ask(const std::string& question, std::function<void(bool)> answered) {
  behind_.Ask(question, std::move(answered));
}

}  // namespace zeb
