// Values with line ends and other control characters, put into every protocol: whatever an item, the
// presenter or a picture is called, the receiver gets one command, request or label, and of the control
// characters only those that the operator's template holds.
#include <algorithm>

#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/wire/WireCharacters.h"
#include "platform/simulated/SimulatedSerialPort.h"
#include "tests/outputs/NetworkFixture.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

// A second command of each protocol, behind every character that might end the first: ASCII's, Latin-1's and
// Unicode's control characters, and the letters that EBU Latin has in their places.
std::string Hostile(const std::string& command) {
  std::string text = "One";
  const auto add = [&](char32_t c) {
    AppendCharacter(text, c);
    text += command;
  };
  for (char32_t c = 0; c < 0x20; ++c) add(c);
  for (char32_t c = 0x7F; c < 0xA0; ++c) add(c);
  for (const char32_t c : std::u32string_view(U"\u2028\u2029ĹĘĮŲĂĖĎȘȚĊĠŻŃąęįųăėďșțċŇĚġĺż")) add(c);
  text += "L\xCC\x81" + command;  // a letter and its accent apart
  return text;
}

constexpr const char* kTemplate =
    "<ZEB_NOW_ITEMNAME>|<ZEB_NOW_NOTES>|<ZEB_NOW_PICTUREFILENAME>|<ZEB_NOW_PictureFileName>|"
    "<ZEB_NEXT_PICTUREFILENAME>|<ZEB_SPECIAL_PRESENTERFULLNAME>|<ZEB_SPECIAL_SHOWTITLE>|"
    "<ZEB_SPECIAL_SERVICENAME>|<ZEB_SPECIAL_NOPICTUREFILENAME>|[(<ZEB_NOW_NOTES>!=)<ZEB_NOW_NOTES>]";

class HostileValues : public NetworkOutputTest {
 protected:
  void Fill(const std::string& command) {
    const std::string hostile = Hostile(command);
    clsZEBItemInfo item;
    item.Edit().ItemName = item.Edit().Notes = hostile;
    item.AddPictureFile("/pictures/" + hostile);
    service.SetCurrentItem(item);
    service.PresenterFullName = service.ShowTitle = hostile;
    service.settings.ServiceName = service.settings.NoPictureFileName = hostile;
  }
  static std::size_t Controls(std::string_view bytes) {
    return static_cast<std::size_t>(std::count_if(bytes.begin(), bytes.end(), [](char c) {
      return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    }));
  }
  static std::size_t Count(std::string_view text, std::string_view what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1))
      ++count;
    return count;
  }
};

TEST_F(HostileValues, AnRDSEncoderGetsOneCommandInEverySet) {
  Fill("TA=1");
  const auto port = std::make_shared<SimulatedSerialPort>(t.loop);
  const auto output = std::make_shared<clsZEBSerialOutput>(t.environment);
  EXPECT_TRUE(t.loop.RunTask([&] { output->StartOutput(port); }));
  for (const CharacterSet set : {CharacterSet::kUtf8, CharacterSet::kWindows1252, CharacterSet::kIso8859_1,
                                 CharacterSet::kRds, CharacterSet::kEbuLatin}) {
    output->settings.characterSet = set;
    output->settings.simpleText = std::string("RT=") + kTemplate + "\r\nPS=<ZEB_SIMPLETEXT>";
    output->settings.append = "{0D}{0A}";
    port->all.clear();
    Update(*output);
    ASSERT_GT(port->all.size(), 1000u);
    // The template's own line end, twice because the simple text is the template again without itself.
    EXPECT_EQ(Controls(port->all), 6u) << CharacterSetName(set);
    EXPECT_EQ(port->all.substr(port->all.size() - 2), "\r\n");

    output->settings.TravelActivateFormat = "TA=1 <ZEB_NOW_ITEMNAME>{0D}{0A}";
    port->all.clear();
    EXPECT_TRUE(t.loop.RunTask([&] { output->SetTravelFlagActivated(*service.TakeSnapshot()); }));
    EXPECT_EQ(Controls(port->all), 2u) << CharacterSetName(set);
    // What stands in the place of control characters reads like them for nobody.
    const bool c1 = set == CharacterSet::kIso8859_1 || set == CharacterSet::kWindows1252;
    EXPECT_TRUE(!c1 || port->all.find('\x85') == std::string::npos);
  }
}

TEST(HostileCharacters, NothingButAControlCharacterIsSentAsOne) {
  for (const CharacterSet set :
       {CharacterSet::kWindows1252, CharacterSet::kIso8859_1, CharacterSet::kRds, CharacterSet::kEbuLatin})
    for (char32_t c = 0x20; c < 0x3000; ++c) {
      std::string one;
      AppendCharacter(one, c);
      for (const char byte : EncodeForWire(one, set))
        EXPECT_TRUE(static_cast<unsigned char>(byte) >= 0x20 || (c == 0xAD && byte == 0x1F))
            << CharacterSetName(set) << ' ' << static_cast<std::uint32_t>(c);
    }
  EXPECT_EQ(EncodeForWire("Ĺuk\r\nŻółw", CharacterSet::kEbuLatin), "Luk\r\nZ\x86$w");
  EXPECT_EQ(EncodeForWire("ĘĮŲĂĖĎȘȚĊĠĹŻŃąęįųăėďșțċŇĚġĺż", CharacterSet::kEbuLatin),
            "EIUAEDSTCGLZNaeiuaedstcNEglz");
}

TEST_F(HostileValues, AWebServerGetsOneRequestWithTheHeadersThatAreOurs) {
  Fill("X-Evil: 1\r\nHost: evil\r\n\r\nGET /evil HTTP/1.1");
  clsZEBHTTPOutput output(t.environment);
  output.StartOutput(t.network.MakeClient());
  ScriptedServer server(t, 80);
  output.settings.HTTPAuthenticate = true;
  output.settings.HTTPUsername = Hostile("X-Evil: 1");
  output.settings.HTTPPassword = Hostile("X-Evil: 1");
  output.settings.URL = "/now" + Hostile("\r\nX-Evil: 1");
  output.settings.SimpleTextFormat = std::string("?t=") + kTemplate;
  for (const std::int32_t type : {kGetRequest, kPostRequest})
    for (const CharacterSet set :
         {CharacterSet::kUtf8, CharacterSet::kWindows1252, CharacterSet::kEbuLatin}) {
      server.requests.clear();
      output.settings.RequestType = type;
      output.settings.characterSet = set;
      Update(output);
      ASSERT_EQ(server.requests.size(), 1u);
      const std::string& request = server.requests[0];
      const std::size_t end = request.find("\r\n\r\n");
      ASSERT_NE(end, std::string::npos);
      const std::string head = request.substr(0, end);
      // The request line, five fixed headers, Host, Authorization, and for a POST two about its body.
      const std::size_t lines = type == kPostRequest ? 10 : 8;
      EXPECT_EQ(Count(head, "\r\n"), lines - 1) << head;
      EXPECT_EQ(Controls(head), 2 * (lines - 1)) << head;
      EXPECT_EQ(Count(head, "\r\nX-Evil"), 0u);
      const std::string body = request.substr(end + 4);
      EXPECT_EQ(Controls(body), 0u);
      EXPECT_EQ(body.empty(), type == kGetRequest);
    }
}

TEST_F(HostileValues, ATitleIsNotASecondFieldOfARequest) {
  Play("A & pass=x&t=y\r\nt=z", "");
  clsZEBHTTPOutput output(t.environment);
  output.StartOutput(t.network.MakeClient());
  ScriptedServer server(t, 80);
  output.settings.RequestType = kPostRequest;
  output.settings.SimpleTextFormat = "t=<ZEB_NOW_ITEMNAME>\r\n&n=1";  // the template's own line end stays
  Update(output);
  ASSERT_EQ(server.requests.size(), 1u);
  EXPECT_EQ(server.requests[0].substr(server.requests[0].find("\r\n\r\n") + 4),
            "t=A+%26+pass%3Dx%26t%3Dy%0D%0At%3Dz\r\n&n=1");
}

TEST_F(HostileValues, AStreamingServerGetsOneRequest) {
  Fill("\r\nX-Evil: 1\r\n\r\nGET /admin.cgi?mode=kicksrc");
  clsZEBEncoderOutput output(t.environment);
  output.settings.EncoderType = kShoutcast;
  output.settings.SHOUTCastServerPassword = Hostile("\r\nX-Evil: 1");
  output.settings.SimpleTextFormat = std::string("####TEXT:") + kTemplate;
  output.StartOutput(t.network.MakeClient());
  ScriptedServer server(t, 8000);
  for (const char* mount : {"", "/live"})
    for (const CharacterSet set : {CharacterSet::kUtf8, CharacterSet::kIso8859_1, CharacterSet::kEbuLatin}) {
      output.settings.characterSet = set;
      output.settings.IcecastMount = mount;
      output.settings.IcecastCheckSeconds = 0;
      server.requests.clear();
      Update(output);
      ASSERT_EQ(server.requests.size(), 1u);
      const std::size_t lines = *mount ? 8 : 7;  // with the empty one at the end
      EXPECT_EQ(Controls(server.requests[0]), 2 * lines) << server.requests[0];
      EXPECT_EQ(Count(server.requests[0], "\r\nX-Evil"), 0u);
    }
}

TEST_F(HostileValues, AStreamingServersTitleKeepsItsWordsApart) {
  Play("One\r\nTwo", "");
  clsZEBEncoderOutput output(t.environment);
  output.settings.EncoderType = kShoutcast;
  output.settings.SimpleTextFormat = "####TEXT:<ZEB_NOW_ITEMNAME>";
  output.StartOutput(t.network.MakeClient());
  ScriptedServer server(t, 8000);
  Update(output);
  ASSERT_EQ(server.requests.size(), 1u);
  EXPECT_NE(server.requests[0].find("&song=One%20%20Two HTTP/1.1\r\n"), std::string::npos)
      << server.requests[0];
}

}  // namespace
}  // namespace zeb
