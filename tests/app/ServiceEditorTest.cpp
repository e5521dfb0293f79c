#include <gtest/gtest.h>

#include "app/ServiceEditor.h"
#include "outputs/OutputTable.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// Tells what is done with it, by the text that it is set to.
class NamedOutput : public clsZEBTemplate {
 public:
  NamedOutput(Environment& environment, Lines& lines) : clsZEBTemplate(environment), lines_(lines) {
    SetStatus(kStatusOK);
  }
  bool StartOutput(std::shared_ptr<Control>) override { return Write("start"); }
  bool StopOutput() override { return Write("stop"); }
  bool UpdateOutput(const SnapshotPtr& snapshot) override {
    if (text == "hangs") environment_.loop.Wait(1h);
    return Write("'" + snapshot->currentItem->ItemName + "'");
  }
  void GetOutputInformation(int number, int index) override {
    const std::string key = environment_.ServiceKey(number) + "\\File";
    text = environment_.hive.ReadText(key, "Text" + std::to_string(index), "new");
  }
  void StoreOutputInformation(int number, int index) override {
    environment_.hive.WriteText(environment_.ServiceKey(number) + "\\File", "Text" + std::to_string(index),
                                text);
  }
  std::string SettingsText() const override { return text; }

  std::string text;

 private:
  bool Write(const std::string& what) {
    lines_.push_back(text + " " + what);
    return true;
  }
  Lines& lines_;
};

class ServiceEditorTest : public testing::Test {
 protected:
  ServiceEditorTest() {
    ports.hive.WriteNumber(ports.environment.settingsRoot, "NumberServices", 1);
    ports.hive.WriteText(Key(), "ServiceName", "Demo FM");
    ports.hive.WriteNumber(Key(), "TolvanTCPControlPort", 1);
  }
  ~ServiceEditorTest() override {
    ports.hive.failure.clear();
    window->Close();
    EXPECT_TRUE(ports.loop.RunUntil([this] { return window->Closed(); }, 1min));
  }
  std::string Key() const { return ports.environment.ServiceKey(1); }
  void StoreTexts(const Lines& texts) {
    ports.hive.WriteText(Key() + "\\File", "NumberOutputs", std::to_string(texts.size()));
    for (std::size_t i = 0; i < texts.size(); ++i)
      ports.hive.WriteText(Key() + "\\File", "Text" + std::to_string(i + 1), texts[i]);
  }
  // What the values of the store are, of those whose names begin so.
  Lines Stored(const std::string& start) {
    Lines values;
    for (const SettingsValue& value : ports.hive.Values(Key() + "\\File"))
      if (value.name.starts_with(start))
        values.push_back(value.name + "=" + ports.hive.ReadText(Key() + "\\File", value.name, ""));
    return values;
  }
  void Open(OutputFactory factory) {
    window = frmService::Create(ports.environment, std::move(factory));
    window->Open(1);
    window->SetZEBInformation("SET_CURRENT_ITEM ITitle=a");
    ports.loop.RunFor(2s);
    lines.clear();
    ports.person.notes.clear();
  }
  void Open() {
    Open([this](OutputType type) -> OutputPtr {
      if (type != OutputType::kFile) return nullptr;
      return std::make_shared<NamedOutput>(ports.environment, lines);
    });
  }
  OutputPtr File(int index) const { return window->service().Output(OutputType::kFile, index); }
  static NamedOutput& Named(const OutputPtr& output) { return dynamic_cast<NamedOutput&>(*output); }
  Lines Done() {
    ports.loop.RunPosted();
    return std::exchange(lines, {});
  }
  Lines Notes() { return std::exchange(ports.person.notes, {}); }

  TestEnvironment ports;
  Lines lines;
  std::shared_ptr<frmService> window;
};

TEST_F(ServiceEditorTest, OnlyTheOutputThatWasChangedIsRestarted) {
  StoreTexts({"one", "two", "three"});
  ports.hive.WriteText(Key() + "\\File", "Odd2", "of the old one");
  Open();
  ServiceEditor editor(window);
  const OutputPtr first = File(1), second = File(2), third = File(3);
  const OutputPtr draft = editor.DraftOf(second);
  EXPECT_EQ(Named(draft).text, "two");
  EXPECT_EQ(Done(), Lines{}) << "a draft publishes nothing";
  Named(draft).text = "TWO";
  draft->DelaySeconds = 4;
  ASSERT_TRUE(editor.ReplaceOutput(second, *draft));
  EXPECT_EQ(Done(), (Lines{"two stop", "TWO start", "TWO 'a'"})) << "and it shows what is on";
  EXPECT_EQ(File(1), first);
  EXPECT_EQ(File(3), third);
  EXPECT_EQ(File(2)->DelaySeconds, 4);
  EXPECT_EQ(Stored("Text"), (Lines{"Text1=one", "Text2=TWO", "Text3=three"}));
  EXPECT_EQ(Stored("Odd"), Lines{});
  EXPECT_EQ(Notes(), Lines{"Demo FM: output File2 changed"});
  EXPECT_TRUE(editor.ReplaceOutput(File(2), *editor.DraftOf(File(2))));
  EXPECT_EQ(Done(), Lines{}) << "as before, so it goes on";
  const Outcome late = editor.ReplaceOutput(second, *draft);
  EXPECT_EQ(late.Reason(), "the output has been changed or removed meanwhile; look at it again");
}

TEST_F(ServiceEditorTest, OutputsComeAndGoWhileTheOthersRun) {
  StoreTexts({"one", "two"});
  ports.hive.WriteText(Key() + "\\File", "Text3", "left over");
  Open();
  ServiceEditor editor(window);
  EXPECT_EQ(editor.NewDraft(OutputType::kWeb), nullptr);
  const OutputPtr draft = editor.NewDraft(OutputType::kFile), second = File(2);
  EXPECT_EQ(Named(draft).text, "new");
  const Result<OutputName> added = editor.AddOutput(OutputType::kFile, *draft);
  ASSERT_TRUE(added);
  EXPECT_EQ(added.Value().Text(), "File3");
  EXPECT_EQ(Done(), (Lines{"new start", "new 'a'"})) << "and it shows what is on";
  ASSERT_TRUE(editor.RemoveOutput(File(1)));
  EXPECT_EQ(Done(), Lines{"one stop"});
  EXPECT_EQ(File(1), second);
  EXPECT_EQ(Stored("Text"), (Lines{"Text1=two", "Text2=new"}));
  EXPECT_EQ(Stored("NumberOutputs"), Lines{"NumberOutputs=2"});
  EXPECT_EQ(Notes(), (Lines{"Demo FM: output File3 added", "Demo FM: output File1 removed"}));
}

TEST_F(ServiceEditorTest, SettingsOfTheServiceRestartNoOutput) {
  StoreTexts({"one"});
  Open();
  ServiceEditor editor(window);
  const ServiceSettings before = window->service().settings;
  ServiceSettings after = before;
  after.ServiceName = "Demo Two";
  after.TolvanTCPControlPort = 3;
  // Meanwhile, by somebody else: it is neither lost nor put back.
  ports.hive.WriteText(Key(), "NoPictureFileName", "theirs.jpg");
  window->service().settings.LastUpdateOnServerIndex = 7;
  ASSERT_TRUE(editor.ApplySettings(before, after));
  EXPECT_EQ(Done(), Lines{});
  const ServiceSettings& now = window->service().settings;
  EXPECT_EQ(now.ServiceName, "Demo Two");
  EXPECT_EQ(now.NoPictureFileName, "theirs.jpg");
  EXPECT_EQ(now.LastUpdateOnServerIndex, 7);
  EXPECT_EQ(window->Board().State().source.text, "port 6903");
  EXPECT_EQ(ports.hive.ReadText(Key(), "ServiceName", ""), "Demo Two");
  EXPECT_EQ(ports.hive.ReadText(Key(), "NoPictureFileName", ""), "theirs.jpg");
  EXPECT_EQ(ports.hive.ReadNumber(Key(), "LastUpdateOnServerIndex", 0), 7);

  ports.hive.WriteNumber(ports.environment.settingsRoot, "NumberServices", 2);
  ports.hive.WriteNumber(ports.environment.ServiceKey(2), "TolvanTCPControlPort", 4);
  ServiceSettings taken = now;
  taken.TolvanTCPControlPort = 4;
  EXPECT_EQ(editor.ApplySettings(now, taken).Reason(), "control port 4 is that of service 2 already");
  EXPECT_EQ(now.TolvanTCPControlPort, 3);

  ASSERT_TRUE(editor.SetUpdateInterval(OutputType::kFile, 10));
  EXPECT_EQ(Done(), Lines{});
  ports.loop.RunFor(12s);
  EXPECT_FALSE(Done().empty()) << "updated by the interval";
  EXPECT_FALSE(editor.SetUpdateInterval(OutputType::kFile, -1));
  EXPECT_FALSE(editor.SetUpdateInterval(OutputType::kFile, 86401));
  EXPECT_EQ(window->service().OutputUpdateInterval(3), 10);
}

TEST_F(ServiceEditorTest, AnOutputThatHangsHoldsUpNoChange) {
  StoreTexts({"hangs", "two"});
  Open();
  ServiceEditor editor(window);
  ASSERT_TRUE(window->service().OutputBusy(OutputType::kFile, 1));
  const OutputPtr draft = editor.DraftOf(File(1));
  Named(draft).text = "other";
  ASSERT_TRUE(editor.ReplaceOutput(File(1), *draft));
  EXPECT_EQ(Done(), (Lines{"hangs stop", "other start", "other 'a'"}));
  window->SetZEBInformation("SET_CURRENT_ITEM ITitle=b");
  ports.loop.RunFor(2s);
  EXPECT_EQ(Done(), (Lines{"other 'b'", "two 'b'"}));
  ports.loop.RunFor(2h);
  EXPECT_EQ(Done(), Lines{"hangs 'a'"}) << "what hung comes back, and does no harm";
}

TEST_F(ServiceEditorTest, WhatCannotBeStoredChangesNothing) {
  StoreTexts({"one"});
  Open();
  ServiceEditor editor(window);
  const OutputPtr running = File(1), draft = editor.DraftOf(running);
  Named(draft).text = "other";
  ServiceSettings after = window->service().settings;
  after.ServiceName = std::string(kMaxSettingsTextBytes + 1, 'x');  // above what a store holds
  EXPECT_FALSE(editor.ApplySettings(window->service().settings, after));
  ports.hive.failure = "the disk is full";
  EXPECT_EQ(editor.ReplaceOutput(running, *draft).Reason(), "the disk is full");
  EXPECT_EQ(editor.RemoveOutput(running).Reason(), "the disk is full");
  EXPECT_FALSE(editor.AddOutput(OutputType::kFile, *draft));
  EXPECT_FALSE(editor.SetUpdateInterval(OutputType::kFile, 5));
  ports.hive.failure.clear();
  EXPECT_EQ(Done(), Lines{});
  EXPECT_EQ(File(1), running);
  EXPECT_EQ(window->service().settings.ServiceName, "Demo FM");
  EXPECT_EQ(Stored("Text"), Lines{"Text1=one"});
  EXPECT_EQ(Notes(), Lines{});

  // The service has gone from the store, and with it its number.
  ports.hive.WriteNumber(ports.environment.settingsRoot, "NumberServices", 0);
  EXPECT_EQ(editor.RemoveOutput(running).Reason(), "there is no service 1: there are none");
  EXPECT_EQ(Stored("Text"), Lines{"Text1=one"});
  window->Close();
  EXPECT_EQ(editor.RemoveOutput(running).Reason(), "the service is being closed");
}

// Saving writes the service anew: nothing stays of outputs that are gone, and what is not of this program
// does.
TEST_F(ServiceEditorTest, TheServiceIsWrittenWhole) {
  StoreTexts({"one"});
  ports.hive.WriteText(Key() + "\\File", "Text9", "of one that is gone");
  ports.hive.WriteText(Key() + "\\Web", "FTPServerName1", "of a type that is not built");
  Open();
  ASSERT_TRUE(ServiceEditor(window).ApplySettings({}, {}));
  EXPECT_EQ(Stored("Text"), Lines{"Text1=one"});
  EXPECT_TRUE(ports.hive.HasValue(Key() + "\\Web", "FTPServerName1"));
  EXPECT_TRUE(ports.hive.HasValue(Key(), "NumberUpdatesOnServer"));
}

TEST_F(ServiceEditorTest, EveryTypeKeepsWhatItsDraftSays) {
  for (const OutputType type : kOutputTypesOffered)
    ports.hive.WriteText(
        Key() + "\\" + std::string(FindOutputType(static_cast<std::int32_t>(type))->settingsKey),
        "NumberOutputs", "1");
  Open(MakeOutputFactory(ports.environment));
  ServiceEditor editor(window);
  for (const OutputType type : kOutputTypesOffered) {
    SCOPED_TRACE(NameOf(type));
    const OutputPtr running = window->service().Output(type, 1), draft = editor.NewDraft(type);
    EXPECT_EQ(draft->SettingsText(), running->SettingsText()) << "both are set to the defaults";
    draft->DelaySeconds = 5;
    const auto added = editor.AddOutput(type, *draft);
    ASSERT_TRUE(added);
    EXPECT_EQ(added.Value().number, 2);
    EXPECT_EQ(window->service().Output(type, 1), running);
    const OutputPtr second = window->service().Output(type, 2);
    EXPECT_EQ(second->SettingsText(), draft->SettingsText());
    EXPECT_TRUE(editor.RemoveOutput(running));
    EXPECT_EQ(window->service().Output(type, 1), second);
    EXPECT_EQ(window->service().OutputCount(static_cast<std::int32_t>(type)), 1);
  }
}

}  // namespace
}  // namespace zeb
