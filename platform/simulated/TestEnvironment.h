// TestEnvironment: simulated ports put together, the usual start of an engine test.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/CartStore.h"
#include "platform/Environment.h"
#include "platform/Operator.h"
#include "platform/simulated/MemoryHive.h"
#include "platform/simulated/SimulatedFiles.h"
#include "platform/simulated/SimulatedLoop.h"
#include "platform/simulated/SimulatedNetwork.h"

namespace zeb {

// Keeps what the operator would have seen.
class RecordingOperator : public Operator {
 public:
  void Note(std::string_view line) override { notes.emplace_back(line); }
  void Show(MessageIcon, const std::string& text) override { shown.push_back(text); }
  void Ask(const std::string& question, std::function<void(bool)> answered) override {
    asked.push_back(question);
    if (keepsWaiting)
      open.push_back(std::move(answered));
    else
      answered(answer);
  }
  std::vector<std::string> notes, shown, asked;
  bool answer = true;
  bool keepsWaiting = false;  // questions stay open, in `open`, for the test to answer
  std::vector<std::function<void(bool)>> open;
};

class MemoryCarts : public CartStore {
 public:
  std::optional<Cart> Find(std::int32_t number) override {
    auto found = carts.find(number);
    return found == carts.end() ? std::nullopt : std::optional<Cart>(found->second);
  }
  std::shared_ptr<const CartTable> All() override {
    return std::make_shared<CartTable>(carts.begin(), carts.end());
  }
  std::map<std::int32_t, Cart> carts;
};

// Where Windows joins names with its own separator, the one at the end keeps names as they are elsewhere.
#ifdef _WIN32
inline constexpr char kSimulatedDataFolder[] = "/data/";
#else
inline constexpr char kSimulatedDataFolder[] = "/data";
#endif

struct TestEnvironment {
  SimulatedLoop loop;
  MemoryHive hive;
  SimulatedFiles files;
  SimulatedNetwork network{loop};
  RecordingOperator person;
  MemoryCarts carts;
  Environment environment{loop,
                          hive,
                          files,
                          network,
                          person,
                          carts,
                          kSimulatedDataFolder,
                          "Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1"};
};

}  // namespace zeb
