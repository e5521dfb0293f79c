// Real FTP servers on loopback, each started for one test in its folder; what they serve is its "site".
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tests/net/Process.h"

namespace zeb {

// User "anonymous", any password. Null (and the test has failed) when it does not start. `more` goes to its
// settings.
std::unique_ptr<Process> StartVsftpd(const std::filesystem::path& folder, int port, bool tls = false,
                                     const std::string& more = "");
// User "radio", password "secret".
std::unique_ptr<Process> StartPureFtpd(const std::filesystem::path& folder, int port);

}  // namespace zeb
