#include <gtest/gtest.h>

#include "dashboard/HttpWire.h"

namespace zeb {
namespace {

using State = HttpRequestReader::State;

struct Read {
  State state;
  int refused;  // 0: not
  HttpRequest request;
  std::string rest;
};

Read ReadRequest(std::string_view bytes, std::size_t piece) {
  HttpRequestReader reader;
  std::string buffer;
  State state = State::kMore;
  for (; state == State::kMore && !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
    buffer += bytes.substr(0, piece);
    state = reader.Take(buffer);
  }
  Read read{state, 0, {}, buffer};
  if (state == State::kFailed) read.refused = reader.Refusal().status;
  if (state == State::kDone) read.request = reader.TakeRequest();
  return read;
}

TEST(HttpWireTest, ARequestCutAnywhereIsTheSame) {
  const std::string bytes =
      "POST /api/v1/services/3/items/current?full=1&a=b%20c+d HTTP/1.1\r\nHost: localhost:6980\r\n"
      "Cookie: other=1; zeb=abc\r\nContent-Length: 13\r\n\r\n{\"title\":\"x\"}";
  for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
    const Read read = ReadRequest(bytes, piece);
    ASSERT_EQ(read.state, State::kDone) << piece;
    EXPECT_EQ(read.request.method, "POST");
    EXPECT_EQ(read.request.path,
              (std::vector<std::string>{"api", "v1", "services", "3", "items", "current"}));
    EXPECT_EQ(read.request.Query("a"), "b c d");
    EXPECT_TRUE(read.request.HasQuery("full"));
    EXPECT_EQ(read.request.Header("host"), "localhost:6980");
    EXPECT_EQ(read.request.Cookie("zeb"), "abc");
    EXPECT_EQ(read.request.Cookie("ze"), "");
    EXPECT_EQ(read.request.body, "{\"title\":\"x\"}");
    EXPECT_TRUE(read.request.keepAlive);
  }
}

TEST(HttpWireTest, WhatFollowsARequestIsLeftForTheNext) {
  const Read read = ReadRequest("GET / HTTP/1.1\r\nHost: a\r\n\r\nGET /b HTTP/1.1\r\n", 1000);
  EXPECT_EQ(read.state, State::kDone);
  EXPECT_EQ(read.rest, "GET /b HTTP/1.1\r\n");
}

// A last chunk that goes wrong behind its size would end the program.
TEST(HttpWireTest, ChunksAreRefusedBehindTheHeader) {
  const std::string bytes = "POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n@";
  for (const std::size_t piece : {1u, 4u, 1000u}) {
    const Read read = ReadRequest(bytes, piece);
    EXPECT_EQ(read.state, State::kFailed) << piece;
    EXPECT_EQ(read.refused, 411) << piece;
  }
}

TEST(HttpWireTest, WhatIsWrongIsRefusedWithItsStatus) {
  const std::string host = "Host: a\r\n";
  const struct {
    const char* what;
    std::string bytes;
    int status;
  } table[] = {
      {"no HTTP", "hello\r\n\r\n", 400},
      {"TLS", std::string("\x16\x03\x01\x02\x00\x01", 6) + std::string(300, '\1') + "\r\n\r\n", 400},
      {"version", "GET / HTTP/3.0\r\n" + host + "\r\n", 505},
      {"no host", "GET / HTTP/1.1\r\n\r\n", 400},
      {"two hosts", "GET / HTTP/1.1\r\n" + host + host + "\r\n", 400},
      {"absolute", "GET http://a/ HTTP/1.1\r\n" + host + "\r\n", 400},
      {"two lengths", "POST / HTTP/1.1\r\n" + host + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nab", 400},
      {"length and chunks",
       "POST / HTTP/1.1\r\n" + host + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
       400},
      {"negative length", "POST / HTTP/1.1\r\n" + host + "Content-Length: -1\r\n\r\n", 400},
      {"body announced", "POST / HTTP/1.1\r\n" + host + "Content-Length: 65537\r\n\r\n", 413},
      {"body and header",
       "POST / HTTP/1.1\r\n" + host + "Content-Length: 65536\r\n\r\n" + std::string(65536, 'x'), 413},
      {"chunk extensions",
       "POST / HTTP/1.1\r\n" + host + "Transfer-Encoding: chunked\r\n\r\n1;" + std::string(70000, 'x'), 411},
      {"header of 1 MiB", "GET / HTTP/1.1\r\n" + host + "X: " + std::string(1 << 20, 'x'), 431},
      {"101 fields",
       [&] {
         std::string text = "GET / HTTP/1.1\r\n" + host;
         for (int i = 0; i < 100; ++i) text += "X: y\r\n";
         return text + "\r\n";
       }(),
       431},
      {"long target", "GET /" + std::string(8192, 'x') + " HTTP/1.1\r\n" + host + "\r\n", 414},
      {"endless target", "GET /" + std::string(20000, 'x'), 414},
      {"traversal", "GET /../etc/passwd HTTP/1.1\r\n" + host + "\r\n", 400},
      {"traversal in escapes", "GET /%2e%2E/x HTTP/1.1\r\n" + host + "\r\n", 400},
      {"NUL", "GET /a%00b HTTP/1.1\r\n" + host + "\r\n", 400},
      {"half an escape", "GET /a%4 HTTP/1.1\r\n" + host + "\r\n", 400},
      {"no escape", "GET /a%zz HTTP/1.1\r\n" + host + "\r\n", 400},
      {"not UTF-8", "GET /a%C3%28 HTTP/1.1\r\n" + host + "\r\n", 400},
      {"overlong", "GET /%C0%AE%C0%AE/ HTTP/1.1\r\n" + host + "\r\n", 400},
  };
  for (const auto& row : table)
    for (const std::size_t piece : {std::size_t{997}, std::size_t{65536}, row.bytes.size()}) {
      const Read read = ReadRequest(row.bytes, piece);
      EXPECT_EQ(read.refused, row.status) << row.what << " in pieces of " << piece;
    }
}

TEST(HttpWireTest, ARequestOfExactlyTheLimitIsTaken) {
  const std::string head = "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: ";
  const std::size_t body = kMostRequestBytes - head.size() - 5 - 4;
  const std::string bytes = head + std::to_string(body) + "\r\n\r\n" + std::string(body, 'x');
  ASSERT_EQ(bytes.size(), kMostRequestBytes);
  EXPECT_EQ(ReadRequest(bytes, 1000).state, State::kDone);
  const std::string target = "GET /" + std::string(8191, 'x') + " HTTP/1.1\r\nHost: a\r\n\r\n";
  EXPECT_EQ(ReadRequest(target, 100).state, State::kDone);
}

TEST(HttpWireTest, ASlashInAnEscapeStaysInItsPart) {
  const Read read = ReadRequest("GET /a%2Fb/ HTTP/1.0\r\n\r\n", 1000);
  ASSERT_EQ(read.state, State::kDone);
  EXPECT_EQ(read.request.path, (std::vector<std::string>{"a/b", ""}));
  EXPECT_FALSE(read.request.keepAlive);
}

TEST(HttpWireTest, AnAnswerIsReadAsItWasWritten) {
  HttpAnswer answer = ErrorAnswer(404, "no \"such\"\nthing");
  answer.headers = {{"X-One", "1"}, {"X-Bad", "1\r\nSet-Cookie: evil=1"}, {"Cache-Control", "max-age=9"}};
  const std::string bytes = WriteHttpAnswer(answer, true, AnswerBody::kSent);
  HttpAnswerReader reader;
  for (const char c : bytes) ASSERT_TRUE(reader.Take({&c, 1}));
  ASSERT_TRUE(reader.Done());
  EXPECT_EQ(reader.Status(), 404);
  EXPECT_EQ(reader.TakeBody(), "{\"error\":\"no \\\"such\\\"\\u000athing\"}\n");
  EXPECT_EQ(reader.Header("x-one"), "1");
  EXPECT_EQ(reader.Header("Cache-Control"), "max-age=9");
  EXPECT_EQ(reader.Header("X-Frame-Options"), "DENY");
  EXPECT_NE(reader.Header("Content-Security-Policy").find("default-src 'none'"), std::string::npos);
  EXPECT_EQ(bytes.find("evil"), std::string::npos);

  const std::string head = WriteHttpAnswer(answer, true, AnswerBody::kLeftOut);
  EXPECT_NE(head.find("Content-Length: " + std::to_string(answer.body.size())), std::string::npos);
  EXPECT_TRUE(head.ends_with("\r\n\r\n"));
}

TEST(HttpWireTest, AStreamIsTakenAsItComesAndAPartOfAnAnswerIsTold) {
  HttpAnswerReader stream(std::nullopt);
  ASSERT_TRUE(stream.Take(WriteHttpAnswer({200, "text/event-stream", "", {}}, true, AnswerBody::kEndless)));
  ASSERT_TRUE(stream.Take("data: 1\n\n"));
  EXPECT_EQ(stream.TakeBody(), "data: 1\n\n");
  ASSERT_TRUE(stream.Take("data: 2\n\n"));
  EXPECT_EQ(stream.TakeBody(), "data: 2\n\n");
  EXPECT_FALSE(stream.Done());
  EXPECT_TRUE(stream.TakeEnd());
  EXPECT_TRUE(stream.Done());
  HttpAnswerReader cut;
  ASSERT_TRUE(cut.Take("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nab"));
  EXPECT_FALSE(cut.TakeEnd());
  EXPECT_FALSE(HttpAnswerReader().TakeEnd());
  EXPECT_FALSE(HttpAnswerReader(3).Take("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nabcde"));
}

TEST(HttpWireTest, AClientsRequestIsReadByTheServer) {
  const Read read = ReadRequest(WriteHttpRequest("POST", "/api?x=1", "{}"), 10);
  ASSERT_EQ(read.state, State::kDone);
  EXPECT_EQ(read.request.body, "{}");
  EXPECT_EQ(read.request.Header("content-type"), "application/json");
}

}  // namespace
}  // namespace zeb
