#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "app/ServiceEditor.h"
#include "outputs/OutputTable.h"
#include "platform/posix/SqliteHive.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

// On the real store, which another program has in hand for a while.
TEST(ServiceEditorOnAFile, GoesOnWhileAnotherProgramHoldsTheStore) {
  std::string folder = "/tmp/zeb-editor-XXXXXX";
  ASSERT_NE(::mkdtemp(folder.data()), nullptr);
  {
    const auto mine = SqliteHive::Open(folder + "/settings.db"),
               theirs = SqliteHive::Open(folder + "/settings.db");
    ASSERT_TRUE(mine && theirs);
    SqliteHive& other = *theirs.Value();
    mine.Value()->SetPatience(std::chrono::milliseconds(1));
    TestEnvironment ports;
    Environment environment{ports.loop,   *mine.Value(), ports.files, ports.network,
                            ports.person, ports.carts,   "/data",     ports.environment.settingsRoot};
    const std::string key = environment.ServiceKey(1), typeKey = key + "\\HTTPRequest";
    other.WriteNumber(environment.settingsRoot, "NumberServices", 1);
    other.WriteText(typeKey, "NumberOutputs", "1");
    const auto window = frmService::Create(environment, MakeOutputFactory(environment));
    window->Open(1);
    ServiceEditor editor(window);
    const OutputPtr running = window->service().Output(OutputType::kHTTP, 1);
    const OutputPtr draft = editor.NewDraft(OutputType::kHTTP);
    other.Transaction([&] {
      other.WriteText(key, "ServiceName", "Theirs");
      EXPECT_FALSE(editor.AddOutput(OutputType::kHTTP, *draft));
      EXPECT_FALSE(editor.RemoveOutput(running));
    });
    EXPECT_EQ(window->service().Output(OutputType::kHTTP, 1), running);
    EXPECT_EQ(window->service().OutputCount(14), 1);
    EXPECT_TRUE(editor.AddOutput(OutputType::kHTTP, *draft));
    EXPECT_EQ(window->service().Output(OutputType::kHTTP, 1), running);
    EXPECT_EQ(window->service().settings.ServiceName, "Theirs");
    EXPECT_EQ(other.ReadText(typeKey, "NumberOutputs", ""), "2");
    EXPECT_TRUE(editor.RemoveOutput(running));
    EXPECT_EQ(other.ReadText(typeKey, "NumberOutputs", ""), "1");
    EXPECT_EQ(other.ReadText(key, "ServiceName", ""), "Theirs");
    window->Close();
    EXPECT_TRUE(ports.loop.RunUntil([&] { return window->Closed(); }, 1min));
  }
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace zeb
