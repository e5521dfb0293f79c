#include "app/SetupAnswers.h"

#include <algorithm>
#include <optional>

#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {

const std::string* SetupAnswers::Given(const Question& question) const {
  if (std::find(forgotten_.begin(), forgotten_.end(), question.option) != forgotten_.end()) return nullptr;
  const auto found = options_.given.find(question.option);
  return found == options_.given.end() ? nullptr : &found->second;
}

std::string SetupAnswers::Get(const Question& question) {
  const auto check = [&](const std::string& answer) {
    return question.check ? question.check(answer) : Outcome();
  };
  const std::string option = std::string("--") + question.option;
  if (const std::string* given = Given(question)) {
    if (const Outcome right = check(*given); !right) throw SetupWrong{option + ": " + right.Reason()};
    return *given;
  }
  if (!CanAsk()) {
    if (check(question.usual)) return question.usual;
    throw SetupWrong{"setup needs " + option};
  }
  const std::string shown = question.usual.empty() ? ": " : " [" + question.usual + "]: ";
  for (;;) {
    const std::optional<std::string> answer = talk_.Ask(question.text + shown, question.secret);
    if (!answer) throw SetupEnded();
    std::string text(TrimBlanks(*answer));
    if (text.empty()) text = question.usual;
    const Outcome right = check(text);
    if (right) return text;
    Say("  " + right.Reason());
  }
}

bool SetupAnswers::Confirm(const std::string& text, const char* usual) {
  return LowerCase(Get({.option = "",
                        .text = text + " (y/n)",
                        .usual = usual,
                        .check = [](const std::string& answer) -> Outcome {
                          const std::string word = LowerCase(answer);
                          if (word == "y" || word == "yes" || word == "n" || word == "no") return {};
                          return Failure{"y or n"};
                        }}))
      .starts_with('y');
}

std::string SetupAnswers::Choose(const Question& question, const Choices& choices) {
  Question asked = question;
  const auto wordOf = [&choices](const std::string& answer) -> std::string {
    const auto number = WholeNumber<std::size_t>(answer).value_or(0);
    if (number >= 1 && number <= choices.size()) return choices[number - 1].first;
    for (const auto& [word, meaning] : choices)
      if (word == LowerCase(answer)) return word;
    return "";
  };
  asked.check = [&](const std::string& answer) -> Outcome {
    if (!wordOf(answer).empty()) return {};
    std::string words;
    for (const auto& [word, meaning] : choices) words += (words.empty() ? "" : ", ") + word;
    return Failure{"one of these: " + words};
  };
  if (CanAsk() && Given(question) == nullptr) {
    Say(question.text);
    for (std::size_t i = 0; i < choices.size(); ++i)
      Say("  " + std::to_string(i + 1) + "  " + choices[i].second);
    asked.text = "Which";
  }
  return wordOf(Get(asked));
}

}  // namespace zeb
