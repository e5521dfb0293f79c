#include "core/ProgramSettings.h"

namespace zeb {
namespace {

using S = ProgramSettings;
constexpr SettingRow<S> kRows[] = {
    {"ControlAllowedPeers", &S::ControlAllowedPeers},
    {"ControlBindAddress", &S::ControlBindAddress},
    {.name = "TrustedCaFile", .member = &S::TrustedCaFile, .entry = kNeededFileEntry},
    {"MediaFolders", &S::MediaFolders},
    {.name = "RetrySeconds", .member = &S::RetrySeconds, .storedAs = StoredAs::kNumber, .entry = kCountEntry},
    {.name = "BounceRetrySeconds",
     .member = &S::BounceRetrySeconds,
     .storedAs = StoredAs::kNumber,
     .entry = kCountEntry},
    {"Language", &S::Language},
};

}  // namespace

SettingTable<ProgramSettings> ProgramSettingTable() {
  return kRows;
}

std::string UsualCommPortDevice(std::int32_t commPort) {
#ifdef _WIN32
  return "COM" + std::to_string(commPort);
#else
  return "/dev/ttyS" + std::to_string(static_cast<std::int64_t>(commPort) - 1);
#endif
}

}  // namespace zeb
