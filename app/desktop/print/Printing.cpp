#include "app/desktop/print/Printing.h"

#include <QDateEdit>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <exception>
#include <functional>
#include <optional>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/DialogFrame.h"
#include "app/desktop/print/PrintPreview.h"
#include "app/desktop/print/ServiceReport.h"
#include "app/desktop/text/Translate.h"
#include "platform/EventLoop.h"
#include "platform/SettingsHive.h"
#include "text/Composed.h"

namespace zeb {
namespace {

using Day = std::chrono::local_days;
using Show = std::function<void(PrintedReport)>;

constexpr Duration kReadLimit = std::chrono::seconds(30);

void TellFailure(Desk& desk, const std::string& reason) {
  desk.boxes.Show(desk.frame, MessageIcon::kExclamation,
                  Composed("The report could not be made.\n%1", {reason}));
}

void MakeConfiguration(Desk& desk, const frmService& window, const Show& show) {
  try {
    const StationState state = window.Board().State();
    const SettingsTree settings =
        ReadSettingsTree(desk.environment.hive, desk.environment.ServiceKey(state.number));
    show({state.name, ConfigurationReport(state, settings, desk.environment.loop.Now())});
  } catch (const std::exception& error) {
    TellFailure(desk, error.what());
  }
}

void MakePlayHistory(Desk& desk, const StationState& state, Day day, const Show& show) {
  desk.environment.loop.Start("play history", [&desk, day, show, number = state.number, name = state.name] {
    EventLoop& loop = desk.environment.loop;
    std::optional<Result<PlayedDay>> played;
    try {
      played =
          loop.RunBlocking([open = desk.openHistory, number, day,
                            offset = loop.UtcOffset()] { return ReadPlayedDay(open, number, day, offset); },
                           kReadLimit);
    } catch (const std::exception& error) {
      played = Result<PlayedDay>(Failure{error.what()});
    }
    loop.Post([&desk, day, show, name, played = std::move(played)] {
      if (!played) return TellFailure(desk, "the history could not be read in time");
      if (!*played) return TellFailure(desk, played->Reason());
      show({name, PlayHistoryReport(name, played->Value(), day, desk.environment.loop.Now())});
    });
  });
}

// Asks for a day; today at first.
class DayDialog : public DialogFrame {
 public:
  DayDialog(Desk& desk, std::function<void(Day)> chosen)
      : DialogFrame(desk.frame, "PlayHistoryDay", Translatable("Play History")), day_(new QDateEdit(this)) {
    const std::chrono::year_month_day today(
        std::chrono::floor<std::chrono::days>(desk.environment.loop.Now()));
    day_->setDisplayFormat("yyyy-MM-dd");
    day_->setDate(QDate(static_cast<int>(today.year()),
                        static_cast<int>(static_cast<unsigned>(today.month())),
                        static_cast<int>(static_cast<unsigned>(today.day()))));
    Contents()->addWidget(Caption(day_, "Day", Translatable("&Day:")));
    Contents()->addWidget(day_);
    AddButton("OK", Translatable("OK"), [this, chosen = std::move(chosen)] {
      const QDate date = day_->date();
      accept();
      chosen(Day(std::chrono::year(date.year()) / date.month() / date.day()));
    })->setDefault(true);
    AddCancel();
    day_->setFocus();
  }

 private:
  QDateEdit* day_;
};

void Make(Desk& desk, const std::shared_ptr<frmService>& window, ReportKind kind, const Show& show) {
  if (!window || !window->IsOpen()) return TellFailure(desk, "the service has gone");
  if (kind == ReportKind::kConfiguration) return MakeConfiguration(desk, *window, show);
  auto* dialog = new DayDialog(desk, [&desk, state = window->Board().State(), show](Day day) {
    MakePlayHistory(desk, state, day, show);
  });
  dialog->open();
}

}  // namespace

void OpenPrint(Desk& desk, const std::shared_ptr<frmService>& window, ReportKind kind) {
  Make(desk, window, kind, [&desk](const PrintedReport& report) { OpenPrintDialog(desk.frame, report); });
}

void OpenPrintPreview(Desk& desk, const std::shared_ptr<frmService>& window, ReportKind kind) {
  Make(desk, window, kind,
       [&desk](PrintedReport report) { (new PrintPreview(desk, std::move(report)))->open(); });
}

}  // namespace zeb
