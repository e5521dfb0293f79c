// The label server on simulated sockets, byte by byte.
#include <gtest/gtest.h>

#include "outputs/labels/LabelClient.h"
#include "outputs/labels/LabelServer.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class LabelServerTest : public testing::Test {
 protected:
  LabelServerTest() {
    EXPECT_TRUE(t.files.CreateFolders("/l"));
    EXPECT_TRUE(server.Listen("127.0.0.1", 4000));
  }
  struct Talker {
    std::shared_ptr<TcpClientControl> socket;
    std::string got;
    bool closed = false;
  };
  std::unique_ptr<Talker> Connect() {
    auto talker = std::make_unique<Talker>();
    talker->socket = t.network.MakeClient();
    talker->socket->onData = [to = talker.get()](std::string_view bytes) { to->got += bytes; };
    talker->socket->onClosed = [to = talker.get()] { to->closed = true; };
    talker->socket->Connect("localhost", 4000);
    t.loop.RunPosted();
    return talker;
  }
  // What the server answers at once.
  std::string Say(Talker& talker, std::string_view bytes) {
    talker.got.clear();
    talker.socket->SendData(bytes);
    t.loop.RunPosted();
    return talker.got;
  }
  static constexpr const char* kLogOn = "LOGON SERVICE=\"Demo FM\" PASSWORD=\"s3\"\r\n";

  TestEnvironment t;
  LabelServer server{t.loop,
                     t.network,
                     t.files,
                     t.person,
                     {{"Demo FM", "s3", "/l/demo.txt"}, {"Two", "x\"y", "/l/two.txt"}}};
};

TEST_F(LabelServerTest, TakesLabelsAndReplacesTheFileInOneStep) {
  const auto a = Connect();
  EXPECT_EQ(Say(*a, "LABEL TEXT=\"early\"\r\n"), "ERROR not logged on\r\n");
  std::string answers;  // in whatever pieces a line comes
  for (const char c : std::string(kLogOn)) answers += Say(*a, std::string(1, c));
  EXPECT_EQ(answers, "OK\r\n");
  EXPECT_EQ(Say(*a, "LABEL TEXT=\"One\"\r\n"), "OK\r\n");
  std::vector<std::string> seen;
  t.files.observe = [&](const std::string&, const std::string&) {
    seen.push_back(t.files.Contents("/l/demo.txt"));
  };
  EXPECT_EQ(Say(*a, "label text=\"Say {22}hi{22}{0A}\xC3\x98rsund \xE9\"\n"), "OK\r\n");
  EXPECT_EQ(t.files.Contents("/l/demo.txt"), "Say \"hi\" Ørsund é");
  for (const std::string& text : seen) EXPECT_TRUE(text == "One" || text == "Say \"hi\" Ørsund é") << text;
  EXPECT_EQ(t.files.List("/l").Value(), (std::vector<std::string>{"demo.txt"}));
  EXPECT_EQ(Say(*a, "HELLO\r\n"), "ERROR unknown command\r\n");
  // Several lines at a time are answered in order.
  EXPECT_EQ(Say(*a, "LABEL TEXT=\"A\"\r\nNO\r\nLOGOFF\r\nLABEL TEXT=\"late\"\r\n"),
            "OK\r\nERROR unknown command\r\nOK\r\n");
  EXPECT_TRUE(a->closed);
  EXPECT_EQ(t.files.Contents("/l/demo.txt"), "A");
  EXPECT_EQ(server.ConnectionCount(), 0u);
}

TEST_F(LabelServerTest, WhatCameBeforeTheEndOfAConnectionIsStillTaken) {
  t.loop.SetBlockingTime(100ms);
  const auto a = Connect();
  Say(*a, std::string(kLogOn) + "LABEL TEXT=\"A\"\r\nLABEL TEXT=\"B\"\r\n");
  a->socket->Close();
  t.loop.RunFor(1s);
  EXPECT_EQ(t.files.Contents("/l/demo.txt"), "B");
  EXPECT_EQ(server.ConnectionCount(), 0u);
}

TEST_F(LabelServerTest, RefusesLabelsAbove128Bytes) {
  const auto a = Connect();
  Say(*a, kLogOn);
  const auto label = [&](const std::string& text) { return Say(*a, "LABEL TEXT=\"" + text + "\"\r\n"); };
  const auto times = [](const std::string& piece, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += piece;
    return all;
  };
  EXPECT_EQ(label(times("é", 128)), "OK\r\n");  // one byte each in EBU Latin
  EXPECT_EQ(label(times("é", 129)), "ERROR the label has 129 bytes, at most 128 are allowed\r\n");
  EXPECT_EQ(label(times("日", 42)), "OK\r\n");
  EXPECT_EQ(label(times("日", 43)), "ERROR the label has 129 bytes, at most 128 are allowed\r\n");
  EXPECT_EQ(t.files.Contents("/l/demo.txt"), times("日", 42));
  EXPECT_EQ(label(""), "OK\r\n");
  EXPECT_EQ(t.files.Contents("/l/demo.txt"), "");
}

TEST_F(LabelServerTest, WrongPasswordsAreRefusedAfterASecondAndEndTheConnectionTheThirdTime) {
  const auto a = Connect();
  const char* wrong[] = {"LOGON SERVICE=\"Demo FM\" PASSWORD=\"x\"\r\n",
                         "LOGON SERVICE=\"No\" PASSWORD=\"s3\"\r\n", "LOGON\r\n"};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Say(*a, wrong[i]), "");
    t.loop.RunFor(999ms);
    EXPECT_EQ(a->got, "");
    t.loop.RunFor(1ms);
    EXPECT_EQ(a->got, "ERROR wrong service or password\r\n");
    EXPECT_EQ(a->closed, i == 2);
  }
  // A guess that follows at once waits its turn.
  const auto b = Connect();
  EXPECT_EQ(Say(*b, std::string(wrong[0]) + kLogOn), "");
  t.loop.RunFor(1s);
  EXPECT_EQ(b->got, "ERROR wrong service or password\r\nOK\r\n");
  EXPECT_EQ(Say(*b, "LOGON SERVICE=\"two\" PASSWORD=\"x{22}y\"\r\nLABEL TEXT=\"2\"\r\n"), "OK\r\nOK\r\n");
  EXPECT_EQ(t.files.Contents("/l/two.txt"), "2");
}

TEST_F(LabelServerTest, HasBoundsOnEverything) {
  std::vector<std::unique_ptr<Talker>> talkers;
  for (int i = 0; i < 40; ++i) talkers.push_back(Connect());
  EXPECT_EQ(server.ConnectionCount(), 32u);
  EXPECT_TRUE(talkers[32]->closed);
  Say(*talkers[0], kLogOn);
  t.loop.RunFor(30s);  // who does not log on gives its place up
  EXPECT_EQ(server.ConnectionCount(), 1u);
  EXPECT_EQ(Say(*talkers[0], std::string(5000, 'x')), "ERROR too much at a time\r\n");
  EXPECT_TRUE(talkers[0]->closed);
  const auto a = Connect();
  std::string flood = "LOGON\r\n";
  for (int i = 0; i < 100; ++i) flood += "LABEL\r\n";
  EXPECT_EQ(Say(*a, flood), "ERROR too much at a time\r\n");
  EXPECT_TRUE(a->closed);
  t.loop.RunFor(10s);
  EXPECT_EQ(t.loop.TaskCount(), 0u);
  EXPECT_EQ(server.ConnectionCount(), 0u);
}

TEST_F(LabelServerTest, AFileThatCannotBeWrittenIsToldOfOnce) {
  const auto a = Connect();
  Say(*a, kLogOn);
  t.person.notes.clear();
  t.files.fail = [](const std::string& operation, const std::string&) {
    return operation == "Rename" ? "disk full" : "";
  };
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(Say(*a, "LABEL TEXT=\"x\"\r\n"), "ERROR the label cannot be written\r\n");
  EXPECT_EQ(t.person.notes.size(), 1u);
  EXPECT_TRUE(t.files.List("/l").Value().empty());
  t.files.fail = nullptr;
  EXPECT_EQ(Say(*a, "LABEL TEXT=\"y\"\r\n"), "OK\r\n");
  EXPECT_EQ(t.person.notes.back(), "'/l/demo.txt' can be written again");
}

TEST_F(LabelServerTest, SurvivesItsClientsAndItsOwnEndInTheMiddleOfAWrite) {
  t.loop.SetBlockingTime(1s);
  auto a = Connect();
  const auto b = Connect();
  Say(*a, kLogOn);
  Say(*b, kLogOn);
  Say(*a, "LABEL TEXT=\"a\"\r\n");
  Say(*b, "LABEL TEXT=\"b\"\r\n");
  a->socket.reset();
  t.loop.RunFor(3s);
  EXPECT_EQ(b->got, "OK\r\n");
  EXPECT_EQ(t.files.Contents("/l/demo.txt"), "b");
  Say(*b, "LABEL TEXT=\"c\"\r\n");
  server.Close();
  t.loop.RunFor(3s);
  EXPECT_EQ(t.files.Contents("/l/demo.txt"), "c");
  EXPECT_EQ(t.loop.TaskCount(), 0u);
}

TEST_F(LabelServerTest, TalksWithTheDabClient) {
  LabelClient client(t.network);
  EXPECT_TRUE(client.Connect("mux", 4000));
  t.loop.RunPosted();
  EXPECT_EQ(client.CurrentState(), DABClientControl::kConnected);
  client.LogOn("Two", "x\"y");
  EXPECT_EQ(client.CurrentState(), DABClientControl::kLoggingOn);
  t.loop.RunPosted();
  EXPECT_EQ(client.CurrentState(), DABClientControl::kLoggedOn);
  client.SendLabel("\"{22}\" Ł");
  t.loop.RunPosted();
  EXPECT_EQ(t.files.Contents("/l/two.txt"), "\"{22}\" Ł");
  client.Close();
  t.loop.RunPosted();
  EXPECT_EQ(client.CurrentState(), DABClientControl::kClosed);
  EXPECT_EQ(server.ConnectionCount(), 0u);
}

TEST(ReadLabelServices, ReadsSectionsAndNamesTheBadLine) {
  const auto read = ReadLabelServices(
      "; labels\r\n[Demo FM]\r\nPassword = a=b \r\nfilename=/l/a.txt\n\n# "
      "two\n[Zwei]\nPassword=c\nFileName=d");
  ASSERT_TRUE(read) << read.Reason();
  ASSERT_EQ(read.Value().size(), 2u);
  EXPECT_EQ(read.Value()[0].password, "a=b");
  EXPECT_EQ(read.Value()[0].fileName, "/l/a.txt");
  EXPECT_EQ(read.Value()[1].name, "Zwei");
  const std::pair<const char*, const char*> bad[] = {
      {"", "no service"},
      {"Password=x", "line 1"},
      {"[a]\nnonsense", "line 2"},
      {"[a", "line 1"},
      {"[a]\n\nColour=red", "line 3"},
      {"[a]\nPassword=x\nFileName=y\n[A]", "line 4"},
      {"[a]\nPassword=x", "'a' needs"},
  };
  for (const auto& [ini, word] : bad) {
    const auto result = ReadLabelServices(ini);
    ASSERT_FALSE(result) << ini;
    EXPECT_NE(result.Reason().find(word), std::string::npos) << result.Reason();
  }
}

}  // namespace
}  // namespace zeb
