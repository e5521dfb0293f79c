// A folder for one test, on every system. Who makes it removes it.
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace zeb {

inline std::string MakeOwnFolder() {
  std::random_device random;
  while (true) {
    const auto folder = std::filesystem::temp_directory_path() / ("zeb-test-" + std::to_string(random()));
    if (std::filesystem::create_directory(folder)) return folder.string();
  }
}

}  // namespace zeb
