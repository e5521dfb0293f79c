#include "app/StationSetup.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <utility>

#include "app/SetupOutputs.h"
#include "core/ProgramSettings.h"
#include "core/SettingsPaths.h"
#include "core/clsZEBService.h"
#include "dialogs/TemplatePreview.h"
#include "outputs/OutputTable.h"
#include "outputs/http/RequestExchange.h"
#include "outputs/wire/WireCharacters.h"
#include "platform/FileSystem.h"
#include "platform/SerialPortControl.h"
#include "platform/SettingsHive.h"
#include "platform/WorkLane.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr std::int32_t kFirstControlPort = 6900;
constexpr std::int32_t kMostControlPorts = 20;  // those on offer everywhere
constexpr int kSerialPorts = 16;
constexpr std::uint16_t kIcecastPort = 8000;
constexpr std::uint64_t kMostTemplateBytes = 1024u * 1024;
constexpr const char* kTemplates = "templates";

struct Playout {
  const char* word;
  const char* text;
  const char* type;  // InfoSourceType
};
constexpr Playout kPlayouts[] = {
    {"link", "a playout system that sends lines over the network (the control link)", "0"},
    {"dallet50", "Dallet(TM) v5.0, which writes a file", "11"},
    {"dallet51", "Dallet(TM) v5.1 or higher, which writes a file", "12"},
    {"text", "another program, which writes a text file", "51"},
};

class StationSetup {
 public:
  StationSetup(const SetupPorts& ports, const SetupOptions& options, SetupTalk& talk)
      : ports_(ports), options_(options), answers_(options, talk) {}

  int Run() {
    AskForStation();
    AskForOutputs();
    if (outputs_.empty()) throw SetupWrong{"nothing would show the titles, so nothing is stored"};
    ShowSample();
    if (!options_.yes && answers_.CanAsk() && !answers_.Confirm("\nStore this", "y")) throw SetupEnded();
    Store();
    TellWhatIsNext();
    return 0;
  }

 private:
  SettingsHive& Hive() { return ports_.stored.hive; }
  StoredServices Stored() { return {Hive(), ports_.stored.settingsRoot}; }

  // ---- The station

  void AskForStation() {
    name_ = answers_.Get({.option = "name", .text = "The station's name", .check = CheckServiceName});
    found_.station = name_;
    service_ = FindService();
    if (service_ > 0) {
      answers_.Say("There is a station of that name: what it has stays, and what you choose is added.");
      return;
    }
    SetupAnswers::Choices choices;
    for (const Playout& one : kPlayouts) choices.emplace_back(one.word, one.text);
    const std::string word = answers_.Choose(
        {.option = "playout", .text = "\nWhere do its titles come from?", .usual = kPlayouts[0].word},
        choices);
    const auto* playout = std::find_if(std::begin(kPlayouts), std::end(kPlayouts),
                                       [&](const Playout& one) { return one.word == word; });
    settings_ = {{"InfoSourceType", playout->type}, {"InstantUpdate", "1"}};
    if (playout == std::begin(kPlayouts)) {
      port_ = FreeControlPort();
      settings_.push_back({"TolvanTCPControlPort", std::to_string(port_)});
      return;
    }
    file_ = answers_.Get(
        {.option = "file", .text = "Which file does it write", .check = [](const std::string& text) {
           return text.empty() ? Outcome(Failure{"the file's whole path is needed"}) : Outcome();
         }});
    settings_.push_back({"InfoSourceFileName", file_});
    if (!ports_.stored.files.Stat(file_))
      answers_.Say("  There is no '" + file_ + "' yet; it is looked for each second.");
  }

  int FindService() {
    const int count = ReadNumberServices(Hive(), ports_.stored.settingsRoot);
    for (int number = 1; number <= count; ++number)
      if (EqualIgnoringAsciiCase(Hive().ReadText(ports_.stored.ServiceKey(number), "ServiceName", ""), name_))
        return number;
    return 0;
  }

  // Of our own stations, and of this machine; a publisher that runs has those of its stations.
  std::int32_t FreeControlPort() {
    const StoredServices stored = Stored();
    const auto listener = ports_.draft.network.MakeListener();
    for (std::int32_t port = 1; port <= kMostControlPorts; ++port)
      if (stored.CheckControlPort(port) &&
          listener->Listen("", static_cast<std::uint16_t>(kFirstControlPort + port)))
        return port;
    return 0;
  }

  // ---- Outputs

  void AskForOutputs() {
    std::vector<const SetupKind*> wanted;
    for (const SetupKind& kind : SetupKinds())
      if (answers_.IsGiven(kind.option)) wanted.push_back(&kind);
    if (wanted.empty()) return AskForKinds();
    for (const SetupKind* kind : wanted) AskFor(*kind);
  }

  void AskForKinds() {
    if (!answers_.CanAsk())
      throw SetupWrong{
          "setup needs at least one of --web-folder, --ftp, --icecast, --shoutcast, "
          "--rds, --dab and --http"};
    SetupAnswers::Choices choices;
    for (const SetupKind& kind : SetupKinds()) choices.emplace_back(kind.word, kind.text);
    do {
      const std::string word = answers_.Choose(
          {.option = "", .text = "\nWhat shall show the titles?", .usual = choices.front().first}, choices);
      const auto kind = std::find_if(SetupKinds().begin(), SetupKinds().end(),
                                     [&](const SetupKind& one) { return one.word == word; });
      AskFor(*kind);
    } while (answers_.Confirm("Anything else that shall show them", "n"));
  }

  // Asked and tried, until it works, is kept all the same or is left out.
  void AskFor(const SetupKind& kind) {
    for (;;) {
      LookAround(kind);
      const SetupOutput output = kind.ask(answers_, found_);
      if (!output.templates.empty() && ports_.examples.empty())
        throw SetupWrong{"the examples did not come with this program, so there are no templates for " +
                         output.said};
      const Outcome works = Try(output);
      if (works) return outputs_.push_back(output);
      if (!answers_.CanAsk()) {
        if (options_.keep) return outputs_.push_back(output);
        throw SetupWrong{output.said + " does not work (" + works.Reason() +
                         "); put it right, or store it all the same with --keep"};
      }
      const std::string next = answers_.Choose(
          {.option = "", .text = "That does not work. What now?", .usual = "again"},
          {{"again", "change the answers"}, {"keep", "keep it all the same"}, {"leave", "leave it out"}});
      if (next == "keep") return outputs_.push_back(output);
      if (next == "leave") return;
      for (const char* option : kind.options) answers_.Forget(option);
    }
  }

  void LookAround(const SetupKind& kind) {
    const std::string_view word = kind.word;
    if (word == "rds") FindSerialPorts();
    if (word == "icecast" && !answers_.IsGiven("icecast")) FindIcecast();
  }

  void FindSerialPorts() {
    found_.serialPorts.clear();
    for (const char* folder : {"/dev/serial/by-id", "/dev"}) {
      const auto names = ports_.draft.files.List(folder);
      for (const std::string& name : names ? names.Value() : std::vector<std::string>())
        if (std::string_view(folder) != "/dev" || name.starts_with("ttyUSB") || name.starts_with("ttyACM") ||
            name == "ttyS0")
          found_.serialPorts.push_back(std::string(folder) + "/" + name);
    }
    if (SerialPorts* const system = ports_.draft.serialPorts; system && found_.serialPorts.empty())
      for (const SerialPorts::Found& port : system->Available()) found_.serialPorts.push_back(port.device);
    for (int number = 1; number <= kSerialPorts; ++number) {
      found_.freeSerialNumber = number;
      const std::string name = "CommPortDevice" + std::to_string(number);
      if (!Hive().HasValue(ports_.stored.settingsRoot, name) && !IsTaken(number)) return;
    }
  }
  bool IsTaken(int number) const {
    return std::any_of(outputs_.begin(), outputs_.end(), [&](const SetupOutput& output) {
      return !output.root.empty() && output.root.front().name == "CommPortDevice" + std::to_string(number);
    });
  }

  void FindIcecast() {
    const Epoch epoch;
    const auto client = ports_.draft.network.MakeClient();
    const RequestTarget here{"127.0.0.1", kIcecastPort};
    const ExchangeResult result =
        SendRequest(ports_.draft.loop, *client, here, "GET /status-json.xsl HTTP/1.0\r\n\r\n", epoch.Now());
    const bool runs = result.reply.find("\"icestats\"") != std::string::npos;
    found_.icecast = runs ? ServerText(here) : "";
  }

  // ---- Trying

  // A hive of its own, in which the output is the only one; so it is made of its settings as it will be
  // later.
  Outcome Try(const SetupOutput& output) {
    Environment& draft = ports_.draft;
    draft.hive.DeleteKey(draft.settingsRoot);
    try {
      ServiceEntry entry(draft.hive, draft.files, draft.dataFolder, draft.settingsRoot);
      const Result<int> service = entry.AddService(name_, {});
      if (!service) return service.AsFailure();
      Add(draft, output, service.Value(), JoinPath(ports_.examples, ""));
    } catch (const SettingsError& error) {
      answers_.Say("✗ " + std::string(error.what()));
      return Failure{error.what()};
    }
    answers_.Say("Trying " + output.said + " …");
    ServiceEvents nobody;
    clsZEBService service(draft, MakeOutputFactory(draft), nobody);
    service.SetServiceNumber(1);
    const OutputPtr made = service.Output(output.type, 1);
    const std::unique_ptr<OutputTest> test = made ? MakeOutputTest(draft, output.type, *made) : nullptr;
    if (!test) return Failure{"it cannot be tried"};
    Outcome works;
    (void)StepsOf(draft.loop, *test, [&](const TestStep& step) {
      const std::string text = OneLine(step.Text(), 1000);
      answers_.Say((step.ok ? "  ✓ " : "  ✗ ") + text);
      if (!step.ok) works = Failure{text};
    });
    return works;
  }

  // Throws SettingsError.
  static void Add(Environment& to, const SetupOutput& output, int service, const std::string& templates) {
    ServiceEntry entry(to.hive, to.files, to.dataFolder, to.settingsRoot);
    ServiceEntry::Settings settings = output.settings;
    for (std::size_t i = 0; i < output.templates.size(); ++i)
      settings.push_back({"SourceFileName" + std::to_string(i + 1), templates + output.templates[i]});
    const Result<OutputName> added = entry.AddOutput(service, output.type, settings);
    if (!added) throw SettingsError(added.Reason());
    for (const EnteredSetting& value : output.root)
      to.hive.WriteText(to.settingsRoot, value.name, value.value);
  }

  void ShowSample() {
    const SnapshotPtr song = SampleSnapshot(PreviewItem::kSong, ports_.draft.loop.Now());
    answers_.Say("\nWith the song 'Paper Moons' by Ada Quill on air, listeners would see:");
    for (const SetupOutput& output : outputs_) {
      std::string seen = "  " + output.said + ": ";
      if (output.text.empty()) {
        seen += "a page with title, artist, picture and the songs before, and the same as JSON and XML";
      } else if (const auto text = PreviewTemplate(output.text, *song)) {
        seen += KeepToSet(text->text, SetOf(output));
      }
      answers_.Say(seen);
    }
  }

  static CharacterSet SetOf(const SetupOutput& output) {
    for (const EnteredSetting& setting : output.settings)
      if (setting.name == "CharacterSet") return CharacterSetByName(setting.value, CharacterSet::kUtf8);
    return CharacterSet::kUtf8;
  }

  // ---- Storing

  void Store() {
    CopyTemplates();
    Hive().Transaction([&] {
      if (service_ == 0) {
        Environment& stored = ports_.stored;
        ServiceEntry entry(stored.hive, stored.files, stored.dataFolder, stored.settingsRoot);
        const Result<int> added = entry.AddService(name_, settings_);
        if (!added) throw SettingsError(added.Reason());
        service_ = added.Value();
      }
      for (const SetupOutput& output : outputs_)
        Add(ports_.stored, output, service_, std::string(kTemplates) + "/");
    });
    answers_.Say("\nStored: " + name_ + " is service " + std::to_string(service_) + ".");
    const std::string told = ports_.tellPublisher();
    if (!told.empty()) answers_.Say(told);
  }

  // A file that is there already is the station's own by now.
  void CopyTemplates() {
    for (const SetupOutput& output : outputs_)
      for (const std::string& name : output.templates) {
        FileSystem& files = ports_.stored.files;
        const std::string to = JoinPath(JoinPath(ports_.stored.dataFolder, kTemplates), name);
        if (files.Stat(to)) continue;
        const Result<std::string> bytes = files.Read(JoinPath(ports_.examples, name), kMostTemplateBytes);
        if (!bytes) throw SettingsError(bytes.Reason());
        if (const Outcome made = files.CreateFolders(std::string(FolderPart(to))); !made)
          throw SettingsError(made.Reason());
        const auto target = files.FindTarget(to, {});
        const Outcome written = target ? target.Value()->Replace(bytes.Value()) : Outcome(target.AsFailure());
        if (!written) throw SettingsError(written.Reason());
      }
  }

  void TellWhatIsNext() {
    if (port_ > 0) {
      answers_.Say("\nLet the playout system send its items to port " +
                   std::to_string(kFirstControlPort + port_) + " of this machine, each line ended by CR LF:");
      answers_.Say("  NET_CONTROL_LOGON playout");
      answers_.Say("  SET_CURRENT_ITEM IType=7 ITitle=\"Paper Moons\" AName1=\"Ada Quill\"");
      answers_.Say("  SET_NEXT_ITEM IType=7 ITitle=\"Nine Lives of a Tram\" AName1=\"The Overhead Wires\"");
    } else if (!file_.empty()) {
      answers_.Say("\nThe playout system writes '" + file_ + "'; each change of it is published.");
    }
    answers_.Say("To see it work at once:");
    answers_.Say("  zebctl set current --service " + std::to_string(service_) +
                 " --title 'Paper Moons' --artist 'Ada Quill'");
    answers_.Say("  zebctl status");
  }

  const SetupPorts& ports_;
  const SetupOptions& options_;
  SetupAnswers answers_;
  SetupFindings found_;
  std::string name_, file_;
  ServiceEntry::Settings settings_;
  std::int32_t port_ = 0;
  int service_ = 0;
  std::vector<SetupOutput> outputs_;
};

}  // namespace

const std::vector<SetupOption>& SetupOptionList() {
  static const std::string rds = "an RDS encoder: " + UsualCommPortDevice(1) + ", tcp:NAME:PORT";
  static const std::vector<SetupOption> list = {
      {"name", "NAME", "the station's name"},
      {"playout", "WORD", "where its titles come from: link, dallet50, dallet51 or text",
       "=link dallet50 dallet51 text"},
      {"file", "FILE", "the file that the playout system writes", "file"},
      {"web-folder", "DIR", "pages into the folder of a web server on this machine", "folder"},
      {"ftp", "SERVER", "pages to a web server elsewhere"},
      {"ftp-user", "NAME", "its user name"},
      {"ftp-password", "WORD", "its password"},
      {"ftp-folder", "DIR", "the folder there"},
      {"icecast", "SERVER", "titles of an Icecast stream"},
      {"icecast-mount", "MOUNT", "its mount point"},
      {"icecast-password", "WORD", "its source password"},
      {"shoutcast", "SERVER", "titles of a SHOUTcast stream"},
      {"shoutcast-password", "WORD", "its password"},
      {"rds", "DEVICE", rds.c_str(), "file"},
      {"dab", "SERVER", "DAB labels by a label server"},
      {"dab-service", "NAME", "the service's name there"},
      {"dab-password", "WORD", "its password"},
      {"http", "URL", "an address on the web that takes titles"},
      {"http-text", "TEXT", "what follows it"},
  };
  return list;
}

int RunSetup(const SetupPorts& ports, const SetupOptions& options, SetupTalk& talk) {
  try {
    return StationSetup(ports, options, talk).Run();
  } catch (const SetupEnded&) {
    talk.Complain("nothing is stored");
    return 1;
  } catch (const SetupWrong& wrong) {
    talk.Complain(wrong.why);
    return 2;
  } catch (const SettingsError& error) {
    talk.Complain("nothing is stored: " + std::string(error.what()));
    return 1;
  }
}

}  // namespace zeb
