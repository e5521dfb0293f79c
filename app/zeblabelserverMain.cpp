// zeb-labelserver: takes DAB labels over TCP and writes them to files for a PAD encoder.

#include <unistd.h>

#include <QCoreApplication>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "app/ConsoleOperator.h"
#include "app/LabelServerOptions.h"
#include "outputs/labels/LabelServer.h"
#include "platform/ThreadedLineWriter.h"
#include "platform/posix/PosixFiles.h"
#include "platform/qt/ProgramSignals.h"
#include "platform/qt/QtLoop.h"
#include "platform/qt/QtMessages.h"
#include "platform/qt/QtNetwork.h"
#include "platform/system/Process.h"
#include "platform/system/ServiceManager.h"
#include "platform/system/StandardError.h"
#include "platform/system/SystemLocale.h"

namespace zeb {
namespace {

constexpr std::uint64_t kMaxConfigBytes = 1024 * 1024;
constexpr int kCannotStart = 1;
constexpr int kWrongUsage = 2;

int Fail(LineWriter& journal, const std::string& reason, int status = kCannotStart) {
  journal.Write({"", "", "zeb-labelserver: " + reason});
  return status;
}

int Serve(LineWriter& journal, const LabelServerOptions& options) {
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
  const ProgramSignals programSignals(loop, [&](ProgramSignal signal) {
    if (signal == ProgramSignal::kReload) return;
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
  const Result<LabelServerOptions> options = ReadLabelServerOptions({argv + 1, argv + argc});
  if (!options) return Fail(journal, options.Reason(), kWrongUsage);
  if (!options.Value().textToShow.empty()) {
    std::cout << options.Value().textToShow;
    return 0;
  }
  PrepareSystem();
  SendQtMessagesTo(journal);
  QtLoop::ChoosePlainDispatcher();
  const QCoreApplication application(argc, argv);
  UseEnglishSystemMessages();
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
