#include <gtest/gtest.h>

#include "text/Sha256.h"

namespace zeb {
namespace {

// As sha256sum prints it, a byte of the value 0 included.
TEST(Sha256Test, GivesTheDigestsOfTheStandard) {
  EXPECT_EQ(Sha256Text(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(Sha256Text("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(Sha256(std::string("a\0b", 3)).size(), 32u);
  EXPECT_NE(Sha256Text(std::string("a\0b", 3)), Sha256Text("a"));
}

}  // namespace
}  // namespace zeb
