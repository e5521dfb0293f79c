// Any bytes as a .reg file: they are refused with a line number, or imported so that what is exported reads
// back as the same settings.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/RegFile.h"
#include "platform/simulated/MemoryHive.h"

namespace {

// With one top key to export from, since a hive may hold several.
std::string ExportAll(zeb::MemoryHive& hive) {
  std::string text;
  for (const std::string& key : hive.SubKeys("")) text += zeb::ExportRegFile(hive, key);
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  zeb::MemoryHive hive;
  hive.WriteText("Software\\Hexmoor", "Before", "stays");
  const std::string before = ExportAll(hive);
  const zeb::Result<zeb::RegSummary> imported = zeb::ImportRegFile(hive, bytes);
  const std::string after = ExportAll(hive);
  if (!imported) {
    if (imported.Reason().empty() || after != before) std::abort();
    return 0;
  }
  zeb::MemoryHive copy;
  for (const std::string& key : hive.SubKeys(""))
    if (!zeb::ImportRegFile(copy, zeb::ExportRegFile(hive, key))) std::abort();
  if (ExportAll(copy) != after) std::abort();
  return 0;
}
