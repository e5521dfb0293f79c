#include "outputs/web/cWinINET.h"
#include "tests/outputs/WebFixture.h"

namespace zeb {
namespace {

TEST_F(WebOutputTest, PublishesOverOneConnectionAndReplacesInOneStep) {
  output->AddUpdateFile(Pair("/t/a", "b.htm"));
  ftp.files["/w/a.htm"] = "old";
  EXPECT_TRUE(Update());
  EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/w/a.htm", "One!"}, {"/b.htm", "One!"}}));
  EXPECT_EQ(ftp.log,
            (std::vector<std::string>{"Open", "Connect", "Upload /w/a.htm.tmp", "Upload /b.htm.tmp",
                                      "Rename /w/a.htm.tmp /w/a.htm", "Rename /b.htm.tmp /b.htm", "Close"}));
  EXPECT_EQ(StatusText(), "OK");
  EXPECT_TRUE(t.files.List("/tmp").Value().empty());
}

TEST_F(WebOutputTest, WhateverStepFailsThePreviousPageStays) {
  struct Case {
    const char* operation;
    const char* path;
    std::int32_t status;
    const char* text;
  };
  const Case cases[] = {
      {"Open", "", 8, "Couldn't connect to Internet - no Internet Connection available"},
      {"Connect", "", 8, "Couldn't connect To Server : \n\n"},
      {"Upload", "/w/a.htm.tmp", 7, "Couldn't upload file to temp file : \n\n"},
      {"Block", "/w/a.htm.tmp", 7, "Couldn't upload file to temp file : \n\n"},
      {"Exists", "/w/a.htm", 7, "Couldn't rename temp file to final name - /w/a.htm\n\n"},
      {"Rename", "/w/a.htm", 7, "Couldn't rename temp file to final name - /w/a.htm\n\n"},
      {"Rename", "/w/a.htm.tmp", 7, "Couldn't rename temp file to final name - /w/a.htm\n\n"},
  };
  ftp.replaces = false;
  for (const Case& c : cases) {
    for (const std::string reply : {"530 Not now.", "421 Bye."}) {
      SCOPED_TRACE(std::string(c.operation) + " " + c.path + " " + reply);
      ftp.files = {{"/w/a.htm", "old"}};
      ftp.connections = 0;
      ftp.fail = [&](const std::string& operation, const std::string& path) {
        return operation == c.operation && path == c.path ? reply : "";
      };
      EXPECT_FALSE(Update());
      EXPECT_LE(ftp.connections, 2);
      EXPECT_EQ(output->LastTally().failed, 1);
      if (reply[0] == '5') {
        EXPECT_EQ(output->Status(), c.status);
        EXPECT_EQ(StatusText().rfind(c.text, 0), 0u) << StatusText();
        EXPECT_EQ(ftp.files["/w/a.htm"], "old");
        if (c.operation != std::string("Open")) {
          EXPECT_NE(StatusText().find("530 Not now."), std::string::npos) << StatusText();
        }
      } else {
        EXPECT_EQ(output->Status(), 8);
      }
      ASSERT_EQ(output->Problems().size(), 1u);
      EXPECT_EQ(output->Problems()[0].thing, reply[0] == '5' && c.status == 7 ? "/w/a.htm" : "");
      EXPECT_EQ(output->ProblemText().find('\n'), std::string::npos);
      ftp.fail = nullptr;
      EXPECT_TRUE(Update());
      EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/w/a.htm", "One!"}}));
      EXPECT_EQ(output->ProblemText(), "");
    }
  }
}

TEST_F(WebOutputTest, AConnectionLostOnceIsMadeAnew) {
  for (const bool replaces : {true, false}) {
    ftp.replaces = replaces;
    for (const std::string lost : {"Upload", "Block", "Rename", replaces ? "Upload" : "Exists"}) {
      ftp.files = {{"/w/a.htm", "old"}};
      ftp.connections = 0;
      bool failed = false;
      ftp.fail = [&](const std::string& operation, const std::string&) {
        return operation == lost && !std::exchange(failed, true) ? "421 Bye." : "";
      };
      EXPECT_TRUE(Update());
      EXPECT_EQ(ftp.connections, 2) << lost;
      EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/w/a.htm", "One!"}})) << lost;
      EXPECT_EQ(output->Status(), kStatusOK);
    }
  }
}

TEST_F(WebOutputTest, AFailedRenameDoesNotStopTheOthers) {
  output->AddUpdateFile(Pair("/t/a", "/w/b.htm"));
  ftp.fail = [](const std::string& operation, const std::string& path) {
    return operation == "Rename" && path == "/w/a.htm.tmp" ? "553 No." : "";
  };
  ASSERT_TRUE(t.loop.RunTask([&] { output->UpdateOutput(service.TakeSnapshot()); }));
  EXPECT_EQ(ftp.files["/w/b.htm"], "One!");
  ASSERT_EQ(output->NumberDeleteFiles(), 2);
  EXPECT_EQ(output->DeleteFileName(1), "a.htm.tmp");
  EXPECT_EQ(output->DeleteFileName(2), "");
  ftp.fail = nullptr;
  ASSERT_TRUE(t.loop.RunTask([&] { output->FinishOutput(service.TakeSnapshot()); }));
  EXPECT_EQ(ftp.files.count("/w/a.htm.tmp"), 0u);
  EXPECT_GE(Count("Rename /w/a.htm.tmp /w/ZEB"), 1);
}

TEST_F(WebOutputTest, SendsAPictureOnceUnlessAlways) {
  output->CopyAdditionalFiles = true;
  t.files.Put("/pics/x.jpg", std::string(5000, 'x'));
  std::vector<int> percents;
  output->onProgress = [&](int percent) { percents.push_back(percent); };
  for (int i = 0; i < 2; ++i) {
    output->AddToUploadFilesList("/pics/x.jpg");
    Update();
    t.loop.RunPosted();
  }
  EXPECT_EQ(ftp.files["/w/x.jpg"].size(), 5000u);
  EXPECT_EQ(Count("Upload /w/x.jpg.tmp"), 1);
  EXPECT_EQ(percents, (std::vector<int>{100, 41, 82, 100, 100}));
  output->AlwaysCopyFiles = true;
  output->AddToUploadFilesList("/pics/x.jpg");
  output->AddToUploadFilesList("/pics/gone.jpg");
  Update();
  EXPECT_EQ(Count("Upload /w/x.jpg.tmp"), 2);
  EXPECT_EQ(StatusText(),
            "Couldn't upload additional files to temp files : \n\nUnable to read source file - cannot read "
            "'/pics/gone.jpg': No such file or directory");
  EXPECT_EQ(output->Problems(),
            (std::vector<clsZEBTemplate::Problem>{{"/w/gone.jpg", output->Problems().at(0).reason}}));
  EXPECT_EQ(ftp.files["/w/a.htm"], "One!");
}

TEST_F(WebOutputTest, AMissingTemplateIsASourceProblem) {
  output->AddUpdateFile(Pair("/t/none", "/w/b.htm"));
  Update();
  EXPECT_EQ(StatusText(), "Source File Prob.");
  EXPECT_EQ(ftp.files["/w/a.htm"], "One!");
}

TEST_F(WebOutputTest, WithoutSettingsItHasItsDefaults) {
  output->StoreOutputInformation(1, 2);
  const std::string key = t.environment.ServiceKey(1) + "\\Web";
  EXPECT_EQ(std::get<std::string>(t.hive.Values(key)[0].data), "0");  // AlwaysCopyFiles2, as text
  clsZEBWebOutput fresh(t.environment, templates);
  fresh.GetOutputInformation(9, 1);
  EXPECT_EQ(fresh.settings.FTPServerPort, 21);
  EXPECT_TRUE(fresh.settings.FTPPassiveMode);
  EXPECT_EQ(fresh.settings.FTPTimeoutSeconds, 30);
}

TEST_F(WebOutputTest, TransferThroughATemporaryNameRollsBack) {
  cWinINET client(t.files);
  t.files.Put("/x", "new");
  t.files.Put("/empty", "");
  const auto session = ftp.Make();
  EXPECT_EQ(client.UploadFile(*session, "/x", "/s", true), cWinINET::kUnableToConnect);
  ASSERT_TRUE(session->Connect({}));
  ftp.files = {{"/s", "old"}};
  EXPECT_EQ(client.UploadFile(*session, "/empty", "/s", true), cWinINET::kUnableToRead);
  EXPECT_EQ(client.UploadFile(*session, "/x", "s", true), cWinINET::kUploadSuccessful);
  EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/s", "new"}}));
  ftp.files = {{"/s", "old"}};
  ftp.fail = [](const std::string& operation, const std::string& path) {
    return operation == "Rename" && path != "/s" && path != "/s.old" ? "553 No." : "";
  };
  EXPECT_EQ(client.UploadFile(*session, "/x", "/s", true), cWinINET::kUnableToWrite);
  EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/s", "old"}}));
  EXPECT_EQ(client.Problem(), "553 No.");
  t.files.Put("/x", std::string(9000, 'x'));
  int percent = 0;
  cWinINET::Watch watch;
  watch.percent = [&](int value) { percent = value; };
  watch.cancelled = [&] { return percent > 40; };
  EXPECT_EQ(client.UploadFile(*session, "/x", "/s", true, watch), cWinINET::kCancelled);
  EXPECT_EQ(percent, 46) << "not a block more";
  EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/s", "old"}}));
  EXPECT_EQ(cWinINET::GetUploadResultDescription(5), "The user cancelled the operation");
  EXPECT_EQ(cWinINET::GetUploadResultDescription(6), "");
  EXPECT_EQ(cWinINET::URLEncode("a b&c"), "a+b%26c");
}

}  // namespace
}  // namespace zeb
