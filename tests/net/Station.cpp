#include "tests/net/Station.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace zeb {
namespace {

bool CanBind(int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const bool free = bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(socket);
  return free;
}

}  // namespace

Station::Station() {
  std::string name = (std::filesystem::temp_directory_path() / "zeb-station-XXXXXX").string();
  folder = mkdtemp(name.data());
  control = FreeControlPort();
}

Station::~Station() {
  zebd.reset();
  std::filesystem::remove_all(folder);
}

// Several tests run at a time: each process begins its search somewhere else.
int Station::FreeControlPort() {
  static int candidate = 100 + static_cast<int>(getpid() * 37 % 20000);
  do ++candidate;
  while (!IsFree(candidate));
  return candidate;
}

bool Station::IsFree(int controlPort) {
  return CanBind(6900 + controlPort);
}

Finished Station::Zebctl(std::vector<std::string> arguments, const std::string& input) const {
  arguments.insert(arguments.begin(), {Program("zebctl"), "--home", folder.string()});
  return RunProgram(arguments, input);
}

Finished Station::Send(std::vector<std::string> messages) const {
  messages.insert(messages.begin(), {"send", "--port", std::to_string(6900 + control)});
  return Zebctl(std::move(messages));
}

void Station::AddService(int number, int controlPort, const std::string& page,
                         const std::string& file) const {
  const std::string name = "template" + std::to_string(number);
  WriteFile(Path(name), page);
  const std::string root = "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1";
  std::ostringstream settings;
  settings << "REGEDIT4\n\n"
           << root << "]\n\"NumberServices\"=dword:" << std::hex << number
           << "\n\"DashboardPort\"=dword:" << dashboard << "\n\n"
           << std::dec << root << "\\Service" << number << "]\n\"ServiceName\"=\"Station " << number << "\"\n"
           << "\"InstantUpdate\"=dword:1\n\"TolvanTCPControlPort\"=dword:" << std::hex << controlPort
           << "\n\n"
           << std::dec << root << "\\Service" << number << "\\File]\n\"NumberOutputs\"=\"1\"\n"
           << "\"Output1.NumberFiles\"=\"1\"\n\"Output1.SourceFileName1\"=\"" << name << "\"\n"
           << "\"Output1.DestinationFileName1\"=\"" << file << "\"\n";
  WriteFile(Path("service.reg"), settings.str());
  const Finished imported = Zebctl({"settings", "import", Path("service.reg")});
  ASSERT_EQ(imported.status, 0) << imported.error;
}

std::vector<std::string> Station::ZebdCommand(const std::vector<std::string>& options) const {
  std::vector<std::string> command = {Program("zebd"), "--home", folder.string()};
  command.insert(command.end(), options.begin(), options.end());
  return command;
}

void Station::Start(const std::vector<std::string>& options) {
  zebd = std::make_unique<Process>(ZebdCommand(options));
  ASSERT_TRUE(zebd->WaitForError("is ready")) << zebd->error;
}

std::string Station::AwaitPage(const std::string& file, const std::string& text) {
  std::string page = ReadFile(Path(file));
  while (page.find(text) == std::string::npos && zebd->WaitForError("\n", Seconds(10)))
    page = ReadFile(Path(file));
  return page;
}

std::string Station::ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void Station::WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace zeb
