// CommandLine: what zebctl and zeb-labelserver share in reading their options with CLI11: the declarations
// give the reading, the help texts and the errors.
//
// CLI11's headers take long to compile: they are included in one file, behind these functions.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/CommandTable.h"
#include "platform/Result.h"
#include "text/Numbers.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zeb {

// An option or a word; it belongs to its command.
class DeclaredOption {
 public:
  // Gives what is wrong with a value, to stand behind the option's name; "" when nothing is.
  using CheckFunction = std::string (*)(const std::string& value);

  explicit DeclaredOption(CLI::Option* option) : option_(option) {}
  DeclaredOption Required() const;
  DeclaredOption Check(CheckFunction check) const;
  DeclaredOption Excludes(DeclaredOption other) const;
  // What its value is, in the words of CommandTable.h; "text" unless told otherwise.
  DeclaredOption Takes(const std::string& value) const;

 private:
  CLI::Option* option_;
};

// A program with --help, also below each command, and --version.
std::shared_ptr<CLI::App> MakeProgram(const std::string& name, const std::string& help);

CLI::App& AddCommand(CLI::App& parent, const std::string& name, const std::string& help);
// From here on one of the program's or the command's own commands must be given.
void RequireCommand(CLI::App& command);
// Stands at the end of the help text, also of commands that are added afterwards.
void SetFooter(CLI::App& command, const std::string& text);

// `name` with its dashes; `value` stands for the value in the help text. The last one given counts.
DeclaredOption AddValue(CLI::App& command, const std::string& name, const std::string& value,
                        const std::string& help);
DeclaredOption AddFlag(CLI::App& command, const std::string& name, const std::string& help);
// A word without a name of its own.
DeclaredOption AddWord(CLI::App& command, const std::string& name, const std::string& help);
// Any number of them.
DeclaredOption AddWords(CLI::App& command, const std::string& name, const std::string& help);

// From here on the words of the command that are no options of it are what they seem, also "-x".
void TakeUnknownOptionsAsWords(CLI::App& command);

// What has been declared.
CommandTable TableOf(const CLI::App& command);
// The help of the command that `path` leads to; "" where it leads to none.
std::string HelpOf(const CLI::App& program, const std::vector<std::string>& path);

// For DeclaredOption::Check.
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
// The command that was given; the program itself when it has none.
const CLI::App& GivenCommand(const CLI::App& program);
std::string NameOf(const CLI::App& command);
// The command that leads to it; the program's when none does.
std::string GroupOf(const CLI::App& command);

}  // namespace zeb
