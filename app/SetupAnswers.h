// SetupAnswers: asks one thing after another, until each answer is right. Private to StationSetup.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "app/StationSetup.h"
#include "platform/Result.h"

namespace zeb {

// There are no more answers: nothing is stored.
struct SetupEnded {};
// An answer that was given beforehand is wrong, or one is missing and nobody can be asked.
struct SetupWrong {
  std::string why;
};

class SetupAnswers {
 public:
  SetupAnswers(const SetupOptions& options, SetupTalk& talk) : options_(options), talk_(talk) {}

  struct Question {
    const char* option;  // the answer's option; "": it has none
    std::string text;
    std::string usual{};  // what an empty answer means
    bool secret = false;
    std::function<Outcome(const std::string&)> check{};
  };
  // Throw SetupEnded and SetupWrong.
  std::string Get(const Question& question);
  bool Confirm(const std::string& text, const char* usual);  // "y" or "n"
  // One of the words; each with what it means.
  using Choices = std::vector<std::pair<std::string, std::string>>;
  std::string Choose(const Question& question, const Choices& choices);

  bool IsGiven(const std::string& option) const { return options_.given.contains(option); }
  // From now on what was given counts no more: it was wrong, and is asked for again.
  void Forget(const std::string& option) { forgotten_.push_back(option); }
  void Say(const std::string& line) { talk_.Say(line); }
  bool CanAsk() const { return talk_.CanAsk(); }

 private:
  const std::string* Given(const Question& question) const;

  const SetupOptions& options_;
  SetupTalk& talk_;
  std::vector<std::string> forgotten_;
};

}  // namespace zeb
