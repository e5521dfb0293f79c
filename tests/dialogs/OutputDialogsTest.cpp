#include <gtest/gtest.h>

#include "dialogs/DABOutputDialog.h"
#include "dialogs/EscapeValuesField.h"
#include "dialogs/HTTPOutputDialog.h"
#include "dialogs/SerialOutputDialog.h"
#include "dialogs/WebOutputDialog.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

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

TEST(SerialOutputDialogTest, ChecksPortAndSettings) {
  for (const char* port : {"1", "16"}) EXPECT_EQ(CheckSerialProperties(port, "9600,n,8,1"), "");
  for (const char* port : {"0", "17", "", "x"})
    EXPECT_EQ(CheckSerialProperties(port, "x"), "You must enter a Com Port number from 1 to 16");
  EXPECT_EQ(CheckSerialProperties("1", " "), "You must enter a set of Serial Settings such as '9600,n,8,1'");
}

TEST(DABOutputDialogTest, ChecksFormatAndLength) {
  EXPECT_EQ(CheckDABProperties("a\nb", ""),
            "The Eureka 147 DAB protocol that ZEB uses does not allow Carriage Returns inside DLS messages");
  for (const char* most : {"", "128"}) EXPECT_EQ(CheckDABProperties("a", most), "");
  for (const char* most : {"129", "-1"})
    EXPECT_EQ(CheckDABProperties("a", most), "The maximum number of characters must be from 1 to 128");
}

TEST(EscapeValuesFieldTest, OffersEveryWordAndRefusesOthers) {
  for (const EscapeText& one : kEscapeTexts) EXPECT_EQ(CheckEscapeValues(one.word), "");
  EXPECT_EQ(kEscapeTexts[0].word, "");
  EXPECT_NE(CheckEscapeValues("yaml"), "");
  EXPECT_EQ(std::size(kEscapeTexts), std::size(kEscapeWords) + 1);
}

TEST(HTTPOutputDialogTest, WantsARequestType) {
  EXPECT_EQ(CheckHTTPProperties(kGetRequest), "");
  EXPECT_EQ(CheckHTTPProperties(std::nullopt), "You musy choose a Request Type");
}

}  // namespace
}  // namespace zeb
