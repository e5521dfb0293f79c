#include "app/ZebctlOptions.h"

#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "app/CommandLine.h"
#include "app/CompletionScript.h"
#include "app/HelpTopics.h"
#include "app/LabelServerOptions.h"
#include "app/PublisherOptions.h"
#include "app/SetCommand.h"
#include "app/StartUpOptions.h"
#include "text/MomentText.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

constexpr char kKey[] =
    "the key: Service1\\File and the like (Service1/File will do), or a whole path Software\\...";
constexpr char kExitStatus[] =
    "Exit status: 0 done, 1 failed (one line says why), 2 wrong usage or control refused.";

// "YYYY-MM-DD hh:mm:ss", or with a T between the two.
std::optional<WallTime> ReadMoment(std::string_view text) {
  const auto moment = ReadMomentText(text);
  constexpr std::size_t kWholeLength = 19;
  if (!moment || moment->utcOffset || text.size() != kWholeLength) return std::nullopt;
  return moment->wall;
}

std::string CheckOneLine(const std::string& text) {
  if (text.empty()) return "needs a value";
  return text.find_first_of("\r\n") != std::string::npos ? "takes one line" : "";
}

std::string CheckMessage(const std::string& text) {
  if (text.size() > kMaxMessageBytes) return "must not be longer than 1 MiB";
  return text.find_first_of("\r\n") != std::string::npos
             ? "must be one line: write line ends in values as {0D}{0A}"
             : "";
}

std::string CheckCart(const std::string& text) {
  return text.empty() || WholeNumber<std::int32_t>(text).value_or(-1) >= 0
             ? ""
             : "takes a number, not '" + text + "'";
}

std::string CheckType(const std::string& text) {
  return ManualItemType(text) ? "" : "takes song, link, spot, other or a number, not '" + text + "'";
}

std::string CheckPromotion(const std::string& text) {
  return text == "next" || text == "coming" ? "" : "is to be given, not '" + text + "'";
}

std::string CheckMoment(const std::string& text) {
  return ReadMoment(text) ? "" : "takes a moment \"YYYY-MM-DD hh:mm:ss\", not '" + text + "'";
}

std::string CheckWrittenMoment(const std::string& text) {
  return ReadMomentText(text) ? ""
                              : "takes a moment, \"YYYY-MM-DD hh:mm[:ss]\" or RFC 3339, not '" + text + "'";
}

std::string CheckOutput(const std::string& text) {
  return ReadOutputName(text) ? "" : "takes an output such as File2, not '" + text + "'";
}

std::string CheckEscape(const std::string& text) {
  return EscapeChoiceByName(text) && !text.empty() ? "" : "takes html, xml, json or auto, not '" + text + "'";
}

std::string EscapeWords() {
  std::string words = "=";
  for (const std::string_view word : kEscapeWords) words.append(words == "=" ? "" : " ").append(word);
  return words;
}

std::string CheckShell(const std::string& text) {
  return text == "bash" || text == "zsh" ? "" : "takes bash or zsh, not '" + text + "'";
}

std::string CheckService(const std::string& text) {
  return WholeNumber<int>(text).value_or(0) > 0 ? "" : "takes the number of a service, not '" + text + "'";
}

// Numbers are stored in 32 bits and may be written with or without a sign.
std::optional<std::int32_t> StoredNumber(const std::string& text) {
  const auto number = WholeNumber<std::int64_t>(text);
  if (!number || *number < std::numeric_limits<std::int32_t>::min() ||
      *number > std::numeric_limits<std::uint32_t>::max())
    return std::nullopt;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(*number));
}

CLI::App& AddCommandGroup(CLI::App& parent, const std::string& name, const std::string& help) {
  CLI::App& group = AddCommand(parent, name, help);
  RequireCommand(group);
  return group;
}

void DeclareSettings(CLI::App& program) {
  CLI::App& settings = AddCommandGroup(program, "settings", "the settings of the data folder");
  SetFooter(settings, "`systemctl reload zebd` makes a running publisher read what was changed.");
  AddWord(AddCommand(settings, "list", "keys and values, from the settings root on"), "KEY", kKey);
  CLI::App& get = AddCommand(settings, "get", "one value");
  CLI::App& set = AddCommand(settings, "set", "set a value");
  for (CLI::App* command : {&get, &set}) {
    AddWord(*command, "KEY", kKey).Required();
    AddWord(*command, "NAME", "the value's name").Required();
  }
  AddWord(set, "DATA", "what it is set to; -- goes in front of a DATA such as --number").Required();
  AddFlag(set, "--number", "DATA is stored as a number of 32 bits, else as a text");
  TakeUnknownOptionsAsWords(set);
  CLI::App& remove = AddCommand(settings, "delete", "delete a value, or a key and all below it");
  AddWord(remove, "KEY", kKey).Required().Check(CheckNotEmpty);
  AddWord(remove, "NAME", "the value's name");
  AddWord(AddCommand(settings, "import", "take over a file, all of it or nothing"), "FILE.reg",
          "a registry file")
      .Required()
      .Takes("file");
  AddWord(AddCommand(settings, "export", "a registry file on standard output"), "KEY", kKey);
}

void DeclareConnection(CLI::App& command, const std::string& nameOption) {
  AddValue(command, "--host", "H", "where the service runs (127.0.0.1)").Check(CheckOneLine);
  AddValue(command, "--port", "P", "its control port (6901)").Check(CheckPort);
  AddValue(command, nameOption, "NAME", "the name to take control under (zebctl)").Check(CheckOneLine);
}

void DeclareSend(CLI::App& program) {
  CLI::App& send = AddCommand(program, "send", "messages to a service, as a playout system sends them");
  AddWords(send, "MESSAGE", "a message; without one the lines of standard input are sent as they come")
      .Check(CheckMessage);
  DeclareConnection(send, "--name");
  SetFooter(
      send,
      "For instance:\nzebctl send 'SET_CURRENT_ITEM IType=7 ITitle=\"Paper Moons\" AName1=\"Ada Quill\"'");
}

void DeclareWay(CLI::App& command) {
  AddValue(command, "--service", "N", "service N of the zebd on this machine (1)")
      .Check(CheckService)
      .Takes("service");
  DeclareConnection(command, "--controller");
}

void DeclareItem(CLI::App& command) {
  AddValue(command, "--title", "T", "its title");
  AddValue(command, "--artist", "A", "its artist");
  AddValue(command, "--type", "TYPE", "song (unless told otherwise), link, spot, other or a number")
      .Check(CheckType)
      .Takes("=song link spot other");
  AddValue(command, "--cart", "N", "a cart: what is not given here comes from there").Check(CheckCart);
  AddValue(command, "--notes", "T", "notes");
  DeclareWay(command);
}

void DeclareSet(CLI::App& program) {
  CLI::App& set = AddCommandGroup(program, "set", "entry by hand, as the messages of a playout system");
  DeclareItem(AddCommand(set, "current", "the item that is on air"));
  DeclareItem(AddCommand(set, "next", "the item after the one on air"));
  DeclareItem(AddCommand(set, "previous", "the item before the one on air"));
  DeclareItem(AddCommand(set, "coming", "the item that is announced"));
  CLI::App& promote = AddCommand(set, "promote", "make the next or coming item the current one");
  AddWord(promote, "next|coming", "which item; the options change it")
      .Required()
      .Check(CheckPromotion)
      .Takes("=next coming");
  DeclareItem(promote);
  CLI::App& presenter = AddCommand(set, "presenter", "who presents");
  AddValue(presenter, "--name", "N", "the presenter's full name");
  CLI::App& show = AddCommand(set, "show", "the show on air");
  AddValue(show, "--title", "T", "the show's title");
  for (CLI::App* command : {&presenter, &show}) {
    AddValue(*command, "--reference", "R", "its reference").Required().Check(CheckNotEmpty);
    DeclareWay(*command);
  }
}

// How a template is expanded.
void DeclareExpansion(CLI::App& command) {
  const DeclaredOption page = AddFlag(command, "--page", "as the file output treats a page");
  AddValue(command, "--simple-text", "T", "the template behind <ZEB_SIMPLETEXT>");
  AddFlag(command, "--url-encode", "values URL-encoded, as in HTTP requests").Excludes(page);
  AddValue(command, "--escape", "WORD", "values as html, xml, json or (by the template) auto takes them")
      .Check(CheckEscape)
      .Takes(EscapeWords());
}

void DeclareExpand(CLI::App& program) {
  CLI::App& expand = AddCommand(program, "expand", "what a template gives, without any output");
  AddWord(expand, "TEMPLATE-FILE", "the template; standard input without one").Takes("file");
  AddValue(expand, "--messages", "FILE", "lines as for send, taken in before the template is expanded")
      .Takes("file");
  DeclareExpansion(expand);
  AddFlag(expand, "--list-files", "the files that the text refers to, on standard error");
  AddValue(expand, "--now", "MOMENT", "the moment that tags see: \"YYYY-MM-DD hh:mm:ss\"").Check(CheckMoment);
  AddValue(expand, "--service", "N", "with the settings of service N").Check(CheckService).Takes("service");
}

void DeclareLint(CLI::App& program) {
  CLI::App& lint = AddCommand(program, "lint", "what would surprise in templates, with line and column");
  AddWords(lint, "TEMPLATE-FILE", "the templates").Required().Takes("file");
  AddValue(lint, "--escape", "WORD", "what EscapeValues of the page is set to: html, xml, json or auto")
      .Check(CheckEscape)
      .Takes(EscapeWords());
  AddValue(lint, "--as", "NAME", "what the page is called, when its ending is another: now.json");
  AddFlag(lint, "--json", "as JSON");
  SetFooter(lint, "Exit status: 0 nothing found, 1 something found, 2 wrong usage.");
}

LintOptions LintOf(const CLI::App& command) {
  return {.templates = WordsOf(command, "TEMPLATE-FILE"),
          .escape = ValueOf(command, "--escape"),
          .as = ValueOf(command, "--as"),
          .json = IsGiven(command, "--json")};
}

void DeclareSpan(CLI::App& command) {
  AddValue(command, "--from", "MOMENT", "from then on: \"YYYY-MM-DD hh:mm[:ss]\" or RFC 3339")
      .Check(CheckWrittenMoment);
  AddValue(command, "--to", "MOMENT", "what was before then").Check(CheckWrittenMoment);
}

void DeclareHistory(CLI::App& program) {
  CLI::App& history = AddCommand(program, "history", "what was on air, and what each output showed");
  AddValue(history, "--service", "N", "of service N only").Check(CheckService).Takes("service");
  const DeclaredOption output =
      AddValue(history, "--output", "OUTPUT", "what one output showed, File2 for instance")
          .Check(CheckOutput)
          .Takes("output");
  DeclareSpan(history);
  AddFlag(history, "--songs", "the songs that were played, for music reporting").Excludes(output);
  const DeclaredOption csv = AddFlag(history, "--csv", "as comma-separated values");
  AddFlag(history, "--json", "as a JSON list of objects").Excludes(csv);

  CLI::App& why = AddCommand(program, "why", "what an output showed at a moment, and why");
  AddWord(why, "SERVICE", "the service's number").Required().Check(CheckService).Takes("service");
  AddWord(why, "OUTPUT", "the output, File2 for instance").Required().Check(CheckOutput).Takes("output");
  AddWord(why, "MOMENT", "\"YYYY-MM-DD hh:mm[:ss]\" or RFC 3339").Required().Check(CheckWrittenMoment);
  AddFlag(why, "--full", "long templates in full");

  CLI::App& replay = AddCommand(program, "replay", "what a template would have shown");
  AddValue(replay, "--service", "N", "the service's number").Required().Check(CheckService).Takes("service");
  AddValue(replay, "--template", "FILE", "the template; - for standard input").Required().Takes("file");
  DeclareSpan(replay);
  DeclareExpansion(replay);
}

void DeclareHelp(CLI::App& program) {
  CLI::App& completion =
      AddCommand(program, "completion", "what a shell needs to complete commands and options");
  AddWord(completion, "SHELL", "bash or zsh")
      .Required()
      .Check(CheckShell)
      .Takes(std::string("=") + kCompletionShells);
  SetFooter(completion, "For this shell alone: source <(zebctl completion bash)");
  AddWords(AddCommand(program, "help", "this text, or that of a command; `tags`: what templates can name"),
           "TOPIC", "a command such as `set current`, or tags")
      .Takes(HelpTopicWords(TableOf(program)));
}

Result<SettingsOptions> SettingsOf(const CLI::App& command) {
  using Action = SettingsOptions::Action;
  static const std::map<std::string, Action> actions = {
      {"list", Action::kList},     {"get", Action::kGet},       {"set", Action::kSet},
      {"delete", Action::kDelete}, {"import", Action::kImport}, {"export", Action::kExport}};
  SettingsOptions options;
  options.action = actions.at(NameOf(command));
  if (options.action == Action::kImport) {
    options.file = ValueOf(command, "FILE.reg");
    return options;
  }
  options.key = ValueOf(command, "KEY");
  if (options.action == Action::kList || options.action == Action::kExport) return options;
  if (IsGiven(command, "NAME")) options.name = ValueOf(command, "NAME");
  if (options.action != Action::kSet) return options;
  options.data = ValueOf(command, "DATA");
  if (!IsGiven(command, "--number")) return options;
  options.number = StoredNumber(options.data);
  if (!options.number) return Failure{"DATA must be a whole number of 32 bits, not '" + options.data + "'"};
  return options;
}

SendOptions ConnectionOf(const CLI::App& command, const std::string& nameOption) {
  SendOptions options;
  options.host = ValueOf(command, "--host", options.host);
  options.port = WholeNumber<std::uint16_t>(ValueOf(command, "--port")).value_or(options.port);
  options.name = ValueOf(command, nameOption, options.name);
  return options;
}

ManualEntry ItemOf(const CLI::App& command) {
  static const std::map<std::string, ManualSlot> slots = {{"current", ManualSlot::kCurrent},
                                                          {"next", ManualSlot::kNext},
                                                          {"previous", ManualSlot::kPrevious},
                                                          {"coming", ManualSlot::kComingSoon}};
  ManualEntry entry;
  if (NameOf(command) != "promote")
    entry.slot = slots.at(NameOf(command));
  else
    entry.slot =
        ValueOf(command, "next|coming") == "next" ? ManualSlot::kPromoteNext : ManualSlot::kPromoteComing;
  entry.itemName = ValueOf(command, "--title");
  entry.artist = ValueOf(command, "--artist");
  entry.notes = ValueOf(command, "--notes");
  entry.cartNumber = ValueOf(command, "--cart");
  if (!IsGiven(command, "--type")) return entry;
  entry.itemType = ManualItemType(ValueOf(command, "--type")).value();
  return entry;
}

Result<ByHandOptions> SetOf(const CLI::App& command) {
  SetOptions set;
  if (NameOf(command) == "presenter") {
    set.what = SetOptions::What::kPresenter;
    set.entry.presenterReference = ValueOf(command, "--reference");
    set.entry.presenterFullName = ValueOf(command, "--name");
  } else if (NameOf(command) == "show") {
    set.what = SetOptions::What::kShow;
    set.entry.showReference = ValueOf(command, "--reference");
    set.entry.showTitle = ValueOf(command, "--title");
  } else {
    set.entry = ItemOf(command);
  }
  ByHandOptions options;
  options.set = set;
  options.service = WholeNumber<int>(ValueOf(command, "--service")).value_or(1);
  options.send = ConnectionOf(command, "--controller");
  options.send.messages = {SetMessage(set)};
  if (const std::string wrong = CheckMessage(options.send.messages[0]); !wrong.empty())
    return Failure{"the message " + wrong};
  const bool byLink =
      IsGiven(command, "--host") || IsGiven(command, "--port") || IsGiven(command, "--controller");
  if (byLink && IsGiven(command, "--service"))
    return Failure{"--service is of this machine's zebd; with --host or --port the port says which service"};
  if (byLink) options.way = ByHandOptions::Way::kLink;
  if (IsGiven(command, "--service")) options.way = ByHandOptions::Way::kPublisher;
  return options;
}

ExpandOptions ExpandOf(const CLI::App& command) {
  ExpandOptions options;
  options.simpleText = ValueOf(command, "--simple-text", options.simpleText);
  options.urlEncode = IsGiven(command, "--url-encode");
  options.escape = ValueOf(command, "--escape");
  options.listFiles = IsGiven(command, "--list-files");
  options.page = IsGiven(command, "--page");
  options.messagesFile = ValueOf(command, "--messages");
  options.templateFile = ValueOf(command, "TEMPLATE-FILE");
  options.now = ReadMoment(ValueOf(command, "--now"));
  options.service = WholeNumber<int>(ValueOf(command, "--service")).value_or(0);
  return options;
}

std::optional<WrittenMoment> MomentOf(const CLI::App& command, const std::string& name) {
  return IsGiven(command, name) ? ReadMomentText(ValueOf(command, name)) : std::nullopt;
}

HistoryOptions HistoryOf(const CLI::App& command) {
  using Action = HistoryOptions::Action;
  HistoryOptions options;
  const std::string name = NameOf(command);
  if (name == "why") {
    options.action = Action::kWhy;
    options.service = WholeNumber<int>(ValueOf(command, "SERVICE")).value_or(0);
    options.output = ReadOutputName(ValueOf(command, "OUTPUT")).value_or("");
    options.at = ReadMomentText(ValueOf(command, "MOMENT")).value_or(WrittenMoment());
    options.full = IsGiven(command, "--full");
    return options;
  }
  options.service = WholeNumber<int>(ValueOf(command, "--service")).value_or(0);
  options.from = MomentOf(command, "--from");
  options.to = MomentOf(command, "--to");
  if (name == "replay") {
    options.action = Action::kReplay;
    options.templateFile = ValueOf(command, "--template");
    options.page = IsGiven(command, "--page");
    options.urlEncode = IsGiven(command, "--url-encode");
    options.simpleText = ValueOf(command, "--simple-text", options.simpleText);
    options.escape = ValueOf(command, "--escape");
    return options;
  }
  options.output = ReadOutputName(ValueOf(command, "--output")).value_or("");
  if (IsGiven(command, "--songs")) options.action = Action::kSongs;
  if (IsGiven(command, "--csv")) options.form = HistoryForm::kCsv;
  if (IsGiven(command, "--json")) options.form = HistoryForm::kJson;
  return options;
}

template <class T>
Outcome Take(ZebctlOptions& options, Result<T> command) {
  if (!command) return Failure{command.Reason()};
  options.command = std::move(command.Value());
  return {};
}

Outcome TakeCommand(ZebctlOptions& options, const CLI::App& command) {
  const std::string group = GroupOf(command);
  if (group == "settings") return Take(options, SettingsOf(command));
  if (group == "set") {
    Result<ByHandOptions> set = SetOf(command);
    if (!set) return set.AsFailure();
    options.command = PublisherOptions(std::move(set.Value()));
    return {};
  }
  if (auto publisher = PublisherCommandOf(command)) {
    options.command = std::move(*publisher);
    return {};
  }
  if (NameOf(command) == "expand") return Take(options, Result<ExpandOptions>(ExpandOf(command)));
  if (NameOf(command) == "lint") return Take(options, Result<LintOptions>(LintOf(command)));
  if (NameOf(command) != "send") return Take(options, Result<HistoryOptions>(HistoryOf(command)));
  SendOptions send = ConnectionOf(command, "--name");
  send.messages = WordsOf(command, "MESSAGE");
  return Take(options, Result<SendOptions>(std::move(send)));
}

std::shared_ptr<CLI::App> MakeZebctl() {
  auto owned = MakeProgram("zebctl", "settings, messages, template previews and history for ZEB");
  CLI::App& program = *owned;
  RequireCommand(program);
  AddValue(program, "--home", "DIR", "the data folder, else " ZEB_USUAL_DATA_FOLDERS)
      .Check(CheckNotEmpty)
      .Takes("folder");
  DeclareSettings(program);
  DeclareSend(program);
  DeclareSet(program);
  DeclareExpand(program);
  DeclareLint(program);
  DeclarePublisherCommands(program);
  DeclareHistory(program);
  DeclareHelp(program);
  SetFooter(program, std::string("`zebctl COMMAND --help` tells more of each command.\n") + kExitStatus);
  return owned;
}

}  // namespace

Result<ZebctlOptions> ReadZebctlOptions(const std::vector<std::string>& words) {
  const auto owned = MakeZebctl();
  CLI::App& program = *owned;
  Result<std::string> read = ReadCommandLine(program, words);
  if (!read) return Failure{read.Reason()};
  ZebctlOptions options;
  options.textToShow = std::move(read.Value());
  if (!options.textToShow.empty()) return options;
  const CLI::App& command = GivenCommand(program);
  if (NameOf(command) == "completion") {
    options.textToShow =
        CompletionScript(ValueOf(command, "SHELL"),
                         {TableOf(program), LabelServerTable(), StartUpTable("zebd"), StartUpTable("zeb")});
    return options;
  }
  if (NameOf(command) == "help") {
    Result<std::string> help = HelpOn(*MakeZebctl(), WordsOf(command, "TOPIC"));
    if (!help) return help.AsFailure();
    options.textToShow = std::move(help.Value());
    return options;
  }
  options.home = ValueOf(program, "--home");
  if (const Outcome taken = TakeCommand(options, command); !taken) return Failure{taken.Reason()};
  return options;
}

CommandTable ZebctlTable() {
  return TableOf(*MakeZebctl());
}

}  // namespace zeb
