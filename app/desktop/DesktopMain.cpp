#include "app/desktop/DesktopMain.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QSessionManager>
#include <QUrl>
#include <utility>

#include "app/desktop/frame/AppIcon.h"
#include "app/desktop/frame/Screenshots.h"
#include "app/desktop/text/ChooseLanguage.h"
#include "app/frmMain.h"
#include "text/Composed.h"

namespace zeb {
DesktopMain::DesktopMain(Start start, Ways ways) : start_(std::move(start)), ways_(std::move(ways)) {
  QApplication::setApplicationName("zeb");
  QApplication::setDesktopFileName("zeb");
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(AppIcon());
  ApplyTheme(ThemeChoice::kSystem);
  // The session ends: so does this program, without a question, and it is not started again by the session.
  QObject::connect(qApp, &QGuiApplication::commitDataRequest, qApp, [this](QSessionManager& session) {
    session.setRestartHint(QSessionManager::RestartNever);
    ways_.stop("Stopping (the session ends)");
  });
}

DesktopMain::~DesktopMain() = default;

std::unique_ptr<Operator> DesktopMain::Person(Operator& journal, EventLoop& loop) {
  auto person = std::make_unique<DesktopOperator>(journal, loop, boxes_, start_.silent);
  person_ = person.get();
  return person;
}

void DesktopMain::Tell(const std::string& text, const std::string& action) {
  if (start_.silent) return;
  if (!splash_) splash_ = std::make_unique<Splash>();
  splash_->Tell(text, action);
}

void DesktopMain::Loading(Desk desk) {
  desk_.emplace(std::move(desk));
  frmMain::Display& display = desk_->main.display;
  display.splash = [this](const std::string& text, const std::string& action) {
    Tell(text, action);
    // At the start nothing runs yet, and what is being loaded holds the loop up: it is drawn now.
    if (!window_->isVisible()) QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  };
  display.arrange = [this] { window_->Arrange(); };
  display.minimise = [] {};  // it is shown so at once
  display.changed = [this](int number) { window_->Changed(number); };
  window_ = std::make_unique<MainWindow>(
      *desk_, MainWindow::Ways{.quit = [this] { Quit(); }, .openManual = [this] { OpenManual(); }});
  desk_->frame = window_.get();
  if (person_ != nullptr) person_->SetFrame(window_.get());
  window_->Tray().Show();
}

void DesktopMain::AddRequests(ControlRoom& room) {
  desk_->reload = [&room] { room.Reload(); };
  room.Routes().Add("POST", kRaiseWindows, Need::kLocal, [this](const HttpRequest&) {
    window_->Raise();
    return HttpAnswer{.status = 200, .type = "application/json", .body = "{}", .headers = {}};
  });
}

void DesktopMain::Ready() {
  if (splash_) splash_->hide();
  UseStoredLanguage(*desk_);
  if (start_.minimised)
    window_->showMinimized();
  else
    window_->show();
  if (!start_.screenshots.empty())
    TakeScreenshots(*desk_, *window_, start_.screenshots, [this] { ways_.stop("Stopping"); });
}

void DesktopMain::Stopping() {
  if (window_) window_->Save();
}

// In front of a window that can be seen: of a minimised one nobody would see the question.
void DesktopMain::Quit() {
  if (!start_.silent) window_->Raise();
  const auto closed = [this] {
    window_->Save();
    ways_.ended();
  };
  // Where only settings are edited nothing on air ends with the window.
  if (desk_->environment.publishes)
    desk_->main.RequestQuit(closed);
  else
    desk_->main.Quit(closed);
}

void DesktopMain::OpenManual() {
  if (start_.manual.empty() ||
      !QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(start_.manual))))
    boxes_.Show(window_.get(), MessageIcon::kInformation,
                "The manual cannot be opened; its pages are installed in share/doc/zeb/manual");
}

void DesktopMain::AlreadyRunning(OtherPublisher::Ports ports,
                                 const std::function<void(bool edit)>& answered) {
  other_ = std::make_unique<OtherPublisher>(std::move(ports), boxes_);
  other_->Meet(start_.folder, start_.silent, answered);
}

// A box for what needs somebody to know; the same one is not opened twice.
void DesktopMain::ToldElsewhere(RunningElsewhere::Told told, const std::string& reason) {
  using Told = RunningElsewhere::Told;
  if (told == Told::kTaken)
    return window_->Say(std::string(Translatable("The publisher that runs has taken the change")));
  boxes_.Show(
      window_.get(), MessageIcon::kExclamation,
      told == Told::kNobodyRuns
          ? std::string(
                Translatable("The change is stored, but no publisher runs on the data folder any more. "
                             "It comes into use when one is started."))
          : Composed("The change is stored, but the publisher that runs has not taken it: %1", {reason}));
}

}  // namespace zeb
