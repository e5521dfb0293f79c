// What any FtpSession must do, checked against both the simulated server and a real one. A suite supplies
// `sessions`, `target` and `folder`, an empty folder on the server ("/w/").
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "platform/FtpSession.h"

namespace zeb {

// What is uploaded, from memory. It must outlive the upload.
inline FtpSource SourceOf(std::string_view bytes) {
  FtpSource source{bytes.size(), nullptr};
  source.read = [bytes](char* to, std::size_t most) mutable -> std::optional<std::size_t> {
    const std::size_t got = bytes.copy(to, most);
    bytes.remove_prefix(got);
    return got;
  };
  return source;
}

template <class Fixture>
struct FtpContract : Fixture {
  FtpContract() : session(this->sessions.Make()) {
    EXPECT_TRUE(session->Open());
    const Outcome connected = session->Connect(this->target);
    EXPECT_TRUE(connected) << connected.Reason();
  }
  std::string In(const std::string& name) { return this->folder + name; }
  void Put(const std::string& name, std::string_view bytes) {
    const Outcome sent = session->Upload(In(name), SourceOf(bytes));
    ASSERT_TRUE(sent) << sent.Reason();
  }
  std::string Contents(const std::string& name) {
    Result<std::string> bytes = session->Download(In(name), 1 << 20);
    return bytes ? bytes.Value() : "<" + bytes.Reason() + ">";
  }
  bool Exists(const std::string& name) {
    const Result<bool> exists = session->Exists(In(name));
    EXPECT_TRUE(exists) << exists.Reason();
    return exists && exists.Value();
  }
  // Refused in the server's own words, which are those of this step; the connection stays.
  void Refused(const Outcome& answer, const std::string& code) {
    EXPECT_FALSE(answer);
    EXPECT_EQ(session->LastResponse().rfind(code, 0), 0u) << session->LastResponse();
    EXPECT_NE(answer.Reason().find(code), std::string::npos) << answer.Reason();
    EXPECT_TRUE(session->Connected());
  }

  std::unique_ptr<FtpSession> session;
};

TYPED_TEST_SUITE_P(FtpContract);

TYPED_TEST_P(FtpContract, SendsReplacesAndFetchesFiles) {
  EXPECT_FALSE(this->Exists("a"));
  this->Put("a", std::string(70'000, 'x'));
  EXPECT_EQ(this->Contents("a").size(), 70'000u);
  this->Put("a", "short");
  EXPECT_EQ(this->Contents("a"), "short");
  this->Put("with blank & 100%;type=a", "odd");
  EXPECT_TRUE(this->Exists("with blank & 100%;type=a"));
  EXPECT_EQ(this->Contents("with blank & 100%;type=a"), "odd");
  this->Put("empty", "");
  EXPECT_TRUE(this->Exists("empty"));
  EXPECT_FALSE(this->session->Download(this->In("a"), 4));
}

TYPED_TEST_P(FtpContract, RenamesAndDeletes) {
  this->Put("a", "1");
  EXPECT_TRUE(this->session->Rename(this->In("a"), this->In("b")));
  EXPECT_FALSE(this->Exists("a"));
  EXPECT_EQ(this->Contents("b"), "1");
  // Whether it replaces is the server's affair; either way nothing is lost.
  this->Put("c", "2");
  const bool replaced = this->session->Rename(this->In("b"), this->In("c")).Ok();
  EXPECT_EQ(this->Contents("c"), replaced ? "1" : "2");
  EXPECT_EQ(this->Exists("b"), !replaced);
  EXPECT_TRUE(this->session->Delete(this->In("c")));
  EXPECT_FALSE(this->Exists("c"));
}

TYPED_TEST_P(FtpContract, ARefusalLeavesTheConnection) {
  this->Put("a", "1");
  this->Refused(this->session->Delete(this->In("none")), "550");
  this->Refused(this->session->Rename(this->In("none"), this->In("b")), "550");
  EXPECT_FALSE(this->session->Upload(this->In("none/a"), SourceOf("x")));
  EXPECT_TRUE(this->session->Connected());
  EXPECT_EQ(this->session->LastResponse().rfind("553", 0), 0u) << this->session->LastResponse();
  EXPECT_FALSE(this->session->Download(this->In("none"), 9));
  EXPECT_TRUE(this->session->Connected());
  EXPECT_TRUE(this->session->Probe());
  EXPECT_EQ(this->session->LastResponse().find("55"), std::string::npos) << "of an earlier step";
  EXPECT_EQ(this->Contents("a"), "1");
}

TYPED_TEST_P(FtpContract, NamesThatNoServerFileHasAreRefusedHere) {
  for (const std::string name : {"", "/a\r\nDELE /b", "/a\n"}) {
    EXPECT_FALSE(this->session->Upload(name, SourceOf("x")));
    EXPECT_FALSE(this->session->Exists(name));
    EXPECT_FALSE(this->session->Rename(this->In("a"), name));
    EXPECT_FALSE(this->session->Delete(name));
    EXPECT_EQ(this->session->LastResponse(), "");
  }
  EXPECT_TRUE(this->session->Connected());
}

TYPED_TEST_P(FtpContract, AnUploadThatIsEndedLeavesTheConnection) {
  FtpSource source{100'000, nullptr};
  int blocks = 0;
  source.read = [&](char* to, std::size_t most) -> std::optional<std::size_t> {
    EXPECT_LE(most, kFtpBlockBytes);
    std::fill_n(to, most, 'x');
    return ++blocks < 20 ? std::optional(most) : std::nullopt;
  };
  EXPECT_FALSE(this->session->Upload(this->In("part"), source));
  EXPECT_EQ(blocks, 20);
  EXPECT_TRUE(this->session->Connected());
  EXPECT_TRUE(this->session->Delete(this->In("part")));
  EXPECT_FALSE(this->Exists("part"));
}

TYPED_TEST_P(FtpContract, NothingWorksWithoutAConnection) {
  this->session->Close();
  EXPECT_FALSE(this->session->Connected());
  EXPECT_FALSE(this->session->Probe());
  EXPECT_FALSE(this->session->Exists(this->In("a")));
  EXPECT_FALSE(this->session->Upload(this->In("a"), SourceOf("x")));
  EXPECT_FALSE(this->session->Delete(this->In("a")));
  EXPECT_TRUE(this->session->Connect(this->target));
  EXPECT_FALSE(this->Exists("a"));
}

REGISTER_TYPED_TEST_SUITE_P(FtpContract, SendsReplacesAndFetchesFiles, RenamesAndDeletes,
                            ARefusalLeavesTheConnection, NamesThatNoServerFileHasAreRefusedHere,
                            AnUploadThatIsEndedLeavesTheConnection, NothingWorksWithoutAConnection);

}  // namespace zeb
