// The demo station's templates, published by the file output as a station would.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "outputs/OutputTable.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
    ++count;
  return count;
}

class ExampleTemplatesTest : public testing::Test {
 protected:
  ExampleTemplatesTest() {
    service.SetItemCount(50);
    service.settings.ServiceName = "Demo FM";
    EXPECT_TRUE(t.files.CreateFolders("/w"));
    const std::string examples = ZEB_SOURCE_DIR "/examples/templates/", templates = "/t/", pages = "/w/";
    for (const std::string name : {"nowplaying.html", "nowplaying.txt", "nowplaying.xml", "history.html"}) {
      std::ifstream file(examples + name, std::ios::binary);
      std::string bytes{std::istreambuf_iterator<char>(file), {}};
      EXPECT_FALSE(bytes.empty()) << name;
      t.files.Put(templates + name, bytes);
      clsFileParameters pair;
      pair.SetSourceFileName(templates + name);
      pair.SetDestinationFileName(pages + name);
      pair.RefreshTagSeconds = 15;
      pair.EscapeValues = "auto";
      output->AddUpdateFile(pair);
    }
  }
  std::string Publish(const std::string& name) {
    t.loop.RunTask([&] { output->UpdateOutput(service.TakeSnapshot()); });
    EXPECT_EQ(output->ProblemText(), "");
    std::string page = t.files.Contents("/w/" + name);
    EXPECT_EQ(page.find("ZEB_"), std::string::npos) << name;
    EXPECT_EQ(page.find('['), std::string::npos) << name;
    EXPECT_EQ(page.find("Unknown tag"), std::string::npos) << name;
    return page;
  }
  void Play(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    item.Edit().Artists = "Artist of " + title;
    item.Edit().ItemType = 7;
    service.SetCurrentItem(item);
  }

  TestEnvironment t;
  ServiceEvents events;
  OutputFactory makeOutput = MakeOutputFactory(t.environment);
  clsZEBService service{t.environment, makeOutput, events};
  std::shared_ptr<clsZEBFileOutput> output =
      std::dynamic_pointer_cast<clsZEBFileOutput>(makeOutput(OutputType::kFile));
};

TEST_F(ExampleTemplatesTest, HistoryShowsWhatWasPlayed) {
  EXPECT_EQ(Count(Publish("history.html"), "<li"), 1);  // "appears here"
  Play("One");
  Play("Two");
  Play("Three");
  std::string page = Publish("history.html");
  EXPECT_EQ(Count(page, "<li"), 3);
  EXPECT_EQ(page.find("appears here"), std::string::npos);
  EXPECT_LT(page.find("Three"), page.find("Two"));
  EXPECT_LT(page.find("Two"), page.find("One"));
  for (int i = 0; i < 20; ++i) Play("Later " + std::to_string(i));
  EXPECT_EQ(Count(Publish("history.html"), "<li"), 11);
}

TEST_F(ExampleTemplatesTest, PagesRefreshThemselves) {
  for (const char* name : {"nowplaying.html", "history.html"})
    EXPECT_EQ(Count(Publish(name), "CONTENT=\"15\""), 1) << name;
}

TEST_F(ExampleTemplatesTest, OptionalPartsVanish) {
  Play("Song");
  std::string page = Publish("nowplaying.html");
  EXPECT_EQ(Count(page, "<img"), 0);
  EXPECT_EQ(Count(page, "<svg"), 1);
  EXPECT_EQ(Count(page, "<ol"), Count(page, "</ol>"));
  EXPECT_EQ(Count(page, "<li"), 0);
  EXPECT_EQ(Count(Publish("nowplaying.xml"), "<item "), 1);
  EXPECT_EQ(Publish("nowplaying.txt"), "Demo FM\nNow: Song by Artist of Song\n\n\n");

  clsZEBItemInfo item;
  item.Edit().ItemName = "After";
  item.AddPictureFile("/p/cover.jpg");
  service.SetNextItem(1, item);
  service.SetComingSoonItem(item);
  service.SetCurrentItem(item);
  service.ShowTitle = "Breakfast";
  page = Publish("nowplaying.html");
  EXPECT_EQ(Count(page, "src=\"cover.jpg\""), 1);
  EXPECT_EQ(Count(page, "<svg"), 0);
  EXPECT_EQ(Count(page, "<li"), 1);
  EXPECT_EQ(Count(page, "<ol"), 1);
  std::string xml = Publish("nowplaying.xml");
  EXPECT_EQ(Count(xml, "<item "), 3);
  EXPECT_EQ(Count(xml, "<show>Breakfast</show>"), 1);
  EXPECT_EQ(Count(xml, "<picture>cover.jpg</picture>"), 1);
}

TEST_F(ExampleTemplatesTest, ATitleOfMarkupBreaksNoPage) {
  Play("</title><script>x</script> & \"more\"");
  const std::string right = "&lt;/title&gt;&lt;script&gt;x&lt;/script&gt; &amp; &quot;more&quot;";
  for (const char* name : {"nowplaying.html", "nowplaying.xml", "history.html"}) {
    const std::string page = Publish(name);
    EXPECT_NE(page.find(">" + right), std::string::npos) << name;
    EXPECT_EQ(page.find("<script>x"), std::string::npos) << name;
  }
  EXPECT_NE(Publish("nowplaying.txt").find("Now: </title><script>x</script> & \"more\""), std::string::npos);
}

}  // namespace
}  // namespace zeb
