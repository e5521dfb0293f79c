#include <gtest/gtest.h>

#include "app/frmMain.h"
#include "platform/simulated/SimulatedProcesses.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

const std::string kOldRoot = "Software\\Hexmoor\\ZEB";

// An output whose update takes as long as the test wants.
class SlowOutput : public clsZEBTemplate {
 public:
  SlowOutput(Environment& environment, bool& released, int& stopped)
      : clsZEBTemplate(environment), released_(released), stopped_(stopped) {}
  bool UpdateOutput(const SnapshotPtr&) override {
    return environment_.loop.WaitUntil([this] { return released_; }, 24h);
  }
  bool StopOutput() override {
    ++stopped_;
    return true;
  }

 private:
  bool& released_;
  int& stopped_;
};

class frmMainTest : public testing::Test {
 protected:
  frmMainTest() {
    world.environment.settingsRoot.clear();  // choosing it is the start-up's business
  }

  void Store(const std::string& root, int services) {
    world.hive.WriteNumber(root, "NumberServices", services);
    for (int i = 1; i <= services; ++i)
      world.hive.WriteText(root + "\\Service" + std::to_string(i), "ServiceName", Name(i));
  }
  static std::string Name(int number) { return "Station " + std::to_string(number); }

  std::unique_ptr<frmMain> Make(StartUpOptions options = {}) {
    auto factory = [this](OutputType type) -> OutputPtr {
      if (type != OutputType::kFile) return nullptr;
      return std::make_shared<SlowOutput>(world.environment, released, stopped);
    };
    return std::make_unique<frmMain>(world.environment, factory, std::move(options));
  }
  std::vector<std::string> Names(const frmMain& main) {
    std::vector<std::string> names;
    for (int i = 1; i <= main.NumberServices(); ++i)
      names.push_back(main.Window(i)->service().settings.ServiceName);
    return names;
  }
  std::string StoredName(int number) {
    return world.hive.ReadText(root + "\\Service" + std::to_string(number), "ServiceName", "(none)");
  }

  TestEnvironment world;
  const std::string root = "Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1";
  bool released = false;
  int stopped = 0;
};

TEST_F(frmMainTest, LoadsEveryServiceOfTheProfileInUse) {
  Store(root, 2);
  Store("Software\\Hexmoor\\ZEB v3\\Profiles\\Evening", 1);
  auto main = Make();
  ASSERT_TRUE(main->Load().Ok());
  EXPECT_EQ(Names(*main), (std::vector<std::string>{"Station 1", "Station 2"}));

  world.hive.WriteText("Software\\Hexmoor\\Tolvan v3\\Tools", "LastProfile", "Evening");
  main = Make();
  ASSERT_TRUE(main->Load().Ok());
  EXPECT_EQ(Names(*main), (std::vector<std::string>{"Station 1"}));
}

TEST_F(frmMainTest, CopiesThePreviousVersionsServicesOnce) {
  Store(kOldRoot, 3);
  auto main = Make();
  ASSERT_TRUE(main->Load().Ok());
  EXPECT_EQ(main->NumberServices(), 3);
  EXPECT_EQ(world.environment.settingsRoot, root);
  EXPECT_EQ(StoredName(3), "Station 3");

  // From then on the old root no longer matters.
  world.hive.WriteNumber(kOldRoot, "NumberServices", 9);
  main = Make();
  ASSERT_TRUE(main->Load().Ok());
  EXPECT_EQ(main->NumberServices(), 3);
}

// Also without a failure: an output that is at something older for half a minute, of whatever service.
TEST_F(frmMainTest, AnOldItemIsAnAlarmUntilTheOutputShowsThePresentOne) {
  SimulatedProcesses processes(world.loop);
  world.environment.processes = &processes;
  Store(root, 2);
  world.hive.WriteText(root + "\\Service2\\File", "NumberOutputs", "1");
  world.hive.WriteText(root, "AlarmCommand", "/alarm");
  auto main = Make();
  ASSERT_TRUE(main->Load().Ok());
  world.loop.RunFor(1min);
  EXPECT_TRUE(processes.orders.empty());  // there is nothing to show yet
  main->Window(2)->SetZEBInformation("SET_CURRENT_ITEM IType=7 ITitle=\"One\"");
  world.loop.RunFor(30s);
  EXPECT_TRUE(processes.orders.empty());
  world.loop.RunFor(4s);
  ASSERT_EQ(processes.orders.size(), 1U);
  using Variables = std::vector<std::pair<std::string, std::string>>;
  EXPECT_EQ(processes.orders[0].variables, (Variables{{"ZEB_ALARM", "begin"},
                                                      {"ZEB_SERVICE", "Station 2"},
                                                      {"ZEB_OUTPUT", "File1"},
                                                      {"ZEB_PROBLEM", "it does not show the present item"}}));
  released = true;
  world.loop.RunFor(5s);
  ASSERT_EQ(processes.orders.size(), 2U);
  EXPECT_EQ(processes.orders[1].variables[0].second, "end");
}

TEST_F(frmMainTest, WindowsAreArrangedAtTheStartOnly) {
  Store(root, 1);
  const auto main = Make();
  int arranged = 0;
  main->display.arrange = [&] { ++arranged; };
  ASSERT_TRUE(main->Load());
  EXPECT_EQ(arranged, 1);
  Store(root, 2);
  main->Reload();
  world.loop.RunPosted();
  EXPECT_EQ(main->NumberServices(), 2);
  EXPECT_EQ(arranged, 1);
}

TEST_F(frmMainTest, ImportsBeforeItLoads) {
  ASSERT_TRUE(world.files.CreateFolders("/media").Ok());
  const std::string good = "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\" + root + "]\n\"NumberServices\"=dword:2\n";
  ASSERT_TRUE(world.files.Write("/media/good.reg", good).Ok());
  ASSERT_TRUE(world.files.Write("/media/bad.reg", good + "nonsense\n").Ok());
  StartUpOptions options;
  options.importFile = "/media/bad.reg";
  const Outcome failed = Make(options)->Load();
  EXPECT_NE(failed.Reason().find("'/media/bad.reg': line 5"), std::string::npos) << failed.Reason();
  EXPECT_FALSE(world.hive.KeyExists(root));

  options.importFile = "/media/good.reg";
  auto main = Make(options);
  ASSERT_TRUE(main->Load().Ok());
  EXPECT_EQ(main->NumberServices(), 2);
}

TEST_F(frmMainTest, DoesNotStartWithoutItsSettings) {
  world.hive.failure = "disk I/O error";
  EXPECT_EQ(Make()->Load().Reason(), "disk I/O error");
}

TEST_F(frmMainTest, AddsAndRemovesServicesAndKeepsThemNumberedWithoutGaps) {
  Store(root, 4);
  auto main = Make();
  ASSERT_TRUE(main->Load().Ok());
  EXPECT_EQ(main->AddService(), 5);
  EXPECT_EQ(main->Window(5)->service().settings.ServiceName, "Unknown Service");
  EXPECT_EQ(world.hive.ReadNumber(root, "NumberServices", 0), 5);

  world.person.answer = false;
  main->RemoveService(2);
  EXPECT_EQ(main->NumberServices(), 5);
  world.person.answer = true;
  main->RemoveService(2);
  EXPECT_EQ(world.person.asked,
            std::vector<std::string>(2, "Are you sure you want to remove the Service \"Station 2\"?"));
  EXPECT_EQ(Names(*main),
            (std::vector<std::string>{"Station 1", "Station 3", "Station 4", "Unknown Service"}));
  for (int i = 1; i <= 4; ++i) {
    EXPECT_EQ(main->Window(i)->service().ServiceNumber(), i);
    EXPECT_EQ(StoredName(i), Names(*main)[static_cast<std::size_t>(i) - 1]);
  }
  EXPECT_FALSE(world.hive.KeyExists(root + "\\Service5"));
  EXPECT_EQ(world.hive.ReadNumber(root, "NumberServices", 0), 4);
  main->RemoveService(4);
  main->RemoveService(4);  // there is none any more
  main->RemoveService(0);
  EXPECT_EQ(main->NumberServices(), 3);
  EXPECT_EQ(world.person.asked.size(), 3u);
}

TEST_F(frmMainTest, RemovesTheServiceThatWasAskedAboutWhereverItStandsByThen) {
  Store(root, 3);
  auto main = Make();
  ASSERT_TRUE(main->Load().Ok());
  world.person.keepsWaiting = true;
  main->RemoveService(3);
  main->RemoveService(2);  // one question at a time
  ASSERT_EQ(world.person.open.size(), 1u);
  Store(root, 2);
  main->Reload();
  Store(root, 3);
  main->Reload();
  world.person.open[0](true);  // that one is gone: the new third one stays
  EXPECT_EQ(main->NumberServices(), 3);

  main->RemoveService(1);
  ASSERT_EQ(world.person.open.size(), 2u);
  world.person.open[1](true);
  EXPECT_EQ(Names(*main), (std::vector<std::string>{"Station 2", "Station 3"}));

  main->RemoveService(1);
  main.reset();
  world.person.open.at(2)(true);  // nobody is there to hear it
  EXPECT_EQ(StoredName(1), "Station 2");
}

// Fails in the middle of the move: the first services have moved, then the disk is full.
class FillingHive : public MemoryHive {
 public:
  void WriteText(const std::string& key, const std::string& name, const std::string& text) override {
    if (full && key.find("Service3") != std::string::npos) throw SettingsError("disk full");
    MemoryHive::WriteText(key, name, text);
  }
  bool full = false;
};

TEST_F(frmMainTest, KeepsEveryServiceWhenARemovalCannotBeStored) {
  FillingHive hive;
  Environment environment{world.loop,   hive,        world.files, world.network,
                          world.person, world.carts, "/data",     ""};
  hive.WriteNumber(root, "NumberServices", 4);
  for (int i = 1; i <= 4; ++i) hive.WriteText(root + "\\Service" + std::to_string(i), "ServiceName", Name(i));
  frmMain main(environment, [](OutputType) { return nullptr; }, {});
  ASSERT_TRUE(main.Load().Ok());
  hive.full = true;
  main.RemoveService(1);
  EXPECT_EQ(Names(main), (std::vector<std::string>{"Station 1", "Station 2", "Station 3", "Station 4"}));
  for (int i = 1; i <= 4; ++i) {
    EXPECT_EQ(main.Window(i)->service().ServiceNumber(), i);
    EXPECT_EQ(hive.ReadText(root + "\\Service" + std::to_string(i), "ServiceName", ""), Name(i));
  }
}

class frmMainQuitTest : public frmMainTest {
 protected:
  frmMainQuitTest() {
    Store(root, 2);
    world.hive.WriteText(root + "\\Service2\\File", "NumberOutputs", "1");
    main = Make();
    EXPECT_TRUE(main->Load().Ok());
  }
  void BeginUpdate() {
    main->Window(2)->ForceUpdate();
    world.loop.RunFor(5s);
    ASSERT_TRUE(main->Window(2)->service().UpdateInProgress());
  }
  std::unique_ptr<frmMain> main;
  int closed = 0;
};

TEST_F(frmMainQuitTest, AsksOnceWhenNothingIsUpdating) {
  world.person.answer = false;
  main->RequestQuit([&] { ++closed; });
  EXPECT_FALSE(main->Window(1)->Closed());
  world.person.answer = true;
  main->RequestQuit([&] { ++closed; });
  world.loop.RunFor(1s);
  EXPECT_EQ(closed, 1);
  EXPECT_TRUE(main->Window(1)->Closed());
  EXPECT_EQ(stopped, 1);
  EXPECT_EQ(world.person.asked,
            std::vector<std::string>(2,
                                     "If Tolvan is using ZEB as it's 'On-Air Controller' then it will be "
                                     "automatically switch itself 'Off-Air'\n"
                                     "Are you sure you want to quit from ZEB?"));
}

TEST_F(frmMainQuitTest, WaitsForAnUpdateAndThenCloses) {
  BeginUpdate();
  main->RequestQuit([&] { ++closed; });
  EXPECT_EQ(world.person.asked.back(),
            "ZEB cannot be closed until it has finished updating it's outputs\n\n"
            "Do you want it to close when it has finished?");
  main->RequestQuit([&] { closed += 10; });  // asked again while it waits: nothing new
  world.loop.RunFor(30min);
  EXPECT_EQ(closed, 0);
  EXPECT_EQ(stopped, 0);
  EXPECT_EQ(main->UpdatingServices(), "Station 2");
  released = true;
  world.loop.RunFor(2s);
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(stopped, 1);
}

TEST_F(frmMainQuitTest, RunsOnWhenTheAnswerIsNotToWait) {
  BeginUpdate();
  int questions = 0;
  struct SecondNo : Operator {
    explicit SecondNo(int& count) : questions(count) {}
    void Note(std::string_view) override {}
    void Show(MessageIcon, const std::string&) override {}
    void Ask(const std::string&, std::function<void(bool)> answered) override { answered(++questions == 1); }
    int& questions;
  } person(questions);
  Environment environment{world.loop, world.hive,  world.files, world.network,
                          person,     world.carts, "/data",     ""};
  frmMain other(environment,
                [&](OutputType) { return std::make_shared<SlowOutput>(environment, released, stopped); }, {});
  ASSERT_TRUE(other.Load().Ok());
  other.Window(2)->ForceUpdate();
  world.loop.RunFor(5s);
  other.RequestQuit([&] { ++closed; });
  EXPECT_EQ(questions, 2);
  released = true;
  world.loop.RunFor(5s);
  EXPECT_EQ(closed, 0);
  EXPECT_FALSE(other.Window(2)->Closed());
}

TEST_F(frmMainQuitTest, OneQuestionIsOpenAtATimeAndServicesRunOnUntilItIsAnswered) {
  world.person.keepsWaiting = true;
  std::vector<std::function<void(bool)>>& open = world.person.open;
  main->RequestQuit([&] { ++closed; });
  main->RequestQuit([&] { closed += 10; });
  ASSERT_EQ(open.size(), 1u);
  BeginUpdate();  // while the question stands
  open[0](true);
  ASSERT_EQ(open.size(), 2u);
  main->RequestQuit([&] { closed += 10; });
  EXPECT_EQ(open.size(), 2u);
  EXPECT_FALSE(main->Window(1)->Closed());
  open[1](false);
  released = true;
  world.loop.RunFor(5s);
  EXPECT_EQ(closed, 0);

  main->RequestQuit([&] { closed += 100; });  // after a No it may be asked again
  main->RemoveService(1);
  ASSERT_EQ(open.size(), 4u);
  open[2](true);
  EXPECT_EQ(closed, 100);
  open[3](true);  // too late
  EXPECT_EQ(main->NumberServices(), 2);
}

TEST_F(frmMainQuitTest, AnAnswerAfterItsEndChangesNothing) {
  world.person.keepsWaiting = true;
  main->RequestQuit([&] { ++closed; });
  main.reset();
  world.person.open.at(0)(true);
  EXPECT_EQ(closed, 0);
}

TEST_F(frmMainQuitTest, CanBeDestroyedWhileAnUpdateWaits) {
  BeginUpdate();
  main->RequestQuit([&] { ++closed; });
  main.reset();
  released = true;
  world.loop.RunFor(5s);
  EXPECT_EQ(closed, 0);
  EXPECT_EQ(world.loop.TaskCount(), 0u);
}

TEST_F(frmMainQuitTest, ReloadFollowsTheNumberOfServices) {
  Store(root, 3);
  main->Reload();
  EXPECT_EQ(main->NumberServices(), 3);
  world.hive.WriteText(root + "\\Service1", "ServiceName", "Renamed");
  world.hive.WriteNumber(root, "NumberServices", 1);
  main->Reload();
  EXPECT_EQ(Names(*main), std::vector<std::string>{"Renamed"});
  world.hive.failure = "locked";
  main->Reload();
  world.hive.failure.clear();
  EXPECT_EQ(Names(*main), std::vector<std::string>{"Renamed"});
}

}  // namespace
}  // namespace zeb
