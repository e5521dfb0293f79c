#include "app/desktop/frame/FrameMenus.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>
#include <QToolBar>
#include <array>
#include <utility>

#include "app/desktop/dialogs/Files.h"
#include "app/desktop/frame/AboutBox.h"
#include "app/desktop/frame/ToolPicture.h"
#include "app/desktop/print/Printing.h"
#include "app/desktop/text/Translate.h"
#include "app/frmMain.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr char kEnglish[] = "english";  // of an action: its caption before it is translated
constexpr int kFirstServices = 9;       // those with a key of their own
constexpr std::array<std::pair<const char*, ToolShape>, 4> kTools = {
    {{"AddService", ToolShape::kPlus},
     {"ServiceSettings", ToolShape::kSliders},
     {"SetManually", ToolShape::kPencil},
     {"ForceUpdate", ToolShape::kArrows}}};

}  // namespace

FrameMenus::FrameMenus(Desk& desk, QMainWindow& window, ServiceArea& area, Frame frame)
    : desk_(desk), window_(window), area_(area), frame_(std::move(frame)) {
  AddFileMenu();
  AddServiceMenu();
  AddViewMenu();
  AddWindowMenu();
  AddOtherMenus();
  AddToolBar();
}

QAction* FrameMenus::Find(const char* name) const {
  return window_.findChild<QAction*>(QLatin1String(name));
}

QAction* FrameMenus::AddCommand(QMenu& menu, const Command& command) {
  if (command.name == nullptr) return menu.addSeparator();
  auto* action = new QAction(T(command.caption), &window_);
  action->setObjectName(QLatin1String(command.name));
  action->setProperty(
      kEnglish, QString::fromUtf8(command.caption.data(), static_cast<qsizetype>(command.caption.size())));
  action->setShortcuts(command.keys);
  if (command.scope == Scope::kOutput) action->setShortcutContext(Qt::WidgetShortcut);  // of GiveKeysTo alone
  if (command.scope == Scope::kService) ofService_.push_back(action);
  if (command.scope == Scope::kOutput) ofOutput_.push_back(action);
  QObject::connect(action, &QAction::triggered, &window_, [run = command.run] { run(); });
  menu.addAction(action);
  return action;
}

QMenu* FrameMenus::AddMenu(std::string_view caption, std::initializer_list<Command> commands) {
  QMenu* menu = window_.menuBar()->addMenu(T(caption));
  menu->menuAction()->setProperty(kEnglish,
                                  QString::fromUtf8(caption.data(), static_cast<qsizetype>(caption.size())));
  for (const Command& command : commands) AddCommand(*menu, command);
  return menu;
}

std::function<void()> FrameMenus::OnService(void (*open)(Desk&, const ServicePtr&)) {
  return [this, open] {
    if (const ServicePtr service = frame_.service()) open(desk_, service);
  };
}

std::function<void()> FrameMenus::OnOutput(void (*open)(Desk&, const ServicePtr&, const OutputPtr&)) {
  return [this, open] {
    const ServiceWindow* window = area_.Active();
    const OutputPtr output = window == nullptr ? nullptr : window->SelectedOutput();
    if (!output) return frame_.say(T("Choose an output first"));
    open(desk_, window->Service(), output);
  };
}

std::function<void()> FrameMenus::OnPage(ServiceWindow::Page page) {
  return [this, page] {
    if (const ServicePtr service = frame_.service()) area_.Show(service)->ShowPage(page);
  };
}

void FrameMenus::AddFileMenu() {
  const auto print = [this](void (*open)(Desk&, const ServicePtr&, ReportKind), ReportKind kind) {
    return [this, open, kind] {
      if (const ServicePtr service = frame_.service()) open(desk_, service, kind);
    };
  };
  const Command line{};
  AddMenu(
      "&File",
      {{"AddService", "&Add Service...", {Qt::CTRL | Qt::Key_N}, Scope::kAlways, frame_.addService},
       {"RemoveService", "&Remove Service...", {}, Scope::kService, [this] { OpenRemoveService(desk_); }},
       line,
       {"ImportSettings", "&Import settings...", {}, Scope::kAlways, [this] { OpenImportSettings(desk_); }},
       {"ExportSettings", "&Export settings...", {}, Scope::kAlways, [this] { OpenExportSettings(desk_); }},
       {"SupportFile", "Support &File...", {}, Scope::kAlways, [this] { OpenSupportFile(desk_); }},
       line,
       {"Print",
        "&Print...",
        {Qt::CTRL | Qt::Key_P},
        Scope::kService,
        print(&OpenPrint, ReportKind::kConfiguration)},
       {"PrintPreview",
        "Print Pre&view...",
        {},
        Scope::kService,
        print(&OpenPrintPreview, ReportKind::kConfiguration)},
       {"PrintHistory",
        "Print Play &History...",
        {},
        Scope::kService,
        print(&OpenPrintPreview, ReportKind::kPlayHistory)},
       line,
       {"Exit", "E&xit", {Qt::CTRL | Qt::Key_Q}, Scope::kAlways, frame_.quit}});
}

void FrameMenus::AddServiceMenu() {
  const Command line{};
  AddMenu(
      "&Service",
      {{"ServiceSettings",
        "&Settings...",
        {Qt::Key_F4, Qt::CTRL | Qt::Key_Return},
        Scope::kService,
        OnService(&OpenServiceSettings)},
       {"SetManually",
        "Set &Manually...",
        {Qt::CTRL | Qt::Key_M},
        Scope::kService,
        OnService(&OpenManualEntry)},
       {"ForceUpdate",
        "&Force Update",
        {Qt::Key_F5},
        Scope::kService,
        [this] {
          if (const ServicePtr service = frame_.service()) service->ForceUpdate();
        }},
       line,
       {"AddOutput", "Add &Output...", {Qt::Key_Insert}, Scope::kOutput, OnService(&OpenAddOutput)},
       {"OutputProperties",
        "Output &Properties...",
        {Qt::Key_Return, Qt::Key_Enter},
        Scope::kOutput,
        OnOutput(&OpenOutputProperties)},
       {"RemoveOutput", "&Remove Output...", {Qt::Key_Delete}, Scope::kOutput, OnOutput(&AskRemoveOutput)},
       {"SendTest", "Send &Test", {}, Scope::kOutput, OnOutput(&OpenOutputTest)},
       {"CopyStatusText", "&Copy Status Text", {Qt::CTRL | Qt::Key_C}, Scope::kOutput, [this] {
          if (const ServiceWindow* window = area_.Active()) window->CopyStatusText();
        }}});
}

void FrameMenus::AddViewMenu() {
  const Command line{};
  QMenu* menu = AddMenu(
      "&View",
      {{"ShowOverview", "&Overview", {Qt::Key_F9}, Scope::kAlways, frame_.toggleOverview},
       {"FindServices", "&Find a Service", {Qt::CTRL | Qt::Key_F}, Scope::kAlways, frame_.find},
       line,
       {"ShowItems", "&Items", {Qt::CTRL | Qt::Key_I}, Scope::kService, OnPage(ServiceWindow::Page::kItems)},
       {"ShowListeners",
        "&What Listeners See",
        {Qt::Key_F6},
        Scope::kService,
        OnPage(ServiceWindow::Page::kListeners)},
       {"ShowHistory", "&History", {Qt::Key_F7}, Scope::kService, OnPage(ServiceWindow::Page::kHistory)},
       {"ShowJournal", "&Journal", {Qt::Key_F8}, Scope::kService, OnPage(ServiceWindow::Page::kJournal)},
       line,
       {"Tabs", "&Tabs", {}, Scope::kAlways, frame_.toggleTabs}});
  for (const char* name : {"ShowOverview", "Tabs"}) Find(name)->setCheckable(true);
  AddThemes(*menu);
}

void FrameMenus::AddThemes(QMenu& menu) {
  QMenu* themes = menu.addMenu(T("Th&eme"));
  themes->menuAction()->setProperty(kEnglish, "Th&eme");
  auto* group = new QActionGroup(&window_);
  const std::array<std::string_view, 3> captions = {"&System", "&Light", "&Dark"};
  for (const ThemeChoice choice : {ThemeChoice::kSystem, ThemeChoice::kLight, ThemeChoice::kDark}) {
    const auto at = static_cast<std::size_t>(choice);
    QAction* action = AddCommand(*themes, {"Theme", captions.at(at), {}, Scope::kAlways, [this, choice] {
                                             frame_.chooseTheme(choice);
                                           }});
    action->setCheckable(true);
    group->addAction(action);
    themes_.push_back(action);
  }
}

void FrameMenus::AddWindowMenu() {
  const Command line{};
  QMenu* menu =
      AddMenu("&Window", {{"Tile", "&Tile", {}, Scope::kAlways, [this] { area_.tileSubWindows(); }},
                          {"Cascade", "&Cascade", {}, Scope::kAlways, [this] { area_.cascadeSubWindows(); }},
                          {"NextWindow",
                           "&Next",
                           {Qt::CTRL | Qt::Key_Tab},
                           Scope::kAlways,
                           [this] { area_.activateNextSubWindow(); }},
                          {"PreviousWindow",
                           "&Previous",
                           {Qt::CTRL | Qt::SHIFT | Qt::Key_Tab},
                           Scope::kAlways,
                           [this] { area_.activatePreviousSubWindow(); }},
                          {"CloseWindow",
                           "C&lose",
                           {Qt::CTRL | Qt::Key_W},
                           Scope::kAlways,
                           [this] { area_.closeActiveSubWindow(); }},
                          line});
  for (int number = 1; number <= kFirstServices; ++number)
    first_.push_back(AddCommand(*menu, {"Service",
                                        "",
                                        {QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_0 + number))},
                                        Scope::kAlways,
                                        [this, number] {
                                          if (number <= desk_.main.NumberServices())
                                            area_.Show(desk_.main.Window(number));
                                        }}));
  QObject::connect(menu, &QMenu::aboutToShow, &window_, [this] { FillWindowMenu(); });
}

void FrameMenus::FillWindowMenu() {
  for (int number = 1; number <= kFirstServices; ++number) {
    QAction* action = first_.at(static_cast<std::size_t>(number) - 1);
    const bool present = number <= desk_.main.NumberServices();
    action->setVisible(present);
    if (!present) continue;
    const std::string name = OneLine(desk_.main.Window(number)->service().settings.ServiceName, 60);
    action->setText("&" + QString::number(number) + " " + QString::fromStdString(name).replace('&', "&&"));
  }
}

void FrameMenus::AddOtherMenus() {
  AddMenu("&Tools", {{"TemplateBuilder",
                      "&Template Builder...",
                      {Qt::CTRL | Qt::Key_B},
                      Scope::kAlways,
                      [this] {
                        OpenFormatCreator(desk_, &window_, frame_.service(), "", [](const std::string& text) {
                          QApplication::clipboard()->setText(QString::fromStdString(text));
                        });
                      }},
                     {"Options", "&Options...", {}, Scope::kAlways, [this] { OpenOptions(desk_); }}});
  AddMenu("&Help", {{"Manual", "&Manual", {Qt::Key_F1}, Scope::kAlways, frame_.openManual},
                    {"About", "&About ZEB", {}, Scope::kAlways, [this] { OpenAboutBox(desk_, &window_); }}});
}

void FrameMenus::AddToolBar() {
  QToolBar* bar = window_.addToolBar(T("Toolbar"));
  bar->setObjectName("ToolBar");
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  window_.setContextMenuPolicy(Qt::NoContextMenu);  // which would offer to hide the bar for ever
  for (const auto& [name, shape] : kTools) bar->addAction(Find(name));
}

// In the colours of the present theme.
void FrameMenus::GivePictures() {
  for (const auto& [name, shape] : kTools) Find(name)->setIcon(ToolPicture(shape, QApplication::palette()));
}

// In its list of outputs alone: Enter and Del mean something else elsewhere.
void FrameMenus::GiveKeysTo(ServiceWindow& window) {
  auto* outputs = window.findChild<QWidget*>("outputs");
  if (outputs == nullptr) return;
  for (QAction* action : ofOutput_)
    for (const QKeySequence& key : action->shortcuts()) {
      auto* shortcut = new QShortcut(key, outputs);
      shortcut->setContext(Qt::WidgetWithChildrenShortcut);
      QObject::connect(shortcut, &QShortcut::activated, action, &QAction::trigger);
    }
}

void FrameMenus::ShowWhatCanBeDone() {
  FillWindowMenu();  // what is not to be seen in it has no key either
  const bool service = frame_.service() != nullptr;
  for (QAction* action : ofService_) action->setEnabled(service);
  // What is on air is another program's where only settings are edited.
  for (const char* name : {"SetManually", "ForceUpdate"})
    Find(name)->setEnabled(service && desk_.environment.publishes);
  for (QAction* action : ofOutput_) action->setEnabled(area_.Active() != nullptr);
}

void FrameMenus::ShowTexts() {
  for (QAction* action : window_.findChildren<QAction*>())
    if (const QVariant english = action->property(kEnglish);
        english.isValid() && !english.toString().isEmpty())
      action->setText(T(english.toString().toStdString()));
}

void FrameMenus::ShowState(bool overview, bool tabs, ThemeChoice theme) {
  Find("ShowOverview")->setChecked(overview);
  Find("Tabs")->setChecked(tabs);
  themes_.at(static_cast<std::size_t>(theme))->setChecked(true);
  GivePictures();
}

}  // namespace zeb
