// The settings hive in the registry: what others stored there, kills, other processes and rights.
#include <gtest/gtest.h>

#include "platform/windows/RegistryHive.h"
// clang-format off
#include <windows.h>
#include <sddl.h>
// clang-format on

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"
#include "tests/platform/HiveContract.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;
using Root = RegistryTree::Root;

constexpr DWORD kBoundMilliseconds = 20000;  // for what another process is waited for
constexpr UINT kKilled = 77;
constexpr int kValues = 12;

// A key of this test program's own; a child works in that of the process which started it.
std::string OwnKey() {
  const char* given = std::getenv("ZEB_TEST_KEY");
  return given != nullptr ? given : "Software\\ZEB test " + std::to_string(GetCurrentProcessId());
}

RegistryPlace Place(Root root = Root::kUser) {
  return {root, OwnKey() + "\\hive", "", OwnKey() + "\\changes under way"};
}

HKEY SystemRoot(Root root) {
  return root == Root::kMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// By the system's own calls, below this test program's key.
class PlainKey {
 public:
  explicit PlainKey(const std::string& key, Root root = Root::kUser, REGSAM rights = KEY_ALL_ACCESS) {
    const std::wstring path = Wide(OwnKey() + "\\" + key);
    EXPECT_EQ(RegCreateKeyExW(SystemRoot(root), path.c_str(), 0, nullptr, 0, rights | KEY_WOW64_32KEY,
                              nullptr, &key_, nullptr),
              ERROR_SUCCESS);
  }
  PlainKey(const PlainKey&) = delete;
  ~PlainKey() { RegCloseKey(key_); }
  void Set(const wchar_t* name, DWORD kind, const void* data, std::size_t bytes) const {
    EXPECT_EQ(RegSetValueExW(key_, name, 0, kind, static_cast<const BYTE*>(data), static_cast<DWORD>(bytes)),
              ERROR_SUCCESS);
  }
  DWORD KindOf(const wchar_t* name) const {
    DWORD kind = REG_NONE;
    RegQueryValueExW(key_, name, nullptr, &kind, nullptr, nullptr);
    return kind;
  }
  void SetRights(const wchar_t* rights) const {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(
        ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor, nullptr));
    EXPECT_EQ(RegSetKeySecurity(key_, DACL_SECURITY_INFORMATION, descriptor), ERROR_SUCCESS);
    LocalFree(descriptor);
  }

 private:
  HKEY key_ = nullptr;
};

// An event that both processes know.
class Signal {
 public:
  explicit Signal(const char* name)
      : event_(CreateEventW(nullptr, TRUE, FALSE, Wide(OwnKey().substr(9) + name).c_str())) {}
  Signal(const Signal&) = delete;
  ~Signal() { CloseHandle(event_); }
  void Give() const { SetEvent(event_); }
  bool Given(DWORD within = kBoundMilliseconds) const {
    return WaitForSingleObject(event_, within) == WAIT_OBJECT_0;
  }

 private:
  HANDLE event_;
};

// This program, started again to do one of the deeds below.
class Child {
 public:
  explicit Child(const std::string& deed, int number = 0) {
    SetEnvironmentVariableW(L"ZEB_TEST_KEY", Wide(OwnKey()).c_str());
    SetEnvironmentVariableW(L"ZEB_TEST_DEED", Wide(deed).c_str());
    SetEnvironmentVariableW(L"ZEB_TEST_NUMBER", std::to_wstring(number).c_str());
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    EXPECT_TRUE(
        CreateProcessW(program, nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process_));
    for (const wchar_t* name : {L"ZEB_TEST_KEY", L"ZEB_TEST_DEED", L"ZEB_TEST_NUMBER"})
      SetEnvironmentVariableW(name, nullptr);
  }
  Child(const Child&) = delete;
  ~Child() {
    TerminateProcess(process_.hProcess, kKilled);
    CloseHandle(process_.hProcess);
    CloseHandle(process_.hThread);
  }
  DWORD ExitCode() const {
    EXPECT_EQ(WaitForSingleObject(process_.hProcess, kBoundMilliseconds), WAIT_OBJECT_0);
    DWORD code = STILL_ACTIVE;
    GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }
  bool Ended() const { return WaitForSingleObject(process_.hProcess, 0) == WAIT_OBJECT_0; }

 private:
  PROCESS_INFORMATION process_{};
};

std::unique_ptr<RegistryHive> Open(milliseconds patience = RegistryHive::kPatience) {
  auto opened = RegistryHive::Open(Place(), patience);
  EXPECT_TRUE(opened.Ok()) << opened.Reason();
  return opened.Ok() ? std::move(opened.Value()) : nullptr;
}

// As a service is saved: everything goes, and everything is written.
void Save(RegistryHive& hive, int state) {
  hive.Transaction([&] {
    hive.DeleteKey("root\\service");
    for (int i = 0; i < kValues; ++i)
      hive.WriteNumber("root\\service\\" + std::string(i % 2 == 0 ? "File" : "Web"), "v" + std::to_string(i),
                       state);
    hive.WriteNumber("root", "state", state);
    hive.WriteNumber("other\\new" + std::to_string(state), "state", state);
    hive.DeleteKey("other\\new" + std::to_string(state - 1));
  });
}

// The state that the hive holds, when it holds one whole; else -1.
int StateOf(RegistryHive& hive) {
  int state = 0;
  bool whole = true;
  hive.ReadTransaction([&] {
    state = hive.ReadNumber("root", "state", -1);
    for (int i = 0; i < kValues; ++i)
      whole &= hive.ReadNumber("root\\service\\" + std::string(i % 2 == 0 ? "File" : "Web"),
                               "v" + std::to_string(i), -1) == state;
    whole &= hive.SubKeys("root\\service").size() == 2;
    whole &= hive.SubKeys("other") == std::vector<std::string>{"new" + std::to_string(state)};
  });
  return whole ? state : -1;
}

int DoDeed(const std::string& deed, int number) {
  const std::unique_ptr<RegistryHive> hive = Open();
  if (hive == nullptr) return 1;
  if (deed == "save and die") {  // in place of the change of that number
    int left = number;
    hive->BeforeEachChange([&] {
      if (left-- == 0) TerminateProcess(GetCurrentProcess(), kKilled);
    });
    Save(*hive, 2);
  } else if (deed == "save again and again") {
    const Signal saved("saved"), enough("enough");
    for (int state = 2; !enough.Given(0); ++state) {
      Save(*hive, state);
      saved.Give();
    }
  } else if (deed == "count") {
    for (int i = 0; i < number; ++i)
      hive->Transaction([&] { hive->WriteNumber("k", "n", hive->ReadNumber("k", "n", 0) + 1); });
  } else if (deed == "hold") {
    hive->Transaction([&] {
      hive->WriteNumber("root", "state", 9);
      Signal("held").Give();
      Signal("let go").Given();
      if (number != 0) TerminateProcess(GetCurrentProcess(), kKilled);
    });
  }
  return 0;
}

// Before the first test of a child.
struct Deeds : testing::Environment {
  void SetUp() override {
    const char* deed = std::getenv("ZEB_TEST_DEED");
    const char* number = std::getenv("ZEB_TEST_NUMBER");
    if (deed != nullptr && number != nullptr) std::_Exit(DoDeed(deed, std::atoi(number)));
  }
};
const testing::Environment* const kDeeds = testing::AddGlobalTestEnvironment(new Deeds);

template <Root root>
struct HiveInRegistry : testing::Test {
  HiveInRegistry() : hive(std::make_unique<RegistryHive>(Place(root), RegistryHive::kPatience)) {}
  ~HiveInRegistry() override { RegistryTree(root, "").Delete(OwnKey()); }
  std::unique_ptr<SettingsHive> hive;
};
INSTANTIATE_TYPED_TEST_SUITE_P(User, HiveContract, HiveInRegistry<Root::kUser>);
INSTANTIATE_TYPED_TEST_SUITE_P(Machine, HiveContract, HiveInRegistry<Root::kMachine>);

class SettingsInRegistry : public testing::Test {
 protected:
  ~SettingsInRegistry() override {
    for (const Root root : {Root::kUser, Root::kMachine}) RegistryTree(root, "").Delete(OwnKey());
  }
};

TEST_F(SettingsInRegistry, ReadsEveryKindOfTextAndNumber) {
  const PlainKey key("hive\\k");
  key.Set(L"text", REG_SZ, L"caf\u00E9", 10);
  key.Set(L"no end mark", REG_SZ, L"ab", 4);
  key.Set(L"half a unit", REG_SZ, L"ab", 3);
  key.Set(L"no bytes", REG_SZ, L"", 0);
  key.Set(L"half a pair", REG_SZ, L"a\xD83C", 6);
  key.Set(L"variables", REG_EXPAND_SZ, L"%TEMP%\\x", 18);
  key.Set(L"list", REG_MULTI_SZ, L"one\0two\0", 18);
  key.Set(L"number", REG_DWORD, "\xFE\xFF\xFF\xFF", 4);
  key.Set(L"other end first", REG_DWORD_BIG_ENDIAN, "\0\0\1\2", 4);
  key.Set(L"long number", REG_QWORD, "\7\0\0\0\1\0\0\0", 8);
  struct Case {
    const char* name;
    const char* text;
    int number;
  };
  auto hive = Open();
  for (const Case& given : std::vector<Case>{{"text", "caf\xC3\xA9", 0},
                                             {"no end mark", "ab", 0},
                                             {"half a unit", "a", 0},
                                             {"no bytes", "", 0},
                                             {"half a pair", "a\xEF\xBF\xBD", 0},
                                             {"variables", "%TEMP%\\x", 0},
                                             {"list", "one\ntwo", 0},
                                             {"number", "-2", -2},
                                             {"other end first", "258", 258},
                                             {"long number", "7", 7}}) {
    EXPECT_EQ(hive->ReadText("K", given.name, "default"), given.text) << given.name;
    EXPECT_EQ(hive->ReadNumber("K", given.name, 99), given.number) << given.name;
  }
  key.Set(L"bytes", REG_BINARY, "ab", 2);
  key.Set(L"half a number", REG_DWORD, "ab", 2);
  EXPECT_EQ(hive->ReadText("k", "bytes", "default"), "default");
  EXPECT_FALSE(hive->HasValue("k", "half a number"));
  EXPECT_EQ(hive->Values("k").size(), 10u);
}

TEST_F(SettingsInRegistry, WritesTheKindsThatOtherProgramsExpectWhereTheyLook) {
  RegistryHive hive(Place(Root::kMachine), RegistryHive::kPatience);
  hive.WriteText("k", "text", "x");
  hive.WriteNumber("k", "number", 5);
  hive.Transaction([&] { hive.WriteText("k", "number", "now a text"); });
  EXPECT_EQ(PlainKey("hive\\k", Root::kMachine).KindOf(L"text"), static_cast<DWORD>(REG_SZ));
  EXPECT_EQ(PlainKey("hive\\k", Root::kMachine).KindOf(L"number"), static_cast<DWORD>(REG_SZ));
  hive.WriteNumber("k", "text", 5);
  EXPECT_EQ(PlainKey("hive\\k", Root::kMachine).KindOf(L"text"), static_cast<DWORD>(REG_DWORD));
  HKEY other = nullptr;
  const std::wstring path = Wide(OwnKey() + "\\hive\\k");
  EXPECT_NE(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &other),
            ERROR_SUCCESS)
      << "in the view of 64-bit programs";
}

TEST_F(SettingsInRegistry, OnTheMachineNothingOfOthersIsChanged) {
  auto hive = std::move(RegistryHive::Open(RegistryPlace::Machine()).Value());
  for (const char* key : {"", "Software", "software\\HEXMOOR", "Software\\Hexmoor2",
                          "Software\\Microsoft\\Windows", "Software\\Hexmoor\\zeb changes under way"}) {
    EXPECT_THROW(hive->DeleteKey(key), SettingsError) << key;
    EXPECT_THROW(hive->WriteNumber(key, "v", 1), SettingsError) << key;
  }
  EXPECT_TRUE(hive->KeyExists("Software\\Microsoft"));
}

TEST_F(SettingsInRegistry, NamesThatNoRegistryTakesAreRefusedAndNotFound) {
  auto hive = Open();
  const std::string part(256, 'p');
  EXPECT_THROW(hive->CreateKey("a\\" + part), SettingsError);
  EXPECT_FALSE(hive->KeyExists("a"));
  EXPECT_FALSE(hive->KeyExists(part));
  hive->CreateKey("a");
  EXPECT_FALSE(hive->KeyExists(std::string("a\0b", 3)));
  EXPECT_THROW(hive->WriteText("a", std::string("v\0w", 3), "1"), SettingsError);
  EXPECT_FALSE(hive->HasValue("a", "v"));
}

TEST_F(SettingsInRegistry, TellsWhenSomethingIsStored) {
  auto hive = Open();
  int stored = 0;
  hive->onStored = [&] {
    ++stored;
    EXPECT_EQ(Open()->ReadText("k", "v", ""), "new");
  };
  hive->Transaction([&] {
    hive->WriteText("k", "v", "new");
    hive->WriteText("k", "w", "new");
    EXPECT_EQ(Open()->ReadText("k", "v", "none"), "none");
  });
  EXPECT_EQ(stored, 1);
  EXPECT_THROW(hive->Transaction([&] { throw std::runtime_error("part way"); }), std::runtime_error);
  hive->ReadTransaction([&] { hive->ReadText("k", "v", ""); });
  EXPECT_EQ(stored, 1);
}

struct Stopped : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The changes of a save are cut off before each of its steps in turn, as a kill does: nothing more is done.
TEST_F(SettingsInRegistry, ASaveCutOffAtAnyStepIsAllOrNothing) {
  int cutOff = 0;
  for (int step = 0;; ++step) {
    RegistryTree(Root::kUser, "").Delete(OwnKey());
    auto hive = Open();
    Save(*hive, 1);
    int left = step;
    hive->BeforeEachChange([&] {
      if (left-- <= 0) throw SettingsError("cut off");
    });
    bool told = true;
    try {
      Save(*hive, 2);
    } catch (const SettingsError&) {
      told = false;
    }
    hive.reset();
    const int state = StateOf(*Open());
    ASSERT_EQ(state, told ? 2 : 1) << "step " << step;
    ASSERT_EQ(RegistryTree(Root::kUser, OwnKey()).SubKeys(""), std::vector<std::string>{"hive"})
        << "step " << step;
    if (told && left > 0) break;  // all steps were done
    ++cutOff;
  }
  EXPECT_GT(cutOff, 2 * kValues);
}

// So is the undoing, by whoever does it.
TEST_F(SettingsInRegistry, AnUndoingCutOffAtAnyStepIsDoneLater) {
  int cutOff = 0;
  for (int step = 0, before = -1; before < cutOff; ++step) {
    before = cutOff;
    RegistryTree(Root::kUser, "").Delete(OwnKey());
    auto hive = Open();
    Save(*hive, 1);
    int left = 25;
    hive->BeforeEachChange([&] {
      if (left-- <= 0) throw SettingsError("cut off");
    });
    EXPECT_THROW(Save(*hive, 2), SettingsError);
    left = step;
    try {
      hive->KeyExists("root");
    } catch (const SettingsError&) {
      ++cutOff;
    }
    ASSERT_EQ(StateOf(*Open()), 1) << "step " << step;
  }
  EXPECT_GT(cutOff, 2 * kValues);
}

TEST_F(SettingsInRegistry, AChangeThatIsRefusedLeavesNothingBehind) {
  for (int step = 0;; ++step) {
    auto hive = Open();
    Save(*hive, 1);
    int left = step;
    hive->BeforeEachChange([&] {
      if (left-- == 0) throw SettingsError("refused");
    });
    try {
      Save(*hive, 2);
    } catch (const SettingsError& error) {
      EXPECT_STREQ(error.what(), "refused");
      ASSERT_EQ(StateOf(*hive), 1) << "step " << step;
      continue;
    }
    if (left >= 0) break;
  }
}

TEST_F(SettingsInRegistry, AKilledSaveLeavesOneOfTheTwoStates) {
  int states[3] = {0, 0, 0};
  DWORD code = kKilled;
  for (int step = 0; code == kKilled; ++step) {
    RegistryTree(Root::kUser, "").Delete(OwnKey());
    Save(*Open(), 1);
    code = Child("save and die", step).ExitCode();
    const int state = StateOf(*Open());
    ASSERT_TRUE(state == 1 || state == 2) << "step " << step << ": " << state;
    ++states[state];
  }
  EXPECT_EQ(code, 0u);
  EXPECT_GT(states[1], 2 * kValues);
  EXPECT_GT(states[2], 0);
}

TEST_F(SettingsInRegistry, AnotherProcessNeverSeesAHalfState) {
  Save(*Open(), 1);
  const Signal saved("saved"), enough("enough");
  const Child writer("save again and again");
  ASSERT_TRUE(saved.Given());
  auto hive = Open();
  int seen = 0, last = 0;
  for (int i = 0; i < 200 || seen < 3; ++i) {
    const int state = StateOf(*hive);
    ASSERT_GE(state, last);
    if (state > last) ++seen;
    last = state;
    ASSERT_FALSE(writer.Ended());
    ASSERT_LT(i, 20000);
  }
  enough.Give();
  EXPECT_EQ(writer.ExitCode(), 0u);
  EXPECT_GE(StateOf(*hive), last);
}

TEST_F(SettingsInRegistry, WritersWaitForEachOther) {
  constexpr int kWrites = 50;
  auto hive = Open();
  const Child first("count", kWrites), second("count", kWrites);
  for (int i = 0; i < kWrites; ++i)
    hive->Transaction([&] { hive->WriteNumber("k", "n", hive->ReadNumber("k", "n", 0) + 1); });
  EXPECT_EQ(first.ExitCode(), 0u);
  EXPECT_EQ(second.ExitCode(), 0u);
  EXPECT_EQ(hive->ReadNumber("k", "n", 0), 3 * kWrites);
}

TEST_F(SettingsInRegistry, ALockHeldForTooLongIsAnErrorAndADeadHolderIsNone) {
  for (const bool dies : {false, true}) {
    auto hive = Open(milliseconds(20));
    hive->WriteNumber("root", "state", 1);
    const Signal held("held"), letGo("let go");
    const Child holder("hold", dies ? 1 : 0);
    ASSERT_TRUE(held.Given());
    try {
      hive->WriteNumber("root", "state", 2);
      ADD_FAILURE() << "written over the lock";
    } catch (const SettingsError& error) {
      EXPECT_EQ(std::string(error.what()),
                "registry key 'HKEY_CURRENT_USER\\" + Place().top + "' is being changed by another program");
    }
    EXPECT_THROW(hive->ReadNumber("root", "state", 0), SettingsError);
    letGo.Give();
    EXPECT_EQ(holder.ExitCode(), dies ? kKilled : 0u);
    EXPECT_EQ(hive->ReadNumber("root", "state", 0), dies ? 1 : 9);
  }
}

TEST_F(SettingsInRegistry, WithoutRightsTheErrorNamesTheKeyAndSaysWhatToDo) {
  Save(*Open(), 1);
  const PlainKey top("", Root::kUser, KEY_READ | WRITE_DAC);
  const PlainKey below("hive\\root", Root::kUser, KEY_READ | WRITE_DAC);
  for (const PlainKey* key : {&top, &below}) key->SetRights(L"D:P(A;;KR;;;WD)");
  auto hive = Open();
  EXPECT_EQ(StateOf(*hive), 1);
  const std::string remedy = "': " + SystemErrorText(ERROR_ACCESS_DENIED) +
                             "; run this as administrator, or let the installer set the rights on this key";
  const std::string place = "HKEY_CURRENT_USER\\" + Place().top;
  const auto Refused = [&](const std::function<void()>& change) -> std::string {
    try {
      change();
      return "not refused";
    } catch (const SettingsError& error) {
      return error.what();
    }
  };
  EXPECT_EQ(Refused([&] { hive->WriteNumber("root", "state", 2); }),
            "cannot open registry key '" + place + "\\root" + remedy);
  EXPECT_TRUE(Refused([&] { Save(*hive, 2); }).ends_with(Place().journal + remedy));
  EXPECT_EQ(StateOf(*hive), 1);
  for (const PlainKey* key : {&top, &below}) key->SetRights(L"D:(A;OICI;KA;;;WD)");
  Save(*hive, 2);
  EXPECT_EQ(StateOf(*hive), 2);
}

TEST_F(SettingsInRegistry, ADamagedNoteIsNamed) {
  Open();
  PlainKey("changes under way").Set(L"Pieces", REG_DWORD, "\1\0\0\0", 4);
  const auto opened = RegistryHive::Open(Place());
  ASSERT_FALSE(opened.Ok());
  EXPECT_NE(opened.Reason().find("\\changes under way' is damaged"), std::string::npos) << opened.Reason();
  EXPECT_NE(opened.Reason().find("delete this key"), std::string::npos);
  PlainKey("changes under way").Set(L"0", REG_BINARY, "\xFF\xFF\xFF\xFFgarbage", 11);
  EXPECT_FALSE(RegistryHive::Open(Place()).Ok());
}

TEST_F(SettingsInRegistry, ATransactionWithinReadingSeesAndLeavesWhatIsThere) {
  auto hive = Open();
  Save(*hive, 1);
  hive->ReadTransaction([&] {
    EXPECT_EQ(hive->ReadNumber("root\\service\\Web", "v1", 0), 1);
    Save(*hive, 2);
    EXPECT_EQ(hive->ReadNumber("root\\service\\Web", "v1", 0), 2);
    EXPECT_EQ(StateOf(*hive), 2);
  });
  EXPECT_EQ(StateOf(*hive), 2);
}

// Tells how long; that differs with the machine.
TEST_F(SettingsInRegistry, AThousandServicesAreReadAndStored) {
  constexpr int kServices = 1000;
  const std::vector<std::string> kinds = {"Web",  "HTTPRequest", "Serial", "Encoder",
                                          "File", "DAB",         "RDS",    "Template"};
  auto hive = Open();
  const auto timed = [](const char* what, const std::function<void()>& work) {
    const auto begun = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
    std::printf("%d services, 31 values and 9 keys each: %s in %.2f s\n", kServices, what, taken.count());
  };
  const auto forAll = [&](const std::function<void(const std::string& key, const std::string& name)>& call) {
    for (int service = 1; service <= kServices; ++service) {
      const std::string key = "services\\Service" + std::to_string(service);
      for (int i = 0; i < 15; ++i) call(key, "Value" + std::to_string(i));
      for (const std::string& kind : kinds)
        for (const char* name : {"NumberOutputs", "UpdateInterval"}) call(key + "\\" + kind, name);
    }
  };
  timed("stored", [&] {
    hive->Transaction([&] {
      forAll(
          [&](const std::string& key, const std::string& name) { hive->WriteText(key, name, "some text"); });
    });
  });
  std::size_t found = 0;
  timed("read", [&] {
    hive->ReadTransaction([&] {
      forAll([&](const std::string& key, const std::string& name) {
        found += hive->ReadText(key, name, "").size();
      });
    });
  });
  EXPECT_EQ(found, std::size_t{kServices} * 31 * 9);
}

}  // namespace
}  // namespace zeb
