#include "tests/desktop/DialogTest.h"

#include <QLineEdit>

#include "core/SettingsTree.h"

namespace zeb {

void DialogTest::SetUp() {
  Station("Demo FM", {{"TolvanTCPControlPort", "0"}});
  Output(1, OutputType::kWeb,
         {{"FTPServerName1", "ftp.example.org"},
          {"FTPUsername1", "demo"},
          {"FTPPassword1", "secret"},
          {"Output1.NumberFiles", "1"},
          {"Output1.SourceFileName1", "/data/page.htm"},
          {"Output1.DestinationFileName1", "/now.htm"}});
  Output(1, OutputType::kHTTP, {{"URL1", "/now"}, {"HTTPUsername1", "demo"}});
  Output(1, OutputType::kSerial,
         {{"SimpleTextFormat1", "one\r\ntwo"}, {"AlternateStrings1", "a|b\r\nc| d "}});
  Output(1, OutputType::kEncoder, {{"EncoderType1", "2"}});
  Output(1, OutputType::kFile,
         {{"Output1.NumberFiles", "1"},
          {"Output1.SourceFileName1", "/data/page.htm"},
          {"Output1.DestinationFileName1", "/data/now.htm"}});
  Output(1, OutputType::kDAB, {{"ServerName1", "10.0.0.5"}, {"ServiceName1", "demo"}});
  Load();
}

std::string DialogTest::Stored(const std::string& below) {
  std::string text;
  for (const SettingsTreeKey& key : ReadSettingsTree(hive, environment.settingsRoot + below))
    for (const SettingsValue& value : key.values) {
      text += key.path + "\\" + value.name + "=";
      const auto* number = std::get_if<std::uint32_t>(&value.data);
      text += number ? "#" + std::to_string(*number) : std::get<std::string>(value.data);
      text += "\n";
    }
  return text;
}

void DialogTest::OpenOutput(OutputType type) {
  OpenOutputProperties(desk, main.Window(1), Running(type));
  Settle();
  ASSERT_NE(Dialog(), nullptr);
}

void DialogTest::EnterInto(const std::string& name, const std::string& text) {
  ASSERT_NE(Dialog(), nullptr);
  FieldWidget* field = Dialog()->Field(name);
  ASSERT_NE(field, nullptr) << name;
  if (!text.empty() && dynamic_cast<QLineEdit*>(field->Input()) != nullptr && field->Input()->isEnabled())
    Type(name.c_str(), text);
  else
    field->SetText(text);
  Settle();
}

std::string DialogTest::Focused() {
  const QWidget* focused = Dialog() == nullptr ? nullptr : Dialog()->focusWidget();
  return focused == nullptr ? "" : focused->objectName().toStdString();
}

}  // namespace zeb
