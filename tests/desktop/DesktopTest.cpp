#include "tests/desktop/DesktopTest.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <algorithm>

#include "core/SettingsPaths.h"

namespace zeb {
namespace {

constexpr char kRoot[] = "Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1";

std::string Plain(const QString& caption) {
  return QString(caption).remove('&').toStdString();
}

}  // namespace

DesktopTest::DesktopTest() = default;

// Windows with a parent (boxes, the popups of lists) go with it.
DesktopTest::~DesktopTest() {
  std::vector<QPointer<QWidget>> windows;
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->parentWidget() == nullptr) windows.emplace_back(widget);
  for (const QPointer<QWidget>& widget : windows) {
    if (!widget) continue;
    widget->disconnect();
    delete widget;
  }
}

void DesktopTest::Station(const std::string& name,
                          const std::vector<std::pair<std::string, std::string>>& values) {
  const int number = ReadNumberServices(hive, kRoot) + 1;
  hive.WriteNumber(kRoot, "NumberServices", number);
  const std::string key = environment.ServiceKey(number);
  hive.WriteText(key, "ServiceName", name);
  for (const auto& [value, text] : values) hive.WriteText(key, value, text);
}

void DesktopTest::Output(int station, OutputType type,
                         const std::vector<std::pair<std::string, std::string>>& values) {
  const std::string key = environment.ServiceKey(station) + "\\" +
                          std::string(FindOutputType(static_cast<std::int32_t>(type))->settingsKey);
  const int number = hive.ReadNumber(key, "NumberOutputs", 0) + 1;
  hive.WriteNumber(key, "NumberOutputs", number);
  for (const auto& [value, text] : values) hive.WriteText(key, value, text);
}

void DesktopTest::Load() {
  const Outcome loaded = main.Load();
  ASSERT_TRUE(loaded) << loaded.Reason();
  Settle();
}

void DesktopTest::Send(int station, const std::string& message) {
  main.Window(station)->SetZEBInformation(message);
  Settle();
}

void DesktopTest::Settle() {
  loop.RunPosted();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QCoreApplication::processEvents();
  loop.RunPosted();
}

void DesktopTest::Pass(Duration time) {
  loop.RunFor(time);
  Settle();
}

std::vector<QMessageBox*> DesktopTest::AllBoxes() {
  std::vector<QMessageBox*> boxes;
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (auto* box = dynamic_cast<QMessageBox*>(widget); box != nullptr && box->isVisible())
      boxes.push_back(box);
  return boxes;
}

QMessageBox* DesktopTest::Box() {
  const std::vector<QMessageBox*> open = AllBoxes();
  return open.empty() ? nullptr : open.back();
}

std::string DesktopTest::BoxText() {
  return Box() == nullptr ? "no box" : Box()->text().toStdString();
}

void DesktopTest::Press(const std::string& caption, QWidget* in) {
  QWidget* window = in != nullptr ? in : Box();
  ASSERT_NE(window, nullptr) << "no box is open";
  for (auto* button : window->findChildren<QAbstractButton*>())
    if (Plain(button->text()) == caption) {
      ASSERT_TRUE(button->isEnabled()) << caption;
      button->click();
      return Settle();
    }
  FAIL() << "no button '" << caption << "'";
}

QWidget* DesktopTest::Named(const char* name) {
  for (QWidget* top : QApplication::topLevelWidgets()) {
    if (!top->isVisible()) continue;
    if (top->objectName() == QLatin1String(name)) return top;
    if (auto* found = top->findChild<QWidget*>(QLatin1String(name))) return found;
  }
  ADD_FAILURE() << "no widget '" << name << "'";
  return nullptr;
}

void DesktopTest::Type(const char* name, const std::string& text) {
  QWidget* widget = Named(name);
  ASSERT_NE(widget, nullptr);
  if (auto* line = dynamic_cast<QLineEdit*>(widget)) line->selectAll();
  QTest::keyClicks(widget, QString::fromStdString(text));
  Settle();
}

}  // namespace zeb
