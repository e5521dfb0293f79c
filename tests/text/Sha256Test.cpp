#include <gtest/gtest.h>

#include "text/Sha256.h"

namespace zeb {
namespace {

// The vectors that the standard gives, and the lengths around the end of a block.
TEST(Sha256Test, GivesTheDigestsOfTheStandard) {
  struct Case {
    std::string bytes, digest;
  };
  const Case cases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(56, 'a'), "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a"},
      {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
      {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const Case& c : cases) EXPECT_EQ(Sha256Text(c.bytes), c.digest) << c.bytes.size();
  EXPECT_EQ(Sha256("abc").size(), kSha256Bytes);
  EXPECT_EQ(Sha256("abc")[0], '\xba');
}

TEST(Sha256Test, BothWaysGiveTheSame) {
  std::string bytes;
  for (int length = 0; length < 400; ++length) {
    EXPECT_EQ(Sha256(bytes), Sha256(bytes, Sha256Way::kPlain)) << length;
    bytes += static_cast<char>(length * 37 + length / 7);
  }
}

}  // namespace
}  // namespace zeb
