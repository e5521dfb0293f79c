#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "app/LabelServerOptions.h"
#include "app/ZebctlOptions.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

using Words = std::vector<std::string>;

void ShowPublisher(const PublisherOptions& options, std::ostream& out) {
  if (const auto* status = std::get_if<StatusOptions>(&options)) {
    out << "status " << status->json << status->watch;
  } else if (const auto* update = std::get_if<UpdateOptions>(&options)) {
    out << "update " << update->service;
  } else if (const auto* set = std::get_if<ByHandOptions>(&options)) {
    const char* const ways[] = {"", "here ", "link "};
    out << ways[static_cast<int>(set->way)] << set->send.host << ' ' << set->send.port << ' '
        << set->send.name;
    for (const std::string& message : set->send.messages) out << " [" << message << ']';
    if (set->service != 1) out << ' ' << set->service;
  } else if (const auto* station = std::get_if<StationOptions>(&options)) {
    out << static_cast<int>(station->action) << ' ' << station->service << " [" << station->name << "] "
        << NameOf(station->type) << station->output << (station->json ? " json" : "");
    for (const auto& [name, value] : station->values) out << " [" << name << "=" << value << ']';
  } else if (const auto* test = std::get_if<TestOptions>(&options)) {
    out << "test " << test->service << ' ' << test->output.Text();
  } else if (const auto* support = std::get_if<SupportOptions>(&options)) {
    out << "support [" << support->file << "] [" << support->reason << "] [" << support->reference << "]"
        << (support->templates ? " templates" : "");
  } else {
    out << "password";
  }
}

// What was read, in one line.
std::string Shown(const Words& words) {
  const auto read = ReadZebctlOptions(words);
  if (!read) return read.Reason();
  const ZebctlOptions& options = read.Value();
  EXPECT_EQ(options.textToShow, "");
  std::ostringstream out;
  if (!options.home.empty()) out << "home=" << options.home << ' ';
  if (const auto* settings = std::get_if<SettingsOptions>(&options.command)) {
    out << static_cast<int>(settings->action) << " [" << settings->key << "] ";
    if (settings->name) out << '[' << *settings->name << "] ";
    if (settings->number)
      out << *settings->number;
    else
      out << '[' << settings->data << ']';
    out << settings->file;
  } else if (const auto* send = std::get_if<SendOptions>(&options.command)) {
    out << send->host << ' ' << send->port << ' ' << send->name;
    for (const std::string& message : send->messages) out << " [" << message << ']';
  } else if (const auto* publisher = std::get_if<PublisherOptions>(&options.command)) {
    ShowPublisher(*publisher, out);
  } else if (const auto* history = std::get_if<HistoryOptions>(&options.command)) {
    const auto utc = [](const std::optional<WrittenMoment>& moment) {
      return moment ? XmlDateTime(moment->wall) + (moment->utcOffset ? "+" : "") : "-";
    };
    out << static_cast<int>(history->action) << ' ' << history->service << " [" << history->output << "] "
        << utc(history->from) << ' ' << utc(history->to) << ' ' << static_cast<int>(history->form) << ' '
        << XmlDateTime(history->at.wall) << " [" << history->templateFile << "] " << history->page
        << history->urlEncode << history->escape << (history->full ? " full" : "");
  } else {
    const auto& expand = std::get<ExpandOptions>(options.command);
    out << '[' << expand.templateFile << "] [" << expand.messagesFile << "] [" << expand.simpleText << "] "
        << expand.page << expand.urlEncode << expand.listFiles << ' ' << expand.now.has_value() << ' '
        << expand.service << expand.escape;
  }
  return out.str();
}

struct Case {
  Words words;
  std::string shown;
};

template <std::size_t N>
void Check(const Case (&cases)[N]) {
  for (const Case& c : cases) {
    std::string line;
    for (const std::string& word : c.words) line += "'" + word + "' ";
    EXPECT_EQ(Shown(c.words), c.shown) << line;
  }
}

TEST(ZebctlOptions, ReadsSettings) {
  Check({{{"settings", "list"}, "0 [] []"},
         {{"--home", "/d", "settings", "list", "Service1/File"}, "home=/d 0 [Service1/File] []"},
         {{"--home=/d", "settings", "get", "", "set"}, "home=/d 1 [] [set] []"},
         {{"settings", "set", "k", "n", ""}, "2 [k] [n] []"},
         {{"settings", "set", "k", "n", "a b"}, "2 [k] [n] [a b]"},
         {{"settings", "set", "k", "n", "-1", "--number"}, "2 [k] [n] -1"},
         {{"settings", "set", "--number", "k", "n", "4294967295"}, "2 [k] [n] -1"},
         {{"settings", "set", "k", "n", "-1"}, "2 [k] [n] [-1]"},
         {{"settings", "set", "k", "n", "-p --q=r"}, "2 [k] [n] [-p --q=r]"},
         {{"settings", "set", "k", "n", "--password="}, "2 [k] [n] [--password=]"},
         {{"settings", "set", "k", "n", "++"}, "2 [k] [n] [++]"},
         {{"settings", "set", "k", "n", "--", "--number"}, "2 [k] [n] [--number]"},
         {{"settings", "set", "--", "k", "n", "--"}, "2 [k] [n] [--]"},
         {{"settings", "delete", "k"}, "3 [k] []"},
         {{"settings", "delete", "k", "n"}, "3 [k] [n] []"},
         {{"settings", "import", "a.reg"}, "4 [] []a.reg"},
         {{"settings", "export", "--", "-k"}, "5 [-k] []"}});
}

TEST(ZebctlOptions, ReadsMessages) {
  const std::string sent = "127.0.0.1 6901 zebctl";
  Check({{{"send"}, sent},
         {{"send", "A x=\"1 2\"", "", "-", "send", "settings"},
          sent + " [A x=\"1 2\"] [] [-] [send] [settings]"},
         {{"send", "a", "--", "-b", "--", "--port"}, sent + " [a] [-b] [--] [--port]"},
         // Words to which the reading library gives a meaning of its own.
         {{"send", "[a,b]", "{}", "++", "help"}, sent + " [[a,b]] [{}] [++] [help]"},
         {{"send", "{}"}, sent + " [{}]"},
         {{"send", "a", "--host", "h", "b", "--port=6903", "--name", "-x"}, "h 6903 -x [a] [b]"},
         {{"send", "--port", "1", "--port", "2"}, "127.0.0.1 2 zebctl"}});
}

TEST(ZebctlOptions, ReadsEntriesByHand) {
  const std::string sent = "127.0.0.1 6901 zebctl ";
  Check(
      {{{"set", "current", "--title", " Say \"Hi\" ", "--artist", "A=B"},
        sent + "[SET_CURRENT_ITEM  IType=7 ITitle=\"Say {22}Hi{22}\" AName1=\"A{3D}B\"]"},
       {{"set", "current", "--title", "--", "--artist=", "--notes", "--artist"},
        sent + "[SET_CURRENT_ITEM  IType=7 ITitle=\"--\" StNotes=\"--artist\"]"},
       {{"set", "next", "--type", "spot"}, sent + "[SET_NEXT_ITEM  IType=4]"},
       {{"set", "previous", "--type", "link"}, sent + "[SET_PREVIOUS_ITEM  IType=3]"},
       {{"set", "coming", "--type", "12", "--cart", ""}, sent + "[SET_COMINGSOON_ITEM  IType=12]"},
       {{"set", "promote", "next"}, sent + "[SET_CURRENT_ITEM Promote=NEXT IType=7]"},
       {{"set", "promote", "coming", "--type", "other"}, sent + "[SET_CURRENT_ITEM Promote=COMING IType=2]"},
       {{"set", "presenter", "--reference", "NC", "--name", "Nell Carver"},
        sent + "[SET_PRESENTER  Presenter=\"NC\" Fullname=\"Nell Carver\"]"},
       {{"set", "show", "--reference", "17", "--title", "Drive FULLNAME=x"},
        sent + "[SET_SHOW  Show=\"17\" Title=\"Drive FULLNAME{3D}x\"]"},
       {{"set", "next", "--host", "h", "--port", "6903", "--controller", "me"},
        "link h 6903 me [SET_NEXT_ITEM  IType=7]"}});
}

TEST(ZebctlOptions, ReadsPreviews) {
  Check({{{"expand", "-", "--simple-text", "", "--messages", "m", "--url-encode", "--list-files"},
          "[-] [m] [] 011 0 0"},
         {{"expand", "--page", "--now", "2026-03-02T07:08:09", "--simple-text", "t", "--service", "2", "--",
           "-f"},
          "[-f] [] [t] 100 1 2"},
         {{"expand", "--escape", "auto"}, "[] [] [" + ExpandOptions().simpleText + "] 000 0 0auto"}});
}

TEST(ZebctlOptions, ReadsQuestionsToTheHistory) {
  const std::string never = XmlDateTime({});
  Check({{{"history"}, "0 0 [] - - 0 " + never + " [] 00"},
         {{"history", "--service", "2", "--output", "file3", "--from", "2026-11-24 08:14", "--json"},
          "0 2 [File3] 2026-11-24T08:14:00 - 2 " + never + " [] 00"},
         {{"history", "--songs", "--csv", "--to", "2026-11-24T08:14:05+01:00"},
          "1 0 [] - 2026-11-24T08:14:05+ 1 " + never + " [] 00"},
         {{"why", "--full", "2", "web1", "2026-11-24T08:14Z"},
          "2 2 [Web1] - - 0 2026-11-24T08:14:00 [] 00 full"},
         {{"why", "1", "DAB1", "2026-11-24 08:14"}, "2 1 [DAB1] - - 0 2026-11-24T08:14:00 [] 00"},
         {{"replay", "--service", "3", "--template", "a.html", "--page", "--escape", "html"},
          "3 3 [] - - 0 " + never + " [a.html] 10html"}});
}

TEST(ZebctlOptions, NamesTheWordAtFault) {
  const std::string type = "takes song, link, spot, other or a number, not ";
  Check(
      {{{},
        "a command is missing: settings, send, set, expand, lint, setup, status, update, reload, dashboard, "
        "test, "
        "support, "
        "service, "
        "output, "
        "history, why, replay, completion or help (zebctl --help)"},
       {{"--home"}, "--home needs a value (zebctl --help)"},
       {{"--loud", "send"}, "there is no option '--loud' (zebctl send --help)"},
       {{"publish", "--now"}, "there is no option '--now' (zebctl --help)"},
       {{"publish", "send"}, "there is no command 'publish' (zebctl --help)"},
       {{"settings"}, "settings what? list, get, set, delete, import or export (zebctl settings --help)"},
       {{"settings", "unset"}, "settings has no command 'unset' (zebctl settings --help)"},
       {{"settings", "get", "k"}, "settings get needs NAME (zebctl settings get --help)"},
       {{"settings", "get", "k", "n", "x"}, "settings get has no use for 'x' (zebctl settings get --help)"},
       {{"settings", "set", "k", "n"}, "settings set needs DATA (zebctl settings set --help)"},
       {{"settings", "set", "k", "n", "1", "--text"},
        "settings set has no use for '--text' (zebctl settings set --help)"},
       {{"settings", "set", "k", "n", "1x", "--number"}, "DATA must be a whole number of 32 bits, not '1x'"},
       {{"settings", "list", "a", "b"}, "settings list has no use for 'b' (zebctl settings list --help)"},
       {{"settings", "list", "-x"}, "settings list has no option '-x' (zebctl settings list --help)"},
       {{"settings", "delete"}, "settings delete needs KEY (zebctl settings delete --help)"},
       {{"settings", "delete", ""}, "KEY needs a value (zebctl settings delete --help)"},
       {{"settings", "import"}, "settings import needs FILE.reg (zebctl settings import --help)"},
       {{"history", "--output", "Radio1"},
        "--output takes an output such as File2, not 'Radio1' (zebctl history --help)"},
       {{"history", "--output", "File0"},
        "--output takes an output such as File2, not 'File0' (zebctl history --help)"},
       {{"history", "--csv", "--json"}, "--csv does not go with --json (zebctl history --help)"},
       {{"history", "--songs", "--output", "File1"},
        "--output does not go with --songs (zebctl history --help)"},
       {{"why", "0", "File1", "2026-11-24 08:14"},
        "SERVICE takes the number of a service, not '0' (zebctl why --help)"},
       {{"why", "1", "File1"}, "why needs MOMENT (zebctl why --help)"},
       {{"why", "1", "File1", "08:14"},
        "MOMENT takes a moment, \"YYYY-MM-DD hh:mm[:ss]\" or RFC 3339, not '08:14' (zebctl why --help)"},
       {{"replay", "--service", "1"}, "replay needs --template (zebctl replay --help)"},
       {{"send", "--home", "d"}, "send has no option '--home' (zebctl send --help)"},
       {{"send", "a", "--port"}, "--port needs a value (zebctl send --help)"},
       {{"send", "--port", "70000"}, "--port takes a port number, not '70000' (zebctl send --help)"},
       {{"send", "--port=0"}, "--port takes a port number, not '0' (zebctl send --help)"},
       {{"send", "--name=", "a"}, "--name needs a value (zebctl send --help)"},
       {{"send", "--host", "a\nb"}, "--host takes one line (zebctl send --help)"},
       {{"send", "one\ntwo"},
        "MESSAGE must be one line: write line ends in values as {0D}{0A} (zebctl send --help)"},
       {{"send", std::string(kMaxMessageBytes + 1, 'x')},
        "MESSAGE must not be longer than 1 MiB (zebctl send --help)"},
       {{"set"}, "set what? current, next, previous, coming, promote, presenter or show (zebctl set --help)"},
       {{"set", "now"}, "set has no command 'now' (zebctl set --help)"},
       {{"set", "promote"}, "set promote needs next|coming (zebctl set promote --help)"},
       {{"set", "promote", "previous"},
        "next|coming is to be given, not 'previous' (zebctl set promote --help)"},
       {{"set", "current", "x"}, "set current has no use for 'x' (zebctl set current --help)"},
       {{"set", "current", "--name", "x"}, "set current has no option '--name' (zebctl set current --help)"},
       {{"set", "current", "--controller", ""}, "--controller needs a value (zebctl set current --help)"},
       {{"set", "current", "--type", "tune"}, "--type " + type + "'tune' (zebctl set current --help)"},
       {{"set", "current", "--cart", "-1"}, "--cart takes a number, not '-1' (zebctl set current --help)"},
       {{"set", "show", "--title", "x"}, "set show needs --reference (zebctl set show --help)"},
       {{"help", "set", "nope"},
        "there is no help on 'set nope', but on settings, send, set, expand, lint, setup, status, update, "
        "reload, "
        "dashboard, test, support, service, output, history, why, replay, completion, help, tags"},
       {{"completion", "fish"}, "SHELL takes bash or zsh, not 'fish' (zebctl completion --help)"},
       {{"expand", "a", "b"}, "expand has no use for 'b' (zebctl expand --help)"},
       {{"expand", "--page=no"}, "--page takes no value (zebctl expand --help)"},
       {{"expand", "--page", "--url-encode"}, "--page does not go with --url-encode (zebctl expand --help)"},
       {{"expand", "--escape", "yaml"},
        "--escape takes html, xml, json or auto, not 'yaml' (zebctl expand --help)"},
       {{"expand", "--now", "2026-02-30 00:00:00"},
        "--now takes a moment \"YYYY-MM-DD hh:mm:ss\", not '2026-02-30 00:00:00' (zebctl expand --help)"},
       {{"expand", "--service", "0"},
        "--service takes the number of a service, not '0' (zebctl expand --help)"}});
}

void ExpectHelp(const CommandTable& command, const Words& path) {
  for (const CommandTable& one : command.commands) {
    Words asked = path, withOption(path.begin() + 1, path.end());
    for (Words* words : {&asked, &withOption}) words->push_back(one.name);
    withOption.push_back("--help");
    const auto help = ReadZebctlOptions(asked);
    ASSERT_TRUE(help) << help.Reason();
    EXPECT_EQ(help.Value().textToShow, ReadZebctlOptions(withOption).Value().textToShow);
    for (const OptionRow& option : one.options)
      EXPECT_NE(help.Value().textToShow.find(option.names.front()), std::string::npos) << one.name;
    ExpectHelp(one, asked);
  }
}

TEST(ZebctlOptions, HelpOfEachCommandIsThatOfItsOwnOption) {
  ExpectHelp(ZebctlTable(), {"help"});
  EXPECT_EQ(ReadZebctlOptions({"help"}).Value().textToShow, ReadZebctlOptions({"--help"}).Value().textToShow);
  EXPECT_NE(ReadZebctlOptions({"help", "tags"}).Value().textToShow.find("  <ZEB_NOW_ItemName>\n"),
            std::string::npos);
}

TEST(ZebctlOptions, HelpNamesEverythingInLinesOfEightyColumns) {
  const struct {
    Words words;
    Words named;
  } cases[] = {
      {{"help"}, {"--home DIR", "settings import FILE.reg", "set promote next|coming", "Exit status"}},
      {{"-h"}, {"send [MESSAGE ...]"}},
      {{"settings", "set", "--help"}, {"settings set [--number] KEY NAME DATA"}},
      {{"help", "send"}, {"--host H", "--port P", "--name NAME"}},
      {{"set", "current", "--help"}, {"--title T", "--artist A", "--type", "--cart N", "--controller"}},
      {{"set", "show", "--help"}, {"set show --reference R"}},
      {{"expand", "--help"}, {"--messages FILE", "--list-files", "[TEMPLATE-FILE]"}},
      {{"--version"}, {"zebctl "}},
  };
  for (const auto& c : cases) {
    const auto read = ReadZebctlOptions(c.words);
    ASSERT_TRUE(read) << read.Reason();
    const std::string& text = read.Value().textToShow;
    for (const std::string& name : c.named)
      EXPECT_NE(text.find(name), std::string::npos) << name << "\n" << text;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
  }
}

TEST(LabelServerOptions, ReadsItsLine) {
  const auto read = ReadLabelServerOptions({"--config", "a.ini", "--port", "0", "--address=::1"});
  ASSERT_TRUE(read) << read.Reason();
  EXPECT_EQ(read.Value().config, "a.ini");
  EXPECT_EQ(read.Value().address, "::1");
  EXPECT_EQ(read.Value().port, 0);
  EXPECT_EQ(ReadLabelServerOptions({"--config", "a.ini"}).Value().port, 4000);
  EXPECT_NE(ReadLabelServerOptions({"--help"}).Value().textToShow.find("--config FILE.ini"),
            std::string::npos);
  const Case wrong[] = {
      {{}, "--config is needed"},
      {{"--config"}, "--config needs a value"},
      {{"--config", "a", "--port", "65536"}, "--port takes a port number, not '65536'"},
      {{"--config", "a", "--loud"}, "there is no option '--loud'"},
      {{"--config", "a", "b"}, "there is no use for 'b'"},
  };
  for (const Case& c : wrong)
    EXPECT_EQ(ReadLabelServerOptions(c.words).Reason(), c.shown + " (zeb-labelserver --help)");
}

TEST(ZebctlOptions, ReadsWhatIsDoneToThePublisherHere) {
  Check({
      {{"status"}, "status 00"},
      {{"status", "--json", "--watch"}, "status 11"},
      {{"update"}, "update 0"},
      {{"update", "3"}, "update 3"},
      {{"dashboard", "password"}, "password"},
      {{"set", "show", "--reference", "4", "--service", "2"},
       "here 127.0.0.1 6901 zebctl [SET_SHOW  Show=\"4\" Title=\"\"] 2"},
      {{"update", "0"}, "SERVICE takes the number of a service, not '0' (zebctl update --help)"},
      {{"set", "next", "--service", "2", "--port", "6902"},
       "--service is of this machine's zebd; with --host or --port the port says which service"},
  });
}

TEST(ZebctlOptions, ReadsStationsAndOutputs) {
  Check({
      {{"service", "list"}, "0 0 [] File0"},
      {{"service", "list", "--json"}, "0 0 [] File0 json"},
      {{"service", "add", "A B"}, "1 0 [A B] File0"},
      {{"service", "add", "A", "X=1", "Y=a=b", "Z="}, "1 0 [A] File0 [X=1] [Y=a=b] [Z=]"},
      {{"service", "remove", "2"}, "2 2 [] File0"},
      {{"service", "rename", "2", "C"}, "3 2 [C] File0"},
      {{"output", "list", "1"}, "4 1 [] File0"},
      {{"output", "add", "1", "http", "URL=/x"}, "5 1 [] HTTP0 [URL=/x]"},
      {{"output", "remove", "1", "dab12"}, "6 1 [] DAB12"},
      {{"output", "add", "1", "RDS"},
       "TYPE takes one of Web, Encoder, File, DAB, HTTP, Serial, not 'RDS' (zebctl output add --help)"},
      {{"output", "add", "1", "File", "=x"},
       "SETTING=VALUE takes settings as NAME=VALUE, not '=x' (zebctl output add --help)"},
      {{"output", "remove", "1", "File"},
       "OUTPUT takes an output such as File1, not 'File' (zebctl output remove --help)"},
      {{"output", "remove", "1", "File0"},
       "OUTPUT takes an output such as File1, not 'File0' (zebctl output remove --help)"},
      {{"test", "2", "http3"}, "test 2 HTTP3"},
      {{"test", "2", "http"}, "OUTPUT takes an output such as File1, not 'http' (zebctl test --help)"},
      {{"test", "0", "File1"}, "SERVICE takes the number of a service, not '0' (zebctl test --help)"},
      {{"support", "/tmp", "--reason", "old page", "--templates"}, "support [/tmp] [old page] [] templates"},
      {{"support"}, "support needs FILE.zip (zebctl support --help)"},
      {{"support", ""}, "FILE.zip needs a value (zebctl support --help)"},
      {{"service", "rename", "2"}, "service rename needs NAME (zebctl service rename --help)"},
  });
}

}  // namespace
}  // namespace zeb
