#include <gtest/gtest.h>

#include <algorithm>

#include "core/clsZEBService.h"
#include "outputs/web/cWinINET.h"
#include "outputs/web/clsZEBWebOutput.h"
#include "platform/simulated/SimulatedFtp.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

class WebOutputTest : public testing::Test {
 protected:
  WebOutputTest() {
    t.environment.ftp = &ftp;
    t.files.Put("/t/a", "<ZEB_NOW_ITEMNAME>!");
    Play("One");
    output->settings.FTPServerName = "www";
    output->AddUpdateFile(Pair("/t/a", "/w/a.htm"));
    output->StartOutput(nullptr);
  }
  void Play(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    item.Edit().ItemType = 7;
    service.SetCurrentItem(item);
  }
  static clsFileParameters Pair(const std::string& source, const std::string& destination) {
    clsFileParameters pair;
    pair.SetSourceFileName(source);
    pair.SetDestinationFileName(destination);
    return pair;
  }
  void Update() {
    ASSERT_TRUE(t.loop.RunTask([&] {
      output->PrepareOutput(service.TakeSnapshot());
      output->UpdateOutput(service.TakeSnapshot());
      output->FinishOutput(service.TakeSnapshot());
    }));
  }
  std::string StatusText() {
    std::uint32_t colour = 0;
    return output->GetStatusString(colour);
  }
  int Count(const std::string& logStart) const {
    return static_cast<int>(std::count_if(ftp.log.begin(), ftp.log.end(), [&](const std::string& line) {
      return line.rfind(logStart, 0) == 0;
    }));
  }

  TestEnvironment t;
  SimulatedFtp ftp;
  ServiceEvents events;
  clsZEBService service{t.environment, nullptr, events};
  std::shared_ptr<clsZEBWebOutput> output = std::make_shared<clsZEBWebOutput>(t.environment);
};

TEST_F(WebOutputTest, PublishesOverOneConnectionAndReplacesThroughAFreeName) {
  output->AddUpdateFile(Pair("/t/a", "b.htm"));
  ftp.files["/w/a.htm"] = "old";
  Update();
  EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/w/a.htm", "One!"}, {"/b.htm", "One!"}}));
  EXPECT_EQ(ftp.connections, 1);
  EXPECT_EQ(ftp.log.back(), "Close");
  EXPECT_EQ(StatusText(), "OK");
  EXPECT_TRUE(std::any_of(ftp.log.begin(), ftp.log.end(), [](const std::string& line) {
    constexpr std::string_view kStart = "Rename /w/a.htm /w/ZEB", kEnd = ".TMP";
    return line.size() == kStart.size() + 5 + kEnd.size() && line.rfind(kStart, 0) == 0 &&
           line.substr(kStart.size() + 5) == kEnd &&
           line.find_first_not_of("0123456789", kStart.size()) == kStart.size() + 5;
  }));
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
      {"Exists", "/w/a.htm", 7, "Couldn't rename temp file to final name - /w/a.htm\n\n"},
      {"Rename", "/w/a.htm", 7, "Couldn't rename temp file to final name - /w/a.htm\n\n"},
      {"Rename", "/w/a.htm.tmp", 7, "Couldn't rename temp file to final name - /w/a.htm\n\n"},
  };
  for (const Case& c : cases) {
    for (const std::string reply : {"530 Not now.", "421 Bye."}) {
      ftp.files = {{"/w/a.htm", "old"}};
      ftp.connections = 0;
      ftp.fail = [&](const std::string& operation, const std::string& path) {
        return operation == c.operation && path == c.path ? reply : "";
      };
      Update();
      EXPECT_LE(ftp.connections, 2);
      if (reply[0] == '5') {
        EXPECT_EQ(output->Status(), c.status) << c.operation;
        EXPECT_EQ(StatusText().rfind(c.text, 0), 0u) << StatusText();
        EXPECT_EQ(ftp.files["/w/a.htm"], "old") << c.operation;
        if (c.status != 8) {
          EXPECT_NE(StatusText().find("530 Not now."), std::string::npos) << StatusText();
        }
      } else {
        EXPECT_EQ(output->Status(), 8) << c.operation;
      }
      EXPECT_FALSE(output->ProblemText().empty());
      EXPECT_EQ(output->ProblemText().find('\n'), std::string::npos);
    }
  }
  ftp.fail = nullptr;
  Update();
  EXPECT_EQ(ftp.files["/w/a.htm"], "One!");
  EXPECT_EQ(output->ProblemText(), "");
}

TEST_F(WebOutputTest, AConnectionLostOnceIsMadeAnew) {
  for (const std::string lost : {"Upload", "Exists", "Rename"}) {
    ftp.files = {{"/w/a.htm", "old"}};
    ftp.connections = 0;
    bool failed = false;
    ftp.fail = [&](const std::string& operation, const std::string&) {
      return operation == lost && !std::exchange(failed, true) ? "421 Bye." : "";
    };
    Update();
    EXPECT_EQ(ftp.connections, 2) << lost;
    EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/w/a.htm", "One!"}})) << lost;
    EXPECT_EQ(output->Status(), kStatusOK);
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
  EXPECT_EQ(StatusText(), "Couldn't upload additional files to temp files : \n\nUnable to read source file");
  EXPECT_EQ(ftp.files["/w/a.htm"], "One!");
}

TEST_F(WebOutputTest, AMissingTemplateIsASourceProblem) {
  output->AddUpdateFile(Pair("/t/none", "/w/b.htm"));
  Update();
  EXPECT_EQ(StatusText(), "Source File Prob.");
  EXPECT_EQ(ftp.files["/w/a.htm"], "One!");
}

TEST_F(WebOutputTest, SettingsComeBack) {
  output->settings = {"ftp.example", 2121, "u", "p", true, "proxy", 3128, false, 7, true, "ca.pem"};
  output->StoreOutputInformation(1, 2);
  clsZEBWebOutput other(t.environment);
  other.GetOutputInformation(1, 2);
  EXPECT_EQ(other.UpdateFileCount(), 1);
  EXPECT_EQ(other.settings.FTPServerPort, 2121);
  EXPECT_EQ(other.settings.FTPProxyPort, 3128);
  EXPECT_TRUE(other.settings.FTPUseProxy && other.settings.FTPUseTLS && !other.settings.FTPPassiveMode);
  EXPECT_EQ(other.settings.FTPTimeoutSeconds, 7);
  EXPECT_EQ(other.settings.FTPCaFile, "ca.pem");
  const std::string key = t.environment.ServiceKey(1) + "\\Web";
  EXPECT_EQ(std::get<std::string>(t.hive.Values(key)[0].data), "0");  // AlwaysCopyFiles2, as text
  clsZEBWebOutput fresh(t.environment);
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
  t.files.Put("/x", std::string(9000, 'x'));
  EXPECT_EQ(client.UploadFile(*session, "/x", "/s", true, [](int percent) { return percent < 40; }),
            cWinINET::kCancelled);
  EXPECT_EQ(ftp.files, (std::map<std::string, std::string>{{"/s", "old"}}));
  EXPECT_EQ(cWinINET::GetUploadResultDescription(5), "The user cancelled the operation");
  EXPECT_EQ(cWinINET::GetUploadResultDescription(6), "");
  EXPECT_EQ(cWinINET::URLEncode("a b&c"), "a+b%26c");
}

TEST(WebOutputDialogTest, ChecksInOrder) {
  EXPECT_EQ(CheckWebOutput(0, "", "", "", "", true, "", "").message, "You have not added any files.");
  EXPECT_EQ(CheckWebOutput(1, "a", "21", "u", "", false, "", "").message,
            "You must enter a valid FTP Server, Username and Password");
  EXPECT_EQ(CheckWebOutput(1, "a/b", "21", "u", "p", true, "", "").message.rfind("The FTP Server name", 0),
            0u);
  EXPECT_FALSE(CheckWebOutput(1, "a", "21", "u", "p", true, "x", "").warning);
  EXPECT_EQ(CheckWebOutput(1, "a", "21", "u", "p", false, "", "").message, "");
  clsFileParameters pair;
  EXPECT_EQ(UpdateRulesSummary(pair), "Always");
  pair.UseUpdateRules = true;
  EXPECT_EQ(UpdateRulesSummary(pair), "No item");
  pair.UpdateRulesFlags = clsFileParameters::kAdvert | clsFileParameters::kSong | clsFileParameters::kUnknown;
  EXPECT_EQ(UpdateRulesSummary(pair), "ASU");
}

}  // namespace
}  // namespace zeb
