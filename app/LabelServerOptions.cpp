#include "app/LabelServerOptions.h"

#include <utility>

#include "app/CommandLine.h"

namespace zeb {

namespace {

std::shared_ptr<CLI::App> MakeLabelServer() {
  auto owned = MakeProgram("zeb-labelserver", "takes DAB labels and writes them to files for a PAD encoder");
  CLI::App& program = *owned;
  AddValue(program, "--config", "FILE.ini", "one section a service: [name], Password=..., FileName=...")
      .Required()
      .Check(CheckNotEmpty)
      .Takes("file");
  AddValue(program, "--port", "N", "the TCP port (4000); 0 takes a free one").Check(CheckPortOrNone);
  AddValue(program, "--address", "A", "the address to listen on (127.0.0.1)");
  SetFooter(program, "Exit status: 0 ended by SIGTERM or SIGINT, 1 cannot start, 2 wrong usage.");
  return owned;
}

}  // namespace

CommandTable LabelServerTable() {
  return TableOf(*MakeLabelServer());
}

Result<LabelServerOptions> ReadLabelServerOptions(const std::vector<std::string>& words) {
  const auto owned = MakeLabelServer();
  CLI::App& program = *owned;
  Result<std::string> read = ReadCommandLine(program, words);
  if (!read) return read.AsFailure();
  LabelServerOptions options;
  options.textToShow = std::move(read.Value());
  if (!options.textToShow.empty()) return options;
  options.config = ValueOf(program, "--config");
  options.address = ValueOf(program, "--address", options.address);
  options.port = WholeNumber<std::uint16_t>(ValueOf(program, "--port")).value_or(options.port);
  return options;
}

}  // namespace zeb
