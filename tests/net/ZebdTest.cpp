// zebd as a process: from a message to a file, its signals, its exit status, and what a kill leaves behind.

#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <functional>

#include "tests/net/Station.h"

namespace zeb {
namespace {

const std::string kPage = "Now: <ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>\n";

std::string Current(const std::string& title) {
  return "SET_CURRENT_ITEM IType=7 ITitle=\"" + title + "\" AName1=\"Ada Quill\"";
}

bool IsOneLine(const std::string& text) {
  return !text.empty() && text.find('\n') == text.size() - 1;
}

class ZebdTest : public Station {};

TEST_F(ZebdTest, PublishesWhatTheControllerSendsAndEndsOnSigterm) {
  AddService(1, control, kPage, "now.txt");
  Start();
  const Finished sent = Send({Current("Café Ørsund")});
  EXPECT_EQ(sent.status, 0) << sent.error;
  EXPECT_NE(sent.error.find("GET_INFORMATION"), std::string::npos);
  EXPECT_EQ(AwaitPage("now.txt", "Ørsund"), "Now: Café Ørsund by Ada Quill\n");

  // Lines of standard input go out as they come, while the input stays open.
  Process feeding({Program("zebctl"), "send", "--port", std::to_string(6900 + control)});
  feeding.Write(Current("First") + "\r\n");
  EXPECT_EQ(AwaitPage("now.txt", "First"), "Now: First by Ada Quill\n");
  // Who has control keeps it.
  const Finished refused = Send({"--name", "second", Current("Intruder")});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.error, "zebctl: control is refused: 'zebctl' has it\n");
  feeding.Write(Current("Last"));  // without a line end
  feeding.CloseInput();
  EXPECT_EQ(feeding.Wait(), 0) << feeding.error;
  EXPECT_EQ(AwaitPage("now.txt", "Last"), "Now: Last by Ada Quill\n");

  zebd->Signal(SIGTERM);
  EXPECT_EQ(zebd->Wait(), 0) << zebd->error;
  const Finished gone = Send({Current("Nobody")});
  EXPECT_EQ(gone.status, 1);
  EXPECT_EQ(gone.error.find("zebctl: cannot connect to 127.0.0.1 port"), 0u) << gone.error;
  EXPECT_TRUE(IsOneLine(gone.error)) << gone.error;
}

TEST_F(ZebdTest, PublishesWhatArrivedRightBeforeSigint) {
  AddService(1, control, kPage, "now.txt");
  Start();
  ASSERT_EQ(Send({Current("Goodbye")}).status, 0);
  zebd->Signal(SIGINT);
  EXPECT_EQ(zebd->Wait(), 0) << zebd->error;
  EXPECT_EQ(ReadFile(Path("now.txt")), "Now: Goodbye by Ada Quill\n");
}

TEST_F(ZebdTest, TellsASecondInstanceOnTheFolderToEnd) {
  Start();
  const Finished second = RunProgram(ZebdCommand());
  EXPECT_EQ(second.status, 3);
  EXPECT_NE(second.error.find("another publisher runs on the data folder"), std::string::npos);
  EXPECT_TRUE(IsOneLine(second.error)) << second.error;
  const Finished debugging = RunProgram(ZebdCommand({"/debug"}));
  EXPECT_EQ(debugging.status, 3);
  EXPECT_NE(debugging.error.find("Exit as App already running"), std::string::npos) << debugging.error;
  // The folder is free again however the first one ended.
  zebd->Signal(SIGKILL);
  EXPECT_EQ(zebd->Wait(), 128 + SIGKILL);
  Start();
}

TEST_F(ZebdTest, AddsChangesAndRemovesServicesOnSighup) {
  AddService(1, control, kPage, "now.txt");
  Start();
  ASSERT_EQ(Send({Current("Kept")}).status, 0);
  AwaitPage("now.txt", "Kept");

  const int firstControl = control, secondControl = FreeControlPort();
  AddService(2, secondControl, "Two: <ZEB_NOW_ITEMNAME>", "two.txt");
  WriteFile(Path("template1"), "<ZEB_SPECIAL_SERVICENAME>: <ZEB_NOW_ITEMNAME>");
  ASSERT_EQ(Zebctl({"settings", "set", "Service1", "ServiceName", "Renamed"}).status, 0);
  zebd->Signal(SIGHUP);
  ASSERT_TRUE(zebd->WaitForError("Settings read again, 2 services")) << zebd->error;
  control = secondControl;
  ASSERT_EQ(Send({Current("New")}).status, 0);
  EXPECT_EQ(AwaitPage("two.txt", "New"), "Two: New");
  control = firstControl;
  ASSERT_EQ(Send({"UPDATE"}).status, 0);
  EXPECT_EQ(AwaitPage("now.txt", "Renamed"), "Renamed: Kept");

  ASSERT_EQ(Zebctl({"settings", "set", "", "NumberServices", "1", "--number"}).status, 0);
  zebd->Signal(SIGHUP);
  ASSERT_TRUE(zebd->WaitForError("Settings read again, 1 service"));
  control = secondControl;
  EXPECT_EQ(Send({Current("Gone")}).status, 1);
}

TEST_F(ZebdTest, ImportsSettingsBeforeItStartsOrNamesTheLineThatIsWrong) {
  const std::string start =
      "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1]\n"
      "\"NumberServices\"=dword:3\n";
  WriteFile(Path("My station.reg"), start);
  WriteFile(Path("bad.reg"), start + "\"Broken\n");
  const Finished bad = RunProgram(ZebdCommand({"/IMPORT=" + Path("bad.reg")}));
  EXPECT_EQ(bad.status, 1);
  EXPECT_NE(bad.error.find("bad.reg': line 5"), std::string::npos) << bad.error;
  EXPECT_NE(Zebctl({"settings", "get", "", "NumberServices"}).status, 0);

  Start({"/import=\"" + Path("My station.reg") + "\"", "/SILENT"});
  EXPECT_NE(zebd->error.find("is ready: "), std::string::npos) << zebd->error;
  EXPECT_EQ(Zebctl({"settings", "get", "", "NumberServices"}).output, "3\n");
  EXPECT_EQ(RunProgram(ZebdCommand({"/IMPORT=" + Path("missing.reg"), "/NOPREVCHECK"})).status, 1);
  EXPECT_EQ(RunProgram(ZebdCommand({"--unknown"})).status, 1);
}

TEST_F(ZebdTest, SetsDamagedSettingsAsideAndDoesNotStart) {
  WriteFile(Path("settings.db"), std::string(8192, 'x'));
  for (int i = 0; i < 2; ++i) {  // nor does a restart begin with an empty store
    const Finished started = RunProgram(ZebdCommand());
    EXPECT_EQ(started.status, 1);
    EXPECT_NE(started.error.find("settings.db"), std::string::npos) << started.error;
  }
  int kept = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.path().filename().string().find("settings.db.damaged-") == 0) ++kept;
  EXPECT_EQ(kept, 1);
}

// Standard error is a pipe that is full, as when whoever collects the journal hangs.
class UnreadJournalTest : public ZebdTest {
 protected:
  UnreadJournalTest() {
    AddService(1, control, kPage, "now.txt");
    Start({"/DEBUG"});  // says more
    std::string flood;
    for (int i = 0; i < 8000; ++i) flood += Current("Title " + std::to_string(i)) + "\r\n";
    const Finished sent = Zebctl({"send", "--port", std::to_string(6900 + control)}, flood);
    EXPECT_EQ(sent.status, 0) << sent.error;
  }
  // Without a look at the journal.
  bool Publishes(const std::string& title) {
    for (int i = 0; i < 200; ++i) {
      EXPECT_EQ(Send({Current(title)}).status, 0);  // each lets a little time pass
      if (ReadFile(Path("now.txt")).find(title) != std::string::npos) return true;
    }
    return false;
  }
};

TEST_F(UnreadJournalTest, PagesKeepComingAndTheGapIsCountedOnceSomebodyReads) {
  EXPECT_TRUE(Publishes("Unread"));
  EXPECT_TRUE(zebd->WaitForError(" lines were dropped here: they could not be written in time\n"));
  EXPECT_TRUE(Publishes("Read again"));
  EXPECT_TRUE(zebd->WaitForError("'Read again'"));
  zebd->Signal(SIGTERM);
  EXPECT_EQ(zebd->Wait(), 0);
  EXPECT_TRUE(zebd->error.ends_with("Stopped\n"));
}

TEST_F(UnreadJournalTest, SigtermEndsIt) {
  zebd->Signal(SIGTERM);
  EXPECT_TRUE(zebd->EndsUnread());
  EXPECT_EQ(zebd->Wait(), 0);
}

TEST_F(ZebdTest, LosesOnlyItsDebugLogWhenThatCannotBeWritten) {
  AddService(1, control, kPage, "now.txt");
  ASSERT_EQ(Zebctl({"settings", "set", "Software\\Hexmoor", "DebugPath", "/proc/no/logs"}).status, 0);
  ASSERT_EQ(Zebctl({"settings", "set", "Software\\Hexmoor", "DebugMode", "5", "--number"}).status, 0);
  Start();
  ASSERT_EQ(Send({Current("Traced")}).status, 0);
  EXPECT_EQ(AwaitPage("now.txt", "Traced"), "Now: Traced by Ada Quill\n");
  zebd->Signal(SIGTERM);
  EXPECT_EQ(zebd->Wait(), 0);
  const std::string told = "The Debug Files folder could not be created in '/proc/no/logs/'!\n";
  EXPECT_EQ(zebd->error.find(told), zebd->error.rfind(told));
  EXPECT_NE(zebd->error.find(told), std::string::npos) << zebd->error;
  EXPECT_EQ(zebd->error.find("Are you sure"), std::string::npos) << "a question nobody is to answer";
}

TEST_F(ZebdTest, NamesALocaleThatIsNotInstalled) {
  const Finished ended = RunProgram({"/usr/bin/env", "LC_ALL=xx_YY.UTF-8", Program("zebd"), "--home",
                                     folder.string(), "/IMPORT=" + Path("missing.reg")});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.error.find("The locale 'xx_YY.UTF-8' (LC_ALL) is not installed"), 0u) << ended.error;
}

// Killed in the middle of publishing and of saving, again and again: readers only ever see whole pages, and
// no settings are lost.
TEST_F(ZebdTest, LeavesWholePagesAndAllSettingsBehindWhenKilled) {
  constexpr std::size_t kLines = 3000;
  std::string page;
  for (std::size_t i = 0; i < kLines; ++i) page += "<ZEB_NOW_ITEMNAME>\n";
  AddService(1, control, page, "now.txt");
  const auto whole = [](const std::string& text) {
    const std::string first = text.substr(0, text.find('\n') + 1);
    if (first.empty() || text.size() != first.size() * kLines) return false;
    for (std::size_t at = 0; at < text.size(); at += first.size())
      if (text.compare(at, first.size(), first) != 0) return false;
    return true;
  };
  for (int round = 0; round < 8; ++round) {
    Start();
    Process feeding({Program("zebctl"), "send", "--port", std::to_string(6900 + control)});
    Process saving({Program("zebctl"), "--home", folder.string(), "settings", "set", "Service1",
                    "LoggingPath", std::string(50000, static_cast<char>('a' + round))});
    std::string messages;
    for (std::size_t i = 0; i < 400; ++i)
      messages += Current(std::string(i % 50 + 1, 'x') + std::to_string(i)) + "\n";
    feeding.Write(messages);
    // The kills fall at different moments of an update.
    for (int lines = 0; lines <= round % 4; ++lines) {
      ASSERT_TRUE(zebd->WaitForError("\n"));
    }
    saving.Signal(SIGKILL);
    zebd->Signal(SIGKILL);
    EXPECT_EQ(zebd->Wait(), 128 + SIGKILL);
    const std::string text = ReadFile(Path("now.txt"));
    EXPECT_TRUE(text.empty() || whole(text)) << text.substr(0, 200);
    EXPECT_EQ(Zebctl({"settings", "get", "Service1", "ServiceName"}).output, "Station 1\n");
    EXPECT_EQ(Zebctl({"settings", "get", "Service1/File", "Output1.NumberFiles"}).output, "1\n");
  }
  Start();
  ASSERT_EQ(Send({Current("At last")}).status, 0);
  EXPECT_TRUE(whole(AwaitPage("now.txt", "At last")));
}

// Killed while its work file is there, which takes a large page and some luck.
TEST_F(ZebdTest, WhatAKilledRunLeftIsGoneAfterTheNextStart) {
  AddService(1, control, std::string(8u << 20, 'x') + "<ZEB_NOW_ITEMNAME>", "now.txt");
  const auto there = [this](const char* name) { return std::filesystem::exists(Path(name)); };
  for (int i = 0; i < 20 && !there("now.txt.tmp"); ++i) {
    std::filesystem::remove(Path("now.txt"));
    Start();
    Process feeding({Program("zebctl"), "send", "--port", std::to_string(6900 + control), Current("Song")});
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!there("now.txt.tmp") && !there("now.txt")) ASSERT_LT(std::chrono::steady_clock::now(), limit);
    zebd->Signal(SIGKILL);
    EXPECT_EQ(zebd->Wait(), 128 + SIGKILL);
  }
  ASSERT_TRUE(there("now.txt.tmp"));
  WriteFile(Path("other.tmp"), "not ours to remove");
  Start();
  EXPECT_TRUE(zebd->WaitForError("Removed 1 file that an earlier run had left unfinished\n")) << zebd->error;
  EXPECT_FALSE(there("now.txt.tmp"));
  EXPECT_TRUE(there("other.tmp"));
}

TEST_F(ZebdTest, ADestinationThatIsNoFileIsRefusedWithALine) {
  AddService(1, control, "<ZEB_NOW_ITEMNAME>", "now.txt");
  Start();
  struct Case {
    std::function<void(const char*)> make;
    const char* why;
  };
  const Case cases[] = {
      {[](const char* path) { ASSERT_EQ(mkfifo(path, 0666), 0); },
       "it is a pipe, a socket or a device; choose the name of a file"},
      {[](const char* path) { std::filesystem::create_directory(path); }, "it is a folder; choose"},
      {[](const char* path) { std::filesystem::create_symlink("settings.db", path); },
       "it is a link to 'settings.db', and that is ZEB's data folder; let it lead to another file"},
  };
  for (const Case& c : cases) {
    std::filesystem::remove(Path("now.txt"));
    c.make(Path("now.txt").c_str());
    const auto before = std::filesystem::symlink_status(Path("now.txt"));
    ASSERT_EQ(Send({Current(c.why)}).status, 0);
    EXPECT_TRUE(zebd->WaitForError(c.why)) << zebd->error;
    EXPECT_EQ(std::filesystem::symlink_status(Path("now.txt")).type(), before.type());
  }
  EXPECT_EQ(Zebctl({"settings", "get", "Service1", "ServiceName"}).output, "Station 1\n");
}

}  // namespace
}  // namespace zeb
