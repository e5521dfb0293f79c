#include "app/SupportCommand.h"

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "app/PublisherLink.h"
#include "app/StatusTable.h"
#include "app/SupportFile.h"
#include "text/Paths.h"

namespace zeb {
namespace {

void AskStatus(const CommandPorts& ports, SupportInput& input) {
  PublisherLink link(ports.loop, ports.sockets, ports.folder);
  boost::json::object all;
  const PublisherLink::Reply reply = AskServices(link, all);
  if (reply.Done()) {
    input.statusJson = boost::json::serialize(all) + "\n";
    input.status = StatusTable(all);
  } else if (!reply.notRunning) {
    input.status = reply.problem + "\n";  // one that hangs is what help may be wanted for
  }
}

}  // namespace

int RunSupportCommand(const CommandPorts& ports, const Environment& environment,
                      const SupportOptions& options) {
  SupportInput input;
  input.reason = options.reason;
  input.reference = options.reference;
  input.withTemplates = options.templates;
  AskStatus(ports, input);
  const WallTime now = ports.loop.Now();
  std::string path = options.file;
  if (const auto info = environment.files.Stat(path); info && info->isFolder)
    path = JoinPath(path, SupportFileName(options.reference, now));
  const std::vector<ZipEntry> entries = CollectSupport(environment.files, PlanSupport(environment, input));
  const Outcome written = WriteSupport(environment.files, *environment.zips, path, entries, now);
  if (!written) {
    ports.err << "zebctl: " << written.Reason() << std::endl;
    return 1;
  }
  ports.out << path << "\n";
  for (const ZipEntry& entry : entries) ports.out << "  " << entry.name << "  " << entry.bytes.size() << "\n";
  return ports.out.flush() ? 0 : 1;
}

}  // namespace zeb
