// Station: a zebd on a temporary data folder, with zebctl to set it up and feed it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/net/Process.h"

namespace zeb {

class Station : public testing::Test {
 protected:
  Station();
  ~Station() override;

  static std::string Program(const std::string& name) { return std::string(ZEB_BUILD_DIR) + "/" + name; }
  Finished Zebctl(std::vector<std::string> arguments, const std::string& input = "") const;
  Finished Send(std::vector<std::string> messages) const;
  // Service `number` with one file output that writes `page` into `file`, on a control port.
  void AddService(int number, int controlPort, const std::string& page, const std::string& file) const;
  // Starts zebd and waits until it is ready.
  void Start(const std::vector<std::string>& options = {});
  std::vector<std::string> ZebdCommand(const std::vector<std::string>& options = {}) const;
  // Waits, journal line by journal line, until the file holds `text`; what it holds in the end.
  std::string AwaitPage(const std::string& file, const std::string& text);
  std::string Path(const std::string& name) const { return (folder / name).string(); }
  static std::string ReadFile(const std::string& path);
  static void WriteFile(const std::string& path, const std::string& text);
  // A control port number whose TCP port (6900 + it) is free now.
  static int FreeControlPort();
  static bool IsFree(int controlPort);

  std::filesystem::path folder;
  int control = 0;
  int dashboard = 0;  // the web page's port; 0: no web page
  std::unique_ptr<Process> zebd;
};

}  // namespace zeb
