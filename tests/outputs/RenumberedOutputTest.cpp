// An output goes from the store, and those behind it run on under another number.
#include "core/StoredServices.h"
#include "outputs/OutputTable.h"
#include "tests/outputs/WebFixture.h"

namespace zeb {
namespace {

TEST(RenumberedOutput, RunsOnAndFindsWhatItHasNoted) {
  TestEnvironment t;
  SimulatedFtp ftp;
  t.environment.ftp = &ftp;
  t.files.Put("/t/a", "page");
  const std::string key = t.environment.ServiceKey(1) + "\\Web";
  t.hive.WriteNumber(t.environment.settingsRoot, "NumberServices", 1);
  t.hive.WriteText(key, "NumberOutputs", "2");
  t.hive.WriteText(key, "FTPServerName1", "first");
  t.hive.WriteText(key, "FTPServerName2", "second");
  t.hive.WriteText(key, "FTPMovedPages2", "/w/a.htm|/w/ZEB1.TMP");
  ftp.files["/w/ZEB1.TMP"] = "old";
  ServiceEvents events;
  clsZEBService service(t.environment, MakeOutputFactory(t.environment), events);
  service.SetServiceNumber(1);
  const OutputPtr second = service.Output(OutputType::kWeb, 2);

  StoredServices stored(t.hive, t.environment.settingsRoot);
  ASSERT_TRUE(stored.RemoveOutput(1, {OutputType::kWeb, 1}));
  const auto changes = service.ReadAgain();
  ASSERT_TRUE(changes);
  EXPECT_TRUE(changes.Value().added.empty());
  EXPECT_EQ(service.Output(OutputType::kWeb, 1), second);
  EXPECT_EQ(service.OutputCount(static_cast<int>(OutputType::kWeb)), 1);

  EXPECT_EQ(t.hive.ReadText(key, "FTPMovedPages1", ""), "/w/a.htm|/w/ZEB1.TMP");
  EXPECT_TRUE(t.loop.RunTask([&] {
    const SnapshotPtr snapshot = service.TakeSnapshot();
    second->UpdateOutput(snapshot);
    second->FinishOutput(snapshot);
  }));
  EXPECT_EQ(ftp.files.count("/w/a.htm"), 1U);
  EXPECT_FALSE(t.hive.HasValue(key, "FTPMovedPages1")) << "its own note, under its present number";
}

}  // namespace
}  // namespace zeb
