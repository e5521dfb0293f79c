#include "app/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>

namespace zeb {
namespace {

constexpr std::size_t kHelpWidth = 80;
constexpr std::size_t kNameWidth = 30;
constexpr int kMostWords = 1'000'000;  // more than a process can be given
// As many options are shown one by one in a usage line.
constexpr std::size_t kMostShownOptions = 2;

bool IsCommand(const CLI::App* app) {
  return !app->get_name().empty();
}

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
  return app.get_subcommands(IsCommand);
}

// "zebctl settings get".
std::string PathOf(const CLI::App& app) {
  return (app.get_parent() != nullptr ? PathOf(*app.get_parent()) + " " : "") + app.get_name();
}

// The same without the program, unless there is nothing else.
std::string ShortPathOf(const CLI::App& app) {
  const std::string path = PathOf(app);
  const std::size_t blank = path.find(' ');
  return blank == std::string::npos ? path : path.substr(blank + 1);
}

bool TakesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

std::string OptionUsage(const CLI::Option& option) {
  const std::string usage =
      option.get_name() + (TakesValue(option) ? " " + option.get_option_text() : std::string());
  return option.get_required() ? usage : "[" + usage + "]";
}

std::string WordUsage(const CLI::Option& word) {
  const std::string usage = word.get_name() + word.get_option_text();
  return word.get_required() ? usage : "[" + usage + "]";
}

std::string OptionsUsage(const CLI::App& app) {
  std::string shown, required;
  std::size_t count = 0;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_positional() || option == app.get_help_ptr() || option == app.get_version_ptr()) continue;
    shown += " " + OptionUsage(*option);
    if (option->get_required())
      required += " " + OptionUsage(*option);
    else
      ++count;
  }
  return count <= kMostShownOptions ? shown : required + " [options]";
}

std::string WordsUsage(const CLI::App& app) {
  std::string usage;
  for (const CLI::Option* option : app.get_options())
    if (option->get_positional()) usage += " " + WordUsage(*option);
  return usage;
}

std::string UsageOf(const CLI::App& app) {
  return (app.get_parent() != nullptr ? UsageOf(*app.get_parent()) + " " : "") + app.get_name() +
         OptionsUsage(app);
}

// Appends words to a line; a line that would be too long goes on below `indent`.
std::string Wrapped(std::string_view text, std::size_t column, std::size_t indent) {
  std::string wrapped;
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find_first_of(" \n"));
    if (column > indent && column + 1 + word.size() >= kHelpWidth) {
      wrapped.append("\n").append(indent, ' ');
      column = indent;
    } else if (column > indent) {
      wrapped += ' ';
      ++column;
    }
    wrapped += word;
    column += word.size();
    if (word.size() == text.size()) break;
    if (text[word.size()] == '\n') {
      wrapped.append("\n").append(indent, ' ');
      column = indent;
    }
    text.remove_prefix(word.size() + 1);
  }
  return wrapped;
}

// "  name     what it is".
std::string Row(const std::string& name, const std::string& text) {
  std::string row = "  " + name;
  if (text.empty()) return row + '\n';
  row += row.size() + 2 > kNameWidth ? "\n" + std::string(kNameWidth, ' ')
                                     : std::string(kNameWidth - row.size(), ' ');
  return row + Wrapped(text, kNameWidth, kNameWidth) + '\n';
}

// All commands that do something, with what leads to them.
std::string CommandRows(const CLI::App& app, const std::string& path) {
  std::string rows;
  for (const CLI::App* command : CommandsOf(app)) {
    const std::string name = path + command->get_name();
    rows += CommandsOf(*command).empty() ? Row(name + WordsUsage(*command), command->get_description())
                                         : CommandRows(*command, name + " ");
  }
  return rows;
}

class HelpFormatter final : public CLI::Formatter {
 public:
  HelpFormatter() { label("Positionals", "Words"); }

  std::string make_description(const CLI::App* app) const override {
    const std::string start = PathOf(*app) + ":";
    return start + Wrapped(app->get_description(), start.size(), 2) + "\n\n";
  }
  std::string make_usage(const CLI::App* app, std::string) const override {
    const std::string commands = CommandsOf(*app).empty() ? "" : " COMMAND ...";
    return "Usage: " + Wrapped(UsageOf(*app) + WordsUsage(*app) + commands, 7, 7) + "\n";
  }
  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode) const override {
    return CommandsOf(*app).empty() ? "" : "\nCommands:\n" + CommandRows(*app, "");
  }
  std::string make_option(const CLI::Option* option, bool isWord) const override {
    if (isWord) return Row(option->get_name() + option->get_option_text(), option->get_description());
    const std::string value = TakesValue(*option) ? " " + option->get_option_text() : "";
    const bool hasShort = !option->get_snames().empty();
    const std::string shortName = hasShort ? "-" + option->get_snames().front() + ", " : "";
    return Row(shortName + option->get_name() + value, option->get_description());
  }
  std::string make_footer(const CLI::App* app) const override {
    const std::string footer = app->get_footer();
    return footer.empty() ? "" : Wrapped(footer, 0, 0) + '\n';
  }
  // Commands stand in front of the options.
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
    const std::string footer = make_footer(app);
    return make_description(app) + make_usage(app, name) + make_positionals(app) +
           make_subcommands(app, mode) + make_groups(app, mode) + (footer.empty() ? "" : "\n" + footer);
  }
};

const CLI::App* FindCommand(const CLI::App& app, const std::string& name) {
  for (const CLI::App* command : CommandsOf(app))
    if (command->get_name() == name) return command;
  return nullptr;
}

// To CLI11 some words mean what they mean to nobody else: "++" ends a command, "--name=" takes the next word
// for its value, behind a second word "--" leaves the command. None of that happens when the options stand in
// front and all other words behind one "--".
std::vector<std::string> OptionsFirst(const CLI::App& program, const std::vector<std::string>& words) {
  const CLI::App* app = &program;
  std::vector<std::string> front, behind;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--") {
      behind.insert(behind.end(), words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
      break;
    }
    const CLI::App* command = behind.empty() ? FindCommand(*app, word) : nullptr;
    if (command != nullptr) {
      app = command;
      front.push_back(word);
      continue;
    }
    const std::size_t equals = word.rfind("--", 0) == 0 ? word.find('=') : std::string::npos;
    const std::string name = word.substr(0, equals);
    const bool isOption = word.size() > 1 && word.front() == '-';
    const CLI::Option* option = isOption ? app->get_option_no_throw(name) : nullptr;
    if (!isOption || (option == nullptr && app->get_allow_extras())) {
      behind.push_back(word);
    } else if (option == nullptr || !TakesValue(*option)) {
      front.push_back(word);
    } else {
      front.push_back(name);
      if (equals == std::string::npos && i + 1 == words.size()) return front;  // the value is missing
      front.push_back(equals == std::string::npos ? words[++i] : word.substr(equals + 1));
    }
  }
  if (!behind.empty()) front.push_back("--");
  front.insert(front.end(), behind.begin(), behind.end());
  return front;
}

std::string JoinedNames(const std::vector<const CLI::App*>& commands) {
  std::string joined;
  for (std::size_t i = 0; i < commands.size(); ++i)
    joined += (i == 0 ? "" : i + 1 == commands.size() ? " or " : ", ") + commands[i]->get_name();
  return joined;
}

const CLI::App* NextGiven(const CLI::App& app) {
  const std::vector<CLI::App*> given = app.get_subcommands();
  return given.empty() ? nullptr : given.front();
}

// The start of "settings get has no ...".
std::string HasNo(const CLI::App& app) {
  return app.get_parent() == nullptr ? "there is no " : ShortPathOf(app) + " has no ";
}

// The first word that nothing took, options before others; "" when there is none.
std::string DescribeLeftOver(const CLI::App& program) {
  const CLI::App& given = GivenCommand(program);
  std::string other;
  for (const CLI::App* app = &program; app != nullptr; app = NextGiven(*app)) {
    for (const std::string& word : app->remaining()) {
      if (word == "--") continue;
      if (word.size() > 1 && word.front() == '-' && !given.get_allow_extras())
        return HasNo(*app) + "option '" + word + "'";
      if (other.empty())
        other = HasNo(given) + (CommandsOf(given).empty() ? "use for '" : "command '") + word + "'";
    }
  }
  return other;
}

std::string UpTo(const std::string& text, std::string_view mark) {
  return text.substr(0, text.find(mark));
}

std::string DescribeMissing(const CLI::App& given, const std::string& error) {
  const bool isProgram = given.get_parent() == nullptr;
  const std::string missing = UpTo(error, " is required");
  if (CommandsOf(given).empty())
    return isProgram ? missing + " is needed" : ShortPathOf(given) + " needs " + missing;
  return (isProgram ? "a command is missing: " : ShortPathOf(given) + " what? ") +
         JoinedNames(CommandsOf(given));
}

// CLI11 tells what happened by the class and begins its text with the name of the option.
std::string Describe(const CLI::App& program, const CLI::ParseError& error) {
  std::string text = error.what();
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
    return text.find(':') != std::string::npos ? UpTo(text, ":") + " needs a value"
                                               : "--" + UpTo(text, " ") + " takes no value";
  if (dynamic_cast<const CLI::ValidationError*>(&error) != nullptr) {
    const std::string name = UpTo(text, ": ");
    return name + " " + text.substr(std::min(text.size(), name.size() + 2));
  }
  if (std::string leftOver = DescribeLeftOver(program); !leftOver.empty()) return leftOver;
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
    return DescribeMissing(GivenCommand(program), text);
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
    const std::string name = UpTo(text, " excludes ");
    return name + " does not go with " + text.substr(std::min(text.size(), name.size() + 10));
  }
  return text;
}

}  // namespace

DeclaredOption DeclaredOption::Required() const {
  return DeclaredOption(option_->required());
}

DeclaredOption DeclaredOption::Check(CheckFunction check) const {
  return DeclaredOption(option_->check(check));
}

DeclaredOption DeclaredOption::Excludes(DeclaredOption other) const {
  return DeclaredOption(option_->excludes(other.option_));
}

DeclaredOption DeclaredOption::Takes(const std::string& value) const {
  return DeclaredOption(option_->type_name(value));
}

CommandTable TableOf(const CLI::App& command) {
  CommandTable table{.name = command.get_name(), .help = command.get_description()};
  for (const CLI::Option* option : command.get_options()) {
    const std::string kind = option->get_type_name().empty() ? "text" : option->get_type_name();
    if (option->get_positional()) {
      table.words.push_back(kind);
      table.manyWords = option->get_items_expected_max() > 1;
      continue;
    }
    OptionRow row{.value = TakesValue(*option) ? kind : "", .help = option->get_description()};
    for (const std::string& name : option->get_lnames()) row.names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) row.names.push_back("-" + name);
    table.options.push_back(std::move(row));
  }
  for (const CLI::App* one : CommandsOf(command)) table.commands.push_back(TableOf(*one));
  return table;
}

std::string HelpOf(const CLI::App& program, const std::vector<std::string>& path) {
  const CLI::App* command = &program;
  for (const std::string& name : path)
    if (command = FindCommand(*command, name); command == nullptr) return "";
  return command->help();
}

std::shared_ptr<CLI::App> MakeProgram(const std::string& name, const std::string& help) {
  auto program = std::make_shared<CLI::App>(help, name);
  program->formatter(std::make_shared<HelpFormatter>());
  program->set_help_flag("-h,--help", "this text");
  program->set_version_flag("--version", name + " " ZEB_VERSION, "the version");
  return program;
}

CLI::App& AddCommand(CLI::App& parent, const std::string& name, const std::string& help) {
  return *parent.add_subcommand(name, help);
}

void RequireCommand(CLI::App& command) {
  command.require_subcommand(1);
}

void SetFooter(CLI::App& command, const std::string& text) {
  command.footer(text);
}

DeclaredOption AddValue(CLI::App& command, const std::string& name, const std::string& value,
                        const std::string& help) {
  return DeclaredOption(command.add_option(name, CLI::callback_t(), help)->option_text(value)->take_last());
}

DeclaredOption AddFlag(CLI::App& command, const std::string& name, const std::string& help) {
  return DeclaredOption(command.add_flag(name, help)->disable_flag_override()->take_last());
}

DeclaredOption AddWord(CLI::App& command, const std::string& name, const std::string& help) {
  return DeclaredOption(command.add_option(name, CLI::callback_t(), help));
}

// A list without an end would take "[a,b]" for two words.
DeclaredOption AddWords(CLI::App& command, const std::string& name, const std::string& help) {
  return DeclaredOption(command.add_option(name, CLI::callback_t(), help)
                            ->option_text(" ...")
                            ->expected(kMostWords)
                            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll));
}

void TakeUnknownOptionsAsWords(CLI::App& command) {
  command.allow_extras();
}

std::string CheckNotEmpty(const std::string& text) {
  return text.empty() ? "needs a value" : "";
}

std::string CheckPortOrNone(const std::string& text) {
  return WholeNumber<std::uint16_t>(text) ? "" : "takes a port number, not '" + text + "'";
}

std::string CheckPort(const std::string& text) {
  return WholeNumber<std::uint16_t>(text).value_or(0) > 0 ? "" : "takes a port number, not '" + text + "'";
}

Result<std::string> ReadCommandLine(CLI::App& program, const std::vector<std::string>& words) {
  std::string failure;
  try {
    std::vector<std::string> arguments = OptionsFirst(program, words);
    std::reverse(arguments.begin(), arguments.end());
    program.parse(arguments);
    failure = DescribeLeftOver(program);
  } catch (const CLI::CallForHelp&) {
    return program.help();
  } catch (const CLI::CallForVersion& version) {
    return version.what() + std::string("\n");
  } catch (const CLI::ParseError& error) {
    failure = Describe(program, error);
  }
  if (failure.empty()) return std::string();
  return Failure{failure + " (" + PathOf(GivenCommand(program)) + " --help)"};
}

bool IsGiven(const CLI::App& command, const std::string& name) {
  return command.get_option(name)->count() > 0;
}

std::string ValueOf(const CLI::App& command, const std::string& name, const std::string& otherwise) {
  return IsGiven(command, name) ? command.get_option(name)->results().back() : otherwise;
}

const std::vector<std::string>& WordsOf(const CLI::App& command, const std::string& name) {
  return command.get_option(name)->results();
}

const CLI::App& GivenCommand(const CLI::App& program) {
  const CLI::App* given = NextGiven(program);
  return given == nullptr ? program : GivenCommand(*given);
}

std::string NameOf(const CLI::App& command) {
  return command.get_name();
}

std::string GroupOf(const CLI::App& command) {
  return command.get_parent() == nullptr ? "" : command.get_parent()->get_name();
}

}  // namespace zeb
