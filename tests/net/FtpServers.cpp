#include "tests/net/FtpServers.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <fstream>
#include <vector>

#include "tests/net/Sockets.h"

namespace zeb {
namespace {

std::unique_ptr<Process> StartServer(int port, const std::vector<std::string>& command) {
  auto server = std::make_unique<Process>(command);
  for (int tries = 0; tries < 200; ++tries) {
    if (Socket::Connect(port).Valid()) return server;
    ::poll(nullptr, 0, 50);  // its start tells us nothing to wait for
  }
  const int status = server->Wait(Seconds(1));
  ADD_FAILURE() << "the FTP server does not start (" << status << "): " << server->error << server->output;
  return nullptr;
}

}  // namespace

std::unique_ptr<Process> StartVsftpd(const std::filesystem::path& folder, int port, bool tls,
                                     const std::string& more) {
  std::filesystem::create_directories(folder / "empty");
  std::string config =
      "listen=YES\nlisten_address=127.0.0.1\nbackground=NO\nlisten_port=" + std::to_string(port) +
      "\nanonymous_enable=YES\nno_anon_password=YES\nwrite_enable=YES\nanon_upload_enable=YES\n"
      "anon_mkdir_write_enable=YES\nanon_other_write_enable=YES\nanon_world_readable_only=NO\n"
      "anon_umask=022\nconnect_from_port_20=NO\nseccomp_sandbox=NO\npasv_address=127.0.0.1\nanon_root=" +
      (folder / "site").string() + "\nsecure_chroot_dir=" + (folder / "empty").string() + "\n" + more;
  const std::string certificate = std::string(ZEB_TEST_DATA) + "/qt/certificates/localhost.";
  if (tls)
    config +=
        "ssl_enable=YES\nallow_anon_ssl=YES\nforce_anon_logins_ssl=YES\nforce_anon_data_ssl=YES\n"
        "require_ssl_reuse=NO\nrsa_cert_file=" +
        certificate + "pem\nrsa_private_key_file=" + certificate + "key\n";
  std::ofstream(folder / "vsftpd.conf") << config;
  return StartServer(port, {"/usr/sbin/vsftpd", (folder / "vsftpd.conf").string()});
}

std::unique_ptr<Process> StartPureFtpd(const std::filesystem::path& folder, int port) {
  const std::string programs = std::string(ZEB_SOURCE_DIR) + "/build/peers/pure-ftpd/usr/";
  // The password, hashed beforehand: the server's own tool takes seconds and much memory for it.
  std::ofstream(folder / "users")
      << "radio:$6$radiosalt$1lD1qJ5ZjxqmEh90exrmm/"
         "tqpbOaxaWGTJtNYUJPtwyoUthKKdqxDlEo8yIGAbokW9qu0LAfEZS7GqtPbdxaE/:65534:65534::"
      << (folder / "site").string() << "/./::::::::::::\n";
  const std::string users = (folder / "users.pdb").string();
  const Finished made =
      RunProgram({programs + "bin/pure-pw", "mkdb", users, "-f", (folder / "users").string()});
  EXPECT_EQ(made.status, 0) << made.error;
  return StartServer(port, {programs + "sbin/pure-ftpd", "-S", "127.0.0.1," + std::to_string(port), "-l",
                            "puredb:" + users, "-E", "-H", "-u", "1", "-g", (folder / "ftpd.pid").string()});
}

}  // namespace zeb
