// Web servers' answers, in whatever pieces they come.
#include <gtest/gtest.h>

#include "outputs/http/HttpAnswer.h"

namespace zeb {
namespace {

struct AnswerCase {
  std::string bytes;
  bool closes;  // the server closes afterwards
  int status;
  std::string body, problem;
};

constexpr std::size_t kMost = 100;

TEST(HttpAnswer, IsTheSameInWhateverPiecesItComes) {
  const std::string longBody(101, 'x');
  const AnswerCase cases[] = {
      {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nHello", false, 200, "Hello", ""},
      {"HTTP/1.1 200 OK\r\ncontent-LENGTH:  5 \r\n\r\nHello, and more", false, 200, "Hello", ""},
      {"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", false, 200, "", ""},
      {"HTTP/1.1 204 No Content\r\n\r\n", false, 204, "", ""},
      {"HTTP/1.0 200 OK\r\n\r\nuntil the end", true, 200, "until the end", ""},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: Chunked\r\n\r\n3\r\nabc\r\nA;x=1\r\n0123456789\r\n0\r\n\r\n",
       false, 200, "abc0123456789", ""},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nab", true, 200, "",
       "closed the connection in the middle of its answer"},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nffffffffffffffffff\r\n", false, 200, "",
       "announces a part of 'ffffffffffffffffff' bytes"},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nffffffff\r\n", false, 200, "",
       "sends more than 100 bytes"},
      {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nHell", true, 200, "Hell",
       "closed the connection in the middle of its answer"},
      {"HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", false, 200, "", "announces an answer of '-1' bytes"},
      {"HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\n", false, 200, "",
       "announces an answer of '99999999999999999999' bytes"},
      {"HTTP/1.1 200 OK\r\n\r\n" + longBody, true, 200, longBody, "sends more than 100 bytes"},
      {"HTTP/1.1 200 OK\r\nContent-Len", true, 200, "", "did not answer in HTTP"},
      {"", true, 0, "", "closed the connection without an answer"},
      {"220 ftp ready\r\n\r\n", false, 0, "", "did not answer in HTTP, but with '220 ftp ready'"},
  };
  for (const AnswerCase& one : cases)
    for (std::size_t piece = 1; piece <= one.bytes.size() + 1; ++piece) {
      HttpAnswer answer(kMost);
      for (std::size_t at = 0; at < one.bytes.size(); at += piece)
        answer.Take(std::string_view(one.bytes).substr(at, piece));
      if (one.closes) answer.TakeEnd();
      EXPECT_TRUE(answer.Ended()) << one.bytes;
      EXPECT_EQ(answer.Problem(), one.problem) << one.bytes << " by " << piece;
      EXPECT_EQ(answer.Status(), one.status);
      if (one.problem.empty()) {
        EXPECT_EQ(answer.Body(), one.body) << one.bytes << " by " << piece;
      }
    }
}

TEST(HttpAnswer, KeepsNoMoreThanItsBound) {
  HttpAnswer endless(kMost);
  const std::string block(60000, 'x');
  endless.Take("HTTP/1.1 200 OK\r\nX: ");
  for (int i = 0; i < 100; ++i) endless.Take(block);
  EXPECT_EQ(endless.Problem(), "sends more than 64 KiB of headers");
  HttpAnswer chunks(kMost);
  chunks.Take("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
  for (int i = 0; i < 1000 && !chunks.Ended(); ++i) chunks.Take("1\r\nx\r\n");
  EXPECT_EQ(chunks.Problem(), "sends more than 100 bytes");
}

}  // namespace
}  // namespace zeb
