// zeb-labelserver: takes DAB labels over TCP and writes them to files for a PAD encoder.

#include <unistd.h>

#include <QCoreApplication>
#include <charconv>
#include <csignal>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "app/ConsoleOperator.h"
#include "outputs/labels/LabelServer.h"
#include "platform/ThreadedLineWriter.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/ServiceManager.h"
#include "platform/posix/StandardError.h"
#include "platform/qt/QtLoop.h"
#include "platform/qt/QtMessages.h"
#include "platform/qt/QtNetwork.h"
#include "platform/qt/QtSignals.h"

namespace zeb {
namespace {

constexpr std::uint64_t kMaxConfigBytes = 1024 * 1024;
constexpr std::uint16_t kDefaultPort = 4000;
constexpr int kCannotStart = 1;
constexpr int kWrongUsage = 2;

constexpr char kHelp[] =
    "zeb-labelserver: takes DAB labels and writes them to files for a PAD encoder\n"
    "\n"
    "  zeb-labelserver --config FILE.ini [--port N] [--address A]\n"
    "\n"
    "  --config FILE.ini   one section a service: [name], Password=..., FileName=...\n"
    "  --port N            the TCP port (4000); 0 takes a free one\n"
    "  --address A         the address to listen on (127.0.0.1)\n"
    "  --version, --help\n"
    "\n"
    "Exit status: 0 ended by SIGTERM or SIGINT, 1 cannot start, 2 wrong usage.\n";

int Fail(LineWriter& journal, const std::string& reason, int status = kCannotStart) {
  journal.Write({"", "", "zeb-labelserver: " + reason});
  return status;
}

struct Options {
  std::string config, address = "127.0.0.1";
  std::uint16_t port = kDefaultPort;
  bool help = false, version = false;
};

Result<Options> ReadOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = arguments[i];
    if (name == "--help" || name == "--version") {
      (name == "--help" ? options.help : options.version) = true;
      continue;
    }
    if (name != "--config" && name != "--port" && name != "--address")
      return Failure{"there is no option '" + name + "'"};
    if (++i == arguments.size()) return Failure{name + " needs a value"};
    const std::string& value = arguments[i];
    if (name == "--config") {
      options.config = value;
    } else if (name == "--address") {
      options.address = value;
    } else {
      const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), options.port);
      if (error != std::errc() || end != value.data() + value.size())
        return Failure{"'" + value + "' is no port number"};
    }
  }
  if (!options.help && !options.version && options.config.empty()) return Failure{"--config is needed"};
  return options;
}

int Serve(LineWriter& journal, const Options& options) {
  QtLoop loop;
  QtNetwork network(loop);
  PosixFiles files;
  ConsoleOperator person(journal, isatty(STDERR_FILENO) != 0 ? &loop : nullptr);
  const Result<std::string> ini = files.Read(options.config, kMaxConfigBytes);
  if (!ini) return Fail(journal, ini.Reason());
  Result<std::vector<LabelService>> services = ReadLabelServices(ini.Value());
  if (!services) return Fail(journal, "'" + options.config + "': " + services.Reason());
  const std::size_t count = services.Value().size();
  LabelServer server(loop, network, files, person, std::move(services.Value()));
  if (const Outcome listening = server.Listen(options.address, options.port); !listening)
    return Fail(journal, listening.Reason());
  const UnixSignals unixSignals(loop, [&](int signal) {
    if (signal == SIGHUP) return;
    person.Note("Stopping");
    server.Close();
    loop.Quit(0);
  });
  person.Note("zeb-labelserver " ZEB_VERSION " is ready on port " + std::to_string(server.Port()) + " for " +
              std::to_string(count) + (count == 1 ? " service" : " services"));
  NotifyServiceManager("READY=1");
  return loop.Run();
}

int Run(LineWriter& journal, int argc, char** argv) {
  const Result<Options> options = ReadOptions({argv + 1, argv + argc});
  if (!options) return Fail(journal, options.Reason() + " (zeb-labelserver --help)", kWrongUsage);
  if (options.Value().help) std::cout << kHelp;
  if (options.Value().version) std::cout << "zeb-labelserver " << ZEB_VERSION << '\n';
  if (options.Value().help || options.Value().version) return 0;
  std::signal(SIGPIPE, SIG_IGN);
  SendQtMessagesTo(journal);
  QtLoop::ChoosePlainDispatcher();
  const QCoreApplication application(argc, argv);
  return Serve(journal, options.Value());
}

}  // namespace
}  // namespace zeb

int main(int argc, char** argv) {
  zeb::ThreadedLineWriter journal(zeb::WriteToStandardError);
  try {
    return zeb::Run(journal, argc, argv);
  } catch (const std::exception& error) {
    return zeb::Fail(journal, error.what());
  }
}
