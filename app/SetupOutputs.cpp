#include "app/SetupOutputs.h"

#include <cstdint>
#include <string_view>

#include "core/ProgramSettings.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr const char* kLine =
    "[(<ZEB_NOW_ITEMTYPE>=Song)<ZEB_NOW_ARTISTS> - <ZEB_NOW_ITEMNAME>]"
    "[(<ZEB_NOW_ITEMTYPE>!=Song)<ZEB_SPECIAL_SERVICENAME>]";
constexpr const char* kRequest = "?artist=<ZEB_NOW_ARTISTS>&title=<ZEB_NOW_ITEMNAME>";
constexpr const char* kRdsMost = "64";  // characters of a radio text

struct Server {
  std::string host, port;
};

// "host", "host:port" or "[::1]:port".
Result<Server> ReadServer(std::string_view text, const char* usualPort) {
  Server server{std::string(text), usualPort};
  const bool bracketed = text.starts_with('[');
  const std::size_t end = bracketed ? text.find(']') : text.find(':');
  const std::size_t colon = text.find(':', bracketed && end != std::string_view::npos ? end : 0);
  if (colon != std::string_view::npos) {
    server = {std::string(text.substr(0, colon)), std::string(text.substr(colon + 1))};
    if (WholeNumber<std::uint16_t>(server.port).value_or(0) == 0)
      return Failure{"'" + server.port + "' is no port number"};
  }
  if (server.host.empty() || server.host.find_first_of(" /") != std::string::npos)
    return Failure{"a server is given as name or name:port"};
  return server;
}

Outcome CheckServer(const std::string& text) {
  return ReadServer(text, "80");
}

Outcome CheckSomething(const std::string& text) {
  return text.empty() ? Outcome(Failure{"something is needed here"}) : Outcome();
}

Outcome CheckFolder(const std::string& text) {
  return text.starts_with('/') ? Outcome()
                               : Outcome(Failure{"a whole path is needed, such as /var/www/html"});
}

Outcome CheckMount(const std::string& text) {
  return text.starts_with('/') && text.size() > 1 ? Outcome()
                                                  : Outcome(Failure{"a mount begins with '/': /live.mp3"});
}

void AddPages(SetupOutput& output, const std::string& folder) {
  const std::string start = folder.empty() || folder.ends_with('/') ? folder : folder + "/";
  int pair = 0;
  for (const char* page : {"now.html", "now.json", "now.xml"}) {
    const std::string k = std::to_string(++pair);
    output.templates.push_back(std::string("now-playing-page/") + page);
    output.settings.push_back({"DestinationFileName" + k, start + page});
    output.settings.push_back({"EscapeValues" + k, "auto"});
  }
  output.settings.push_back({"CopyAdditionalFiles", "1"});
}

SetupOutput AskWebFolder(SetupAnswers& answers, const SetupFindings&) {
  const std::string folder = answers.Get({.option = "web-folder",
                                          .text = "Which folder does the web server show",
                                          .usual = "/var/www/html",
                                          .check = CheckFolder});
  SetupOutput output{
      .type = OutputType::kFile, .settings = {}, .templates = {}, .said = "the folder " + folder};
  AddPages(output, folder);
  return output;
}

SetupOutput AskFtp(SetupAnswers& answers, const SetupFindings&) {
  const std::string server =
      answers.Get({.option = "ftp", .text = "The FTP server (name or name:port)", .check = CheckServer});
  const Server place = ReadServer(server, "21").Value();
  SetupOutput output{
      .type = OutputType::kWeb, .settings = {}, .templates = {}, .said = "the FTP server " + server};
  output.settings = {{"FTPServerName", place.host}, {"FTPServerPort", place.port}};
  output.settings.push_back(
      {"FTPUsername", answers.Get({.option = "ftp-user", .text = "User name", .check = CheckSomething})});
  output.settings.push_back(
      {"FTPPassword",
       answers.Get({.option = "ftp-password", .text = "Password", .secret = true, .check = CheckSomething})});
  AddPages(output,
           answers.Get({.option = "ftp-folder", .text = "Folder on the server, empty for the first one"}));
  return output;
}

SetupOutput Stream(const Server& place, const std::string& password, std::string said) {
  return {.type = OutputType::kEncoder,
          .settings = {{"EncoderType", "2"},
                       {"SHOUTCastServerName", place.host},
                       {"SHOUTCastServerPort", place.port},
                       {"SHOUTCastServerPassword", password},
                       {"SimpleTextFormat", std::string("####TITLE:") + kLine}},
          .templates = {},
          .said = std::move(said),
          .text = kLine};
}

SetupOutput AskIcecast(SetupAnswers& answers, const SetupFindings& found) {
  const std::string server =
      answers.Get({.option = "icecast",
                   .text = found.icecast.empty() ? "The Icecast server (name or name:port)"
                                                 : "The Icecast server (one runs on this machine)",
                   .usual = found.icecast,
                   .check = CheckServer});
  const std::string mount = answers.Get({.option = "icecast-mount",
                                         .text = "The stream's mount point",
                                         .usual = "/live.mp3",
                                         .check = CheckMount});
  const std::string password = answers.Get(
      {.option = "icecast-password", .text = "The source password", .secret = true, .check = CheckSomething});
  SetupOutput output = Stream(ReadServer(server, "8000").Value(), password, "the stream " + server + mount);
  output.settings.push_back({"IcecastMount", mount});
  return output;
}

SetupOutput AskShoutcast(SetupAnswers& answers, const SetupFindings&) {
  const std::string server = answers.Get(
      {.option = "shoutcast", .text = "The SHOUTcast server (name or name:port)", .check = CheckServer});
  const std::string password = answers.Get(
      {.option = "shoutcast-password", .text = "Its password", .secret = true, .check = CheckSomething});
  SetupOutput output = Stream(ReadServer(server, "8000").Value(), password, "the stream of " + server);
  output.settings.push_back({"SHOUTCastEncoding", "full"});
  return output;
}

SetupOutput AskRds(SetupAnswers& answers, const SetupFindings& found) {
  if (answers.CanAsk() && !answers.IsGiven("rds")) {
    answers.Say(found.serialPorts.empty()
                    ? "  No serial port was found; an encoder on the network is tcp:NAME:PORT."
                    : "  Serial ports of this machine:");
    for (const std::string& port : found.serialPorts) answers.Say("    " + port);
  }
  const std::string device =
      answers.Get({.option = "rds",
                   .text = "The encoder's port",
                   .usual = found.serialPorts.size() == 1 ? found.serialPorts.front() : std::string(),
                   .check = [](const std::string& text) -> Outcome {
                     const std::string usual = UsualCommPortDevice(1);
                     const bool isDevice =
                         text.starts_with("/dev/") || text.starts_with(usual.substr(0, usual.size() - 1));
                     if (isDevice || (text.starts_with("tcp:") && ReadServer(text.substr(4), ""))) return {};
                     return Failure{"a device such as " + usual + ", or tcp:NAME:PORT"};
                   }});
  const std::string number = std::to_string(found.freeSerialNumber);
  return {.type = OutputType::kSerial,
          .settings = {{"CommPort", number},
                       {"Settings", "9600,n,8,1"},
                       {"CharacterSet", "RDS"},
                       {"MaxNumberChars", kRdsMost},
                       {"SimpleTextFormat", kLine},
                       {"AppendCharsFormat", "{0D}{0A}"}},
          .root = {{"CommPortDevice" + number, device}},
          .templates = {},
          .said = "the RDS encoder at " + device,
          .text = kLine};
}

SetupOutput AskDab(SetupAnswers& answers, const SetupFindings& found) {
  const std::string server = answers.Get({.option = "dab",
                                          .text = "The label server (name or name:port)",
                                          .usual = "127.0.0.1:4000",
                                          .check = CheckServer});
  const Server place = ReadServer(server, "4000").Value();
  const std::string service = answers.Get({.option = "dab-service",
                                           .text = "The service's name there",
                                           .usual = found.station,
                                           .check = CheckSomething});
  const std::string password = answers.Get(
      {.option = "dab-password", .text = "Its password", .secret = true, .check = CheckSomething});
  return {.type = OutputType::kDAB,
          .settings = {{"ServerName", place.host},
                       {"ServerPort", place.port},
                       {"ServiceName", service},
                       {"ServicePassword", password},
                       {"CharacterSet", "EBU Latin"},
                       {"SimpleTextFormat", kLine}},
          .templates = {},
          .said = "DAB labels by " + server,
          .text = kLine};
}

struct Address {
  Server server;
  std::string path;
  bool tls = false;
};

Result<Address> ReadAddress(std::string_view url) {
  Address address;
  address.tls = url.starts_with("https://");
  if (!address.tls && !url.starts_with("http://"))
    return Failure{"an address begins with http:// or https://"};
  url.remove_prefix(address.tls ? 8 : 7);
  const std::size_t slash = url.find('/');
  const Result<Server> server = ReadServer(url.substr(0, slash), address.tls ? "443" : "80");
  if (!server) return server.AsFailure();
  address.server = server.Value();
  address.path = slash == std::string_view::npos ? "/" : std::string(url.substr(slash));
  return address;
}

SetupOutput AskHttp(SetupAnswers& answers, const SetupFindings&) {
  const std::string url =
      answers.Get({.option = "http",
                   .text = "The address, without what follows the '?'",
                   .check = [](const std::string& text) -> Outcome { return ReadAddress(text); }});
  const Address address = ReadAddress(url).Value();
  const std::string text = answers.Get({.option = "http-text", .text = "What follows it", .usual = kRequest});
  return {.type = OutputType::kHTTP,
          .settings = {{"ServerName", address.server.host},
                       {"ServerPort", address.server.port},
                       {"UseTLS", address.tls ? "1" : "0"},
                       {"URL", address.path},
                       {"SimpleTextFormat", text}},
          .templates = {},
          .said = "the address " + url,
          .text = text};
}

}  // namespace

const std::vector<SetupKind>& SetupKinds() {
  static const std::vector<SetupKind> kinds = {
      {"web", "web-folder", "a web server on this machine", AskWebFolder, {"web-folder"}},
      {"ftp",
       "ftp",
       "a web server elsewhere, by FTP",
       AskFtp,
       {"ftp", "ftp-user", "ftp-password", "ftp-folder"}},
      {"icecast",
       "icecast",
       "the titles of an Icecast stream",
       AskIcecast,
       {"icecast", "icecast-mount", "icecast-password"}},
      {"shoutcast",
       "shoutcast",
       "the titles of a SHOUTcast stream",
       AskShoutcast,
       {"shoutcast", "shoutcast-password"}},
      {"rds", "rds", "car radios, by an RDS encoder", AskRds, {"rds"}},
      {"dab", "dab", "DAB radios, by a label server", AskDab, {"dab", "dab-service", "dab-password"}},
      {"http", "http", "an address on the web that takes titles", AskHttp, {"http", "http-text"}}};
  return kinds;
}

}  // namespace zeb
