// How the web output gets along with servers that hang, break off, refuse and come back.

#include <set>

#include "diagnostics/hxGeneral.h"
#include "tests/outputs/WebFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Files = std::map<std::string, std::string>;

class WebUploadTest : public WebOutputTest {
 protected:
  // Whoever looks at the server at any moment finds the page.
  void WatchPage(const std::string& page) {
    ftp.fail = [this, page](const std::string&, const std::string&) {
      missing += ftp.files.count(page) == 0 ? 1 : 0;
      return "";
    };
  }
  // The answer to the renaming number `which` (from 1) is lost; with `reconnects` off there is no server
  // afterwards.
  void LoseRename(int which, bool reconnects) {
    ftp.fail = [this, which, reconnects, count = 0](const std::string& operation,
                                                    const std::string&) mutable {
      if (operation == "Connect" && !reconnects && ftp.connections > 1) return "421 Closed.";
      return operation == "Rename" && ++count == which ? "LOST" : "";
    };
  }
  std::vector<std::string> Aside() const {
    std::vector<std::string> names;
    for (const auto& [name, bytes] : ftp.files)
      if (name.rfind("/w/ZEB", 0) == 0) names.push_back(name);
    return names;
  }
  int missing = 0;
};

TEST_F(WebUploadTest, OnAServerThatReplacesThePageIsNeverMissing) {
  ftp.files["/w/a.htm"] = "old";
  WatchPage("/w/a.htm");
  for (const std::string title : {"One", "Two", "Three"}) {
    Play(title);
    EXPECT_TRUE(Update());
    EXPECT_EQ(ftp.files, (Files{{"/w/a.htm", title + "!"}}));
  }
  EXPECT_EQ(missing, 0);
}

TEST_F(WebUploadTest, WhatAServerRefusesOnceIsNotTriedAgainOverThatConnection) {
  ftp.replaces = false;
  output->AddUpdateFile(Pair("/t/a", "/w/b.htm"));
  ftp.files = {{"/w/a.htm", "old"}, {"/w/b.htm", "old"}};
  EXPECT_TRUE(Update());
  EXPECT_EQ(ftp.files, (Files{{"/w/a.htm", "One!"}, {"/w/b.htm", "One!"}}));
  EXPECT_EQ(Count("Rename /w/a.htm.tmp /w/a.htm"), 2);
  EXPECT_EQ(Count("Rename /w/b.htm.tmp /w/b.htm"), 1);
  ASSERT_EQ(Count("Rename /w/b.htm /w/ZEB"), 1);
  const auto aside = std::find_if(ftp.log.begin(), ftp.log.end(), [](const std::string& line) {
    return line.rfind("Rename /w/b.htm /w/ZEB", 0) == 0;
  });
  const std::string digits = aside->substr(std::string("Rename /w/b.htm /w/ZEB").size());
  EXPECT_EQ(digits.find_first_not_of("0123456789"), 5u) << *aside;
  EXPECT_EQ(digits.substr(5), ".TMP");
}

TEST_F(WebUploadTest, ALostAnswerIsUnderstood) {
  for (const bool replaces : {true, false})
    for (int which = 1; which <= 3; ++which) {
      SCOPED_TRACE(which);
      ftp.replaces = replaces;
      ftp.files = {{"/w/a.htm", "old"}};
      ftp.connections = 0;
      LoseRename(which, true);
      EXPECT_TRUE(Update());
      EXPECT_EQ(ftp.files, (Files{{"/w/a.htm", "One!"}}));
      EXPECT_EQ(output->Status(), kStatusOK);
      EXPECT_EQ(ftp.connections, replaces && which > 1 ? 1 : 2);
    }
}

TEST_F(WebUploadTest, APageMovedAsideComesBackAtTheNextChanceAlsoAfterARestart) {
  for (const bool restarts : {false, true}) {
    ftp.replaces = false;
    ftp.files = {{"/w/a.htm", "old"}, {"/w/ZEB00001.TMP", "somebody else's"}};
    ftp.connections = 0;
    output->StoreOutputInformation(1, 1);
    LoseRename(2, false);  // moved aside, and then nothing more
    EXPECT_FALSE(Update());
    EXPECT_EQ(ftp.files.count("/w/a.htm"), 0u);
    ASSERT_EQ(Aside().size(), 2u);
    if (restarts) {
      output = std::make_shared<clsZEBWebOutput>(t.environment, templates);
      output->GetOutputInformation(1, 1);
      output->StartOutput(nullptr);
    }
    ftp.fail = [](const std::string& operation, const std::string&) {
      return operation == "Upload" ? "552 Disk full." : "";
    };
    EXPECT_FALSE(Update());
    EXPECT_EQ(ftp.files["/w/a.htm"], "old");
    EXPECT_EQ(Aside(), std::vector<std::string>{"/w/ZEB00001.TMP"});
    ftp.fail = nullptr;
    EXPECT_TRUE(Update());
    EXPECT_EQ(ftp.files["/w/a.htm"], "One!");
    EXPECT_EQ(t.hive.ReadText(t.environment.ServiceKey(1) + "\\Web", "FTPMovedPages1", "none"), "none");
  }
}

TEST_F(WebUploadTest, TheOldPageNeverComesBackOverTheNewOne) {
  ftp.replaces = false;
  ftp.files = {{"/w/a.htm", "old"}};
  LoseRename(3, false);  // the new one is in place, and nobody hears of it
  EXPECT_FALSE(Update());
  EXPECT_EQ(ftp.files["/w/a.htm"], "One!");
  EXPECT_EQ(Aside().size(), 1u);
  ftp.replaces = true;
  ftp.fail = [](const std::string& operation, const std::string&) {
    return operation == "Upload" ? "552 Disk full." : "";
  };
  EXPECT_FALSE(Update());
  EXPECT_EQ(ftp.files, (Files{{"/w/a.htm", "One!"}}));
}

TEST_F(WebUploadTest, ARepetitionDoesOnlyWhatFailed) {
  output->AddUpdateFile(Pair("/t/a", "/w/b.htm"));
  output->AddUpdateFile(Pair("/t/none", "/w/c.htm"));
  output->CopyAdditionalFiles = true;
  output->AddToUploadFilesList("/pics/x.jpg");
  ftp.fail = [](const std::string& operation, const std::string& path) {
    return operation == "Upload" && path == "/w/b.htm.tmp" ? "552 Full." : "";
  };
  const SnapshotPtr snapshot = service.TakeSnapshot();
  EXPECT_TRUE(Run(snapshot));
  EXPECT_EQ(output->LastTally().published, 1);
  EXPECT_EQ(output->LastTally().failed, 2);
  const std::vector<clsZEBTemplate::Problem> problems = output->Problems();
  ASSERT_EQ(problems.size(), 3u);
  EXPECT_EQ(problems[0].thing, "/w/b.htm");
  EXPECT_NE(problems[0].reason.find("552 Full."), std::string::npos);
  EXPECT_EQ(problems[1].thing, "/w/c.htm");
  EXPECT_EQ(problems[1].reason.rfind("cannot read '/t/none'", 0), 0u) << problems[1].reason;
  EXPECT_EQ(problems[2].thing, "/w/x.jpg");
  EXPECT_EQ(problems[2].reason.find("550"), std::string::npos) << problems[2].reason;
  EXPECT_NE(problems[2].reason.find("cannot read '/pics/x.jpg'"), std::string::npos) << problems[2].reason;

  ftp.fail = nullptr;
  ftp.log.clear();
  t.files.Put("/t/none", "C");
  t.files.Put("/pics/x.jpg", "X");
  EXPECT_TRUE(Run(snapshot));
  EXPECT_EQ(Count("Upload /w/a.htm"), 0);
  EXPECT_EQ(output->LastTally().published, 2);
  EXPECT_EQ(ftp.files,
            (Files{{"/w/a.htm", "One!"}, {"/w/b.htm", "One!"}, {"/w/c.htm", "C"}, {"/w/x.jpg", "X"}}));
  EXPECT_TRUE(output->Problems().empty());

  ftp.log.clear();
  EXPECT_FALSE(Run(snapshot));
  EXPECT_TRUE(ftp.log.empty());
}

TEST_F(WebUploadTest, ARepetitionForAPictureAloneMendsTheStatus) {
  output->CopyAdditionalFiles = true;
  output->AddToUploadFilesList("/pics/x.jpg");
  const SnapshotPtr snapshot = service.TakeSnapshot();
  EXPECT_TRUE(Run(snapshot));
  EXPECT_EQ(output->Status(), kStatusUploadProblem);
  t.files.Put("/pics/x.jpg", "X");
  Run(snapshot);
  EXPECT_EQ(ftp.files["/w/x.jpg"], "X");
  EXPECT_EQ(Count("Upload /w/a.htm"), 1);
  EXPECT_EQ(StatusText(), "OK");
  EXPECT_EQ(output->ProblemText(), "");
}

TEST_F(WebUploadTest, AnUpdateWithNothingDueChangesNothing) {
  clsFileParameters pair = Pair("/t/a", "/w/a.htm");
  pair.UseUpdateRules = true;
  pair.UpdateRulesFlags = clsFileParameters::kSong;
  output->SetUpdateFile(1, pair);
  ftp.fail = [](const std::string& operation, const std::string&) {
    return operation == "Upload" ? "552 Full." : "";
  };
  EXPECT_FALSE(Update());
  const auto problems = output->Problems();
  const std::string status = StatusText();
  ftp.fail = nullptr;
  ftp.log.clear();
  clsZEBItemInfo advert;
  advert.Edit().ItemName = "Buy";
  advert.Edit().ItemType = 4;
  service.SetCurrentItem(advert);
  EXPECT_FALSE(Update());
  EXPECT_TRUE(ftp.log.empty());
  EXPECT_EQ(output->Problems(), problems) << "it did nothing, so nothing is mended";
  EXPECT_EQ(StatusText(), status);
  EXPECT_EQ(output->LastTally().published + output->LastTally().failed, 0);
}

TEST_F(WebUploadTest, AConnectionIsKeptForTheNextUpdate) {
  output->settings.FTPKeepConnectionSeconds = 30;
  EXPECT_TRUE(Update());
  t.loop.RunFor(29s);
  EXPECT_TRUE(Update());
  EXPECT_EQ(ftp.connections, 1);
  EXPECT_EQ(Count("Close"), 0);
  t.loop.RunFor(30s);
  EXPECT_EQ(Count("Close"), 1);
  EXPECT_TRUE(Update());
  EXPECT_EQ(ftp.connections, 2);

  // Lost while it was left alone: nobody is told, and the update may still lose one.
  bool lostAgain = false;
  ftp.fail = [&](const std::string& operation, const std::string&) {
    if (operation == "Probe") return "421 Timeout.";
    return operation == "Upload" && !std::exchange(lostAgain, true) ? "421 Bye." : "";
  };
  EXPECT_TRUE(Update());
  EXPECT_EQ(ftp.connections, 4);
  EXPECT_EQ(output->ProblemText(), "");

  ftp.fail = nullptr;
  output->settings.FTPServerName = "other";
  EXPECT_TRUE(Update());
  EXPECT_EQ(ftp.connections, 5) << "another server";
  output->StopOutput();
  t.loop.RunPosted();
  EXPECT_EQ(ftp.log.back(), "Close");
}

TEST_F(WebUploadTest, AServerThatHangsAtAnyStepHoldsNothingUpForLong) {
  ftp.replaces = false;
  output->settings.FTPTimeoutSeconds = 10;
  for (const std::string step :
       {"Open", "Connect", "Upload", "Block", "Exists", "Rename", "Delete", "Close"}) {
    SCOPED_TRACE(step);
    ftp.files = {{"/w/a.htm", "old"}};
    bool hung = false;
    ftp.fail = [&](const std::string& operation, const std::string&) {
      if (operation == step && !std::exchange(hung, true)) t.loop.Wait(10min);
      return "";
    };
    const MonotonicTime begun = t.loop.Monotonic();
    const bool published = Update();
    EXPECT_TRUE(hung);
    EXPECT_TRUE(t.files.List("/tmp").Value().empty());
    const Duration took = t.loop.Monotonic() - begun;
    if (step == "Close") {
      EXPECT_TRUE(published);
      EXPECT_EQ(took, 5s);
      EXPECT_FALSE(output->Hangs());
    } else {
      EXPECT_EQ(took, 15s);
      EXPECT_TRUE(output->Hangs());
      EXPECT_EQ(output->Status(), step == "Delete" ? kStatusOK : kStatusConnectProblem);
      if (step != "Delete") {
        EXPECT_NE(output->ProblemText().find("'www' has not answered for 15 s"), std::string::npos)
            << output->ProblemText();
      }
      t.loop.RunFor(10min);
      EXPECT_FALSE(output->Hangs()) << "its worker came back";
    }
    ftp.fail = nullptr;
    EXPECT_TRUE(Update());
    EXPECT_EQ(ftp.files, (Files{{"/w/a.htm", "One!"}}));
    EXPECT_EQ(output->ProblemText(), "");
    t.loop.RunFor(10min);
  }
}

TEST_F(WebUploadTest, ATemplateOnADeadShareIsNamed) {
  t.files.fail = [&](const std::string& operation, const std::string& path) {
    if (operation == "Read" && path == "/t/a") t.loop.Wait(5min);
    return "";
  };
  const MonotonicTime begun = t.loop.Monotonic();
  EXPECT_FALSE(Update());
  EXPECT_EQ(t.loop.Monotonic() - begun, kFileWorkLimit);
  EXPECT_EQ(output->Status(), kStatusSourceProblem);
  EXPECT_TRUE(output->Hangs());
  t.files.fail = nullptr;
  t.loop.RunFor(5min);
  EXPECT_FALSE(output->Hangs());
  EXPECT_TRUE(Update());
  EXPECT_EQ(ftp.files["/w/a.htm"], "One!");
}

// A real session lets a cancelled step end within its patience.
TEST_F(WebUploadTest, StoppingDuringAnUploadLeavesNoPartOfIt) {
  output->AddUpdateFile(Pair("/t/a", "/w/b.htm"));
  for (const bool stops : {true, false})
    for (const std::string step : {"Connect", "Upload", "Block", "Block LOST", "Rename"}) {
      SCOPED_TRACE(step);
      ftp.files = {{"/w/a.htm", "old"}};
      ftp.cancelled = false;
      output->StartOutput(nullptr);
      int reached = 0;
      ftp.fail = [&](const std::string& operation, const std::string& path) {
        if (step.rfind(operation, 0) != 0 || path != (operation == "Connect" ? "" : "/w/b.htm.tmp"))
          return "";
        if (++reached > 1) return "";
        t.loop.WaitUntil([&] { return ftp.cancelled; }, 1min);
        return step == "Block LOST" ? "LOST" : "";
      };
      const SnapshotPtr snapshot = service.TakeSnapshot();
      bool ended = false;
      t.loop.Start("update", [&] {
        output->UpdateOutput(snapshot);
        ended = true;
      });
      t.loop.RunFor(5s);
      ASSERT_EQ(reached, 1);
      ASSERT_FALSE(ended);
      stops ? static_cast<void>(output->StopOutput()) : output->Cancel();
      t.loop.RunFor(0s);
      EXPECT_TRUE(ended);
      for (const auto& [name, bytes] : ftp.files) EXPECT_EQ(name.find(".tmp"), std::string::npos) << name;
      EXPECT_EQ(ftp.files["/w/a.htm"], step == "Rename" ? "One!" : "old");
      EXPECT_EQ(output->Status(), stops ? kStatusOff : kStatusOK);
      EXPECT_EQ(output->ProblemText(), "");
      if (step != "Connect") {
        EXPECT_EQ(ftp.log.back(), "Close");
      }
    }
}

TEST_F(WebUploadTest, APersonMayGiveUpWhatIsBeingSent) {
  output->CancelByUser();  // nothing is
  EXPECT_TRUE(Update());
  service.SetCurrentItem(Song("Two"));
  ftp.fail = [this](const std::string& operation, const std::string&) {
    if (operation == "Block") t.loop.WaitUntil([&] { return ftp.cancelled; }, 1min);
    return "";
  };
  bool ended = false;
  t.loop.Start("update", [&, snapshot = service.TakeSnapshot()] {
    output->UpdateOutput(snapshot);
    output->FinishOutput(snapshot);
    ended = true;
  });
  t.loop.RunFor(5s);
  ASSERT_FALSE(ended);
  output->CancelByUser();
  t.loop.RunFor(1s);
  EXPECT_TRUE(ended);
  EXPECT_EQ(output->ProblemText(), "The user cancelled the operation");
  EXPECT_EQ(output->LastTally().failed, 1);
  EXPECT_TRUE(output->MayPass());
  ftp.fail = nullptr;
  ftp.cancelled = false;
  EXPECT_TRUE(Update());
  EXPECT_EQ(output->ProblemText(), "");
  EXPECT_EQ(ftp.files["/w/a.htm"], "Two!");
}

TEST_F(WebUploadTest, AdditionalFilesOfAnySizeGoInBlocksWithTheirProgress) {
  output->CopyAdditionalFiles = true;
  const std::size_t size = 65u * 1024 * 1024;
  t.files.Put("/pics/film.mp4", std::string(size, 'x'));
  output->AddToUploadFilesList("/pics/film.mp4");
  std::vector<int> percents;
  output->onProgress = [&](int percent) { percents.push_back(percent); };
  int blocks = 0;
  ftp.fail = [&](const std::string& operation, const std::string& path) {
    blocks += operation == "Block" && path == "/w/film.mp4.tmp" ? 1 : 0;
    return "";
  };
  EXPECT_TRUE(Update());
  t.loop.RunPosted();
  EXPECT_EQ(ftp.files["/w/film.mp4"].size(), size);
  EXPECT_EQ(blocks, static_cast<int>(size / kFtpBlockBytes));
  ASSERT_EQ(percents.size(), 101u);
  EXPECT_EQ(percents[0], 100) << "the page";
  for (int i = 1; i <= 100; ++i) EXPECT_EQ(percents[static_cast<std::size_t>(i)], i);
}

TEST_F(WebUploadTest, APictureThatFailsHalfWayIsNamedByItsReasonAndLeavesNoPart) {
  output->CopyAdditionalFiles = true;
  t.files.Put("/pics/x.jpg", std::string(9000, 'x'));
  output->AddToUploadFilesList("/pics/x.jpg");
  int reads = 0;
  t.files.fail = [&](const std::string& operation, const std::string& path) {
    return operation == "Read" && path == "/pics/x.jpg" && ++reads == 4 ? "Input/output error" : "";
  };
  EXPECT_TRUE(Update());
  EXPECT_EQ(StatusText(),
            "Couldn't upload additional files to temp files : \n\nUnable to read source file - cannot read "
            "'/pics/x.jpg': Input/output error");
  EXPECT_EQ(ftp.files, (Files{{"/w/a.htm", "One!"}}));
}

TEST_F(WebUploadTest, EveryStepIsWrittenToTheDebugLog) {
  DebugLog log(t.loop, t.files, t.person, "zebd", "/log", 5);
  log.Install();
  output->CopyAdditionalFiles = true;
  t.files.Put("/pics/x.jpg", "X");
  output->AddToUploadFilesList("/pics/x.jpg");
  output->AddUpdateFile(Pair("/t/none", "/w/b.htm"));
  EXPECT_TRUE(Update());
  t.loop.RunPosted();
  const std::string text = t.files.Contents("/log/zebd.20260302.log");
  const char* const lines[] = {"Processing file - /t/a",
                               "Information has changed, so must process and upload",
                               "Loading file - /t/a",
                               "Checking for &lt; and &gt; tags",
                               "Checking for %3c and %3e tags",
                               "Inserting Meta Tags if nescessary",
                               "Processing Tags",
                               "Adding any additional files",
                               "Saving processed file to /tmp/TMP",
                               "Uploading Temp File to /w/a.htm.tmp",
                               "Deleting the Temp File",
                               "Processing file - /t/none",
                               "Loading file - /t/none",
                               "Error loading file - /t/none - cannot read '/t/none'",
                               "Uploading any Additional Files",
                               "Checking to see if file already uploaded : /w/x.jpg",
                               "Uploading additional file /pics/x.jpg to /w/x.jpg",
                               "Renaming uploading Temp File : /w/x.jpg.tmp to /w/x.jpg",
                               "Renaming uploaded page - /w/a.htm"};
  std::size_t at = 0;
  for (const char* line : lines) {
    const std::size_t found = text.find(line, at);
    ASSERT_NE(found, std::string::npos) << line << " is missing behind its place in\n" << text;
    at = found + 1;
  }
}

}  // namespace
}  // namespace zeb
