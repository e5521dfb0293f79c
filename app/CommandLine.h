// CommandLine: what zebctl and zeb-labelserver share in reading their options with CLI11: the declarations
// give the reading, the help texts and the errors.
//
// CLI11 is a large header: only what declares options may include this one.
#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"

namespace zeb {

// Gives the program --help, also below each command, --version, and the layout of the help texts. To be
// called before anything else is declared. `name` is the program's.
void PrepareCommandLine(CLI::App& program, const std::string& name);

// `name` with its dashes; `value` stands for the value in the help text. The last one given counts.
CLI::Option* AddValue(CLI::App& command, const std::string& name, const std::string& value,
                      const std::string& help);
CLI::Option* AddFlag(CLI::App& command, const std::string& name, const std::string& help);
// A word without a name of its own.
CLI::Option* AddWord(CLI::App& command, const std::string& name, const std::string& help);
// Any number of them.
CLI::Option* AddWords(CLI::App& command, const std::string& name, const std::string& help);

// From here on the words of the command that are no options of it are what they seem, also "-x".
void TakeUnknownOptionsAsWords(CLI::App& command);

// For CLI::Option::check: they give what is wrong, to stand behind the option's name; "" when nothing is.
std::string CheckNotEmpty(const std::string& text);
std::string CheckPort(const std::string& text);
std::string CheckPortOrNone(const std::string& text);  // takes 0, too

// The text to show (--help, --version), "" when there is none and the options are read. Fails with one line
// that names the word at fault and the help that tells more.
Result<std::string> ReadCommandLine(CLI::App& program, const std::vector<std::string>& words);

// After a successful reading. `name` as it was declared.
bool IsGiven(const CLI::App& command, const std::string& name);
std::string ValueOf(const CLI::App& command, const std::string& name, const std::string& otherwise = "");
const std::vector<std::string>& WordsOf(const CLI::App& command, const std::string& name);
// Digits and nothing else, with a sign when the type has one.
template <class Number>
std::optional<Number> WholeNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// The command that was given; the program itself when it has none.
const CLI::App& GivenCommand(const CLI::App& program);

}  // namespace zeb
