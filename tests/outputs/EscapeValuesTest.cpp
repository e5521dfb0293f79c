// EscapeValues of every type of output: stored beside its other values, off unless told otherwise, and what
// it does to a title that would break the text around it.
#include "outputs/OutputTable.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "platform/simulated/SimulatedSerialPort.h"
#include "tests/outputs/NetworkFixture.h"

namespace zeb {
namespace {

class EscapeValues : public NetworkOutputTest {
 protected:
  EscapeValues() { Play("A & B <\"x\">", "Zoë"); }
  std::string Key(const char* type) { return t.environment.ServiceKey(3) + type; }
  // What the journal says when the word is stored and read, and what is written back.
  std::string StoredWord(OutputType code, const char* type, const std::string& name,
                         const std::string& word) {
    const OutputPtr output = MakeOutputFactory(t.environment)(code);
    t.hive.WriteText(Key(type), name, word);
    t.person.notes.clear();
    output->GetOutputInformation(3, 1);
    t.hive.WriteText(Key(type), name, "lost");
    output->StoreOutputInformation(3, 1);
    return t.hive.ReadText(Key(type), name, "none");
  }
  std::string Page(const std::string& destination, const std::string& text, const std::string& word) {
    EXPECT_TRUE(t.files.CreateFolders("/w"));
    t.files.Put("/t", text);
    const auto output =
        std::dynamic_pointer_cast<clsZEBFileOutput>(MakeOutputFactory(t.environment)(OutputType::kFile));
    clsFileParameters pair;
    pair.SetSourceFileName("/t");
    pair.SetDestinationFileName(destination);
    pair.AddNoCache = false;
    pair.EscapeValues = word;
    output->AddUpdateFile(pair);
    Update(*output);
    EXPECT_EQ(output->ProblemText(), "");
    return t.files.Contents(destination);
  }
};

TEST_F(EscapeValues, EveryOutputKeepsItsWordAndNamesAWrongOne) {
  const auto check = [&](const std::string& where, const auto& stored) {
    for (const char* word : {"xml", "", "JSON"}) {
      EXPECT_EQ(stored(word), word) << where;
      EXPECT_TRUE(t.person.notes.empty()) << where;
    }
    EXPECT_EQ(stored("yaml"), "yaml") << where;  // what somebody wrote is not taken away
    EXPECT_EQ(t.person.notes,
              (std::vector<std::string>{where + ": EscapeValues: 'yaml' is none of html, xml, json, auto and "
                                                "off; values are put in as they are"}));
  };
  check("HTTP output 1", [&](const char* word) {
    return StoredWord(OutputType::kHTTP, "\\HTTPRequest", "EscapeValues1", word);
  });
  check("Serial output 1",
        [&](const char* word) { return StoredWord(OutputType::kSerial, "\\Serial", "EscapeValues1", word); });
  check("Encoder output 1", [&](const char* word) {
    return StoredWord(OutputType::kEncoder, "\\Encoder", "EscapeValues1", word);
  });
  check("DAB output 1",
        [&](const char* word) { return StoredWord(OutputType::kDAB, "\\DAB", "EscapeValues1", word); });
  for (const char* type : {"\\File", "\\Web"}) {
    t.hive.WriteText(Key(type), "Output1.NumberFiles", "1");
    t.hive.WriteText(Key(type), "Output1.DestinationFileName1", "/w/now.xml");
  }
  check("'/w/now.xml'", [&](const char* word) {
    return StoredWord(OutputType::kFile, "\\File", "Output1.EscapeValues1", word);
  });
  check("'/w/now.xml'", [&](const char* word) {
    return StoredWord(OutputType::kWeb, "\\Web", "Output1.EscapeValues1", word);
  });
}

TEST_F(EscapeValues, APairsPageStaysWhatItIs) {
  const std::string xml = "<?xml version=\"1.0\"?>\n<t a=\"<ZEB_NOW_ITEMNAME>\"/>";
  EXPECT_EQ(Page("/w/a.xml", xml, ""), "<?xml version=\"1.0\"?>\n<t a=\"A & B <\"x\">\"/>");
  const std::string right = "<?xml version=\"1.0\"?>\n<t a=\"A &amp; B &lt;&quot;x&quot;&gt;\"/>";
  EXPECT_EQ(Page("/w/a.xml", xml, "auto"), right);
  EXPECT_EQ(Page("/w/feed", xml, "auto"), right);
  EXPECT_EQ(Page("/w/feed", xml, "xml"), right);
  EXPECT_EQ(Page("/w/a.json", "{\"t\": \"<ZEB_NOW_ITEMNAME>\"}", "auto"),
            "{\"t\": \"A & B \\u003C\\\"x\\\">\"}");
  EXPECT_EQ(Page("/w/a.txt", "<ZEB_NOW_ITEMNAME>", "auto"), "A & B <\"x\">");
  EXPECT_EQ(Page("/w/a.txt", "<ZEB_NOW_ITEMNAME>", "html"), "A &amp; B &lt;&quot;x&quot;&gt;");
  EXPECT_EQ(Page("/w/a.txt", "<ZEB_NOW_ITEMNAME>", "yaml"), "A & B <\"x\">");
  // The simple text's values too, and pictures; what the operator writes stays.
  EXPECT_EQ(Page("/w/b.html", "<p>&copy; <ZEB_SIMPLETEXT> <ZEB_NOW_PICTUREFILENAME>", "auto"),
            "<p>&copy; A &amp; B &lt;&quot;x&quot;&gt; by Zoë... nopicture.jpg");
}

TEST_F(EscapeValues, AnHTTPRequestEscapesBeforeItEncodes) {
  ScriptedServer server(t, 80);
  clsZEBHTTPOutput output(t.environment);
  output.StartOutput(t.network.MakeClient());
  output.settings.SimpleTextFormat = "?t=<ZEB_NOW_ITEMNAME>";
  output.settings.EscapeValues = "html";
  Update(output);
  ASSERT_EQ(server.requests.size(), 1u);
  EXPECT_TRUE(
      server.requests[0].starts_with("GET ?t=A+%26amp%3B+B+%26lt%3B%26quot%3Bx%26quot%3B%26gt%3B HTTP"))
      << server.requests[0];
}

TEST_F(EscapeValues, AnEncodersAndASerialLinesValuesAreEscaped) {
  ScriptedServer server(t, 8000);
  clsZEBEncoderOutput encoder(t.environment);
  encoder.settings.EncoderType = kShoutcast;
  encoder.settings.SimpleTextFormat = "####TEXT:<ZEB_NOW_ITEMNAME>";
  encoder.settings.EscapeValues = "xml";
  encoder.settings.IcecastMount = "/live";
  encoder.settings.IcecastCheckSeconds = 0;
  encoder.StartOutput(t.network.MakeClient());
  Update(encoder);
  ASSERT_EQ(server.requests.size(), 1u);
  EXPECT_NE(server.requests[0].find("song=A%20%26amp%3B%20B"), std::string::npos) << server.requests[0];

  const auto port = std::make_shared<SimulatedSerialPort>(t.loop);
  const auto serial = std::make_shared<clsZEBSerialOutput>(t.environment);
  EXPECT_TRUE(t.loop.RunTask([&] { serial->StartOutput(port); }));
  serial->settings.EscapeValues = "auto";
  serial->settings.simpleText = "{\"t\":\"<ZEB_NOW_ITEMNAME>\"}";
  Update(*serial);
  EXPECT_EQ(port->all, "{\"t\":\"A & B \\u003C\\\"x\\\">\"}");
  port->all.clear();
  serial->settings.simpleText = "RT=<ZEB_NOW_ITEMNAME>";
  Update(*serial);
  EXPECT_EQ(port->all, "RT=A & B <\"x\">");
}

}  // namespace
}  // namespace zeb
