#include "app/desktop/service/ServiceWindow.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QEvent>
#include <QPushButton>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/service/AttentionLine.h"
#include "app/desktop/service/GridView.h"
#include "app/desktop/service/HistoryView.h"
#include "app/desktop/service/JournalView.h"
#include "app/desktop/service/ListenersView.h"
#include "app/desktop/service/PanelBar.h"
#include "app/desktop/service/ServiceHead.h"
#include "app/desktop/service/SeverityMark.h"
#include "app/desktop/service/ShownText.h"
#include "app/desktop/service/StationRows.h"
#include "app/desktop/text/Translate.h"
#include "outputs/web/clsZEBWebOutput.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kLookAtOutputsEach = 1s;

}  // namespace

ServiceWindow::ServiceWindow(Desk& desk, std::shared_ptr<frmService> window)
    : desk_(desk),
      window_(std::move(window)),
      outputs_(OutputColumns()),
      items_(ItemColumns()),
      head_(new ServiceHead),
      attention_(new AttentionLine),
      panels_(new PanelBar),
      outputGrid_(new GridView(outputs_, QStringLiteral("outputs"), T("Outputs"))),
      itemGrid_(new GridView(items_, QStringLiteral("items"), T("Items"))),
      listeners_(new ListenersView),
      history_(new HistoryView(desk)),
      journal_(new JournalView(desk.journal)),
      pages_(new QTabWidget),
      splitter_(new QSplitter(Qt::Vertical)) {
  setObjectName(QStringLiteral("service"));
  splitter_->setChildrenCollapsible(false);
  splitter_->addWidget(MakeOutputs());
  splitter_->addWidget(MakePages());
  auto* column = new QVBoxLayout(this);
  column->addWidget(head_);
  column->addWidget(attention_);
  column->addWidget(splitter_, 1);
  column->addWidget(panels_);
  MakeMarks();
  Draw();
}

ServiceWindow::~ServiceWindow() = default;

QWidget* ServiceWindow::MakeOutputs() {
  outputGrid_->SetWidths({12, 12, 12, 28, 40, 9});
  outputGrid_->onOpen = [this] {
    if (const OutputPtr output = SelectedOutput()) OpenOutputProperties(desk_, window_, output);
  };
  outputGrid_->onChosen = [this] { OutputChosen(); };
  AddOutputActions();
  auto* force = new QPushButton(T("For&ce Update"));
  force->setObjectName(QStringLiteral("forceUpdate"));
  force->setEnabled(desk_.environment.publishes);
  connect(force, &QPushButton::clicked, [this] { window_->ForceUpdate(); });
  auto* add = new QPushButton(T("Add &Output..."));
  add->setObjectName(QStringLiteral("addOutput"));
  connect(add, &QPushButton::clicked, [this] { OpenAddOutput(desk_, window_); });
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(force);
  buttons->addWidget(add);
  buttons->addStretch();
  auto* area = new QWidget;
  auto* column = new QVBoxLayout(area);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(outputGrid_);
  column->addLayout(buttons);
  return area;
}

QWidget* ServiceWindow::MakePages() {
  itemGrid_->SetWidths({13, 40, 30, 9, 10});
  pages_->setObjectName(QStringLiteral("pages"));
  pages_->setAccessibleName(T("Pages"));
  pages_->addTab(itemGrid_, T("&Items"));
  pages_->addTab(listeners_, T("What &listeners see"));
  pages_->addTab(history_, T("Histor&y"));
  pages_->addTab(journal_, T("&Journal"));
  connect(pages_, &QTabWidget::currentChanged, [this] {
    version_.reset();
    Draw();
  });
  return pages_;
}

// The same as in the Service menu, where their keys are.
void ServiceWindow::AddOutputActions() {
  const auto add = [this](const char* name, const QString& text, std::function<void(const OutputPtr&)> act) {
    auto* action = new QAction(text, outputGrid_);
    action->setObjectName(QLatin1String(name));
    connect(action, &QAction::triggered, [this, act = std::move(act)] {
      if (const OutputPtr output = SelectedOutput()) act(output);
    });
    outputGrid_->addAction(action);
  };
  auto* adding = new QAction(T("Add Output..."), outputGrid_);
  adding->setObjectName(QStringLiteral("addOutputAction"));
  connect(adding, &QAction::triggered, [this] { OpenAddOutput(desk_, window_); });
  outputGrid_->addAction(adding);
  add("outputProperties", T("Output Properties..."),
      [this](const OutputPtr& output) { OpenOutputProperties(desk_, window_, output); });
  add("outputTest", T("Send Test..."),
      [this](const OutputPtr& output) { OpenOutputTest(desk_, window_, output); });
  add("cancelSending", T("Cancel Sending"), [this](const OutputPtr&) { CancelSending(); });
  add("copyStatus", T("Copy Status Text"), [this](const OutputPtr&) { CopyStatusText(); });
  add("removeOutput", T("Remove Output..."),
      [this](const OutputPtr& output) { AskRemoveOutput(desk_, window_, output); });
}

void ServiceWindow::MakeMarks() {
  outputs_.SetMarks(OutputMarks(palette()));
}

void ServiceWindow::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange) MakeMarks();
  QWidget::changeEvent(event);
}

// ---- Drawing

void ServiceWindow::Draw() {
  if (window_->Closed()) return;
  const MonotonicTime now = desk_.environment.loop.Monotonic();
  const bool changed = version_ != window_->Board().Version();
  const bool items = now >= nextItems_ || itemsVersion_ != window_->ItemListVersion();
  if (changed || sending_ || items || now >= nextOutputs_) DrawStation(items);
  if (pages_->currentWidget() == journal_) journal_->Draw(window_->service().settings.ServiceName);
}

void ServiceWindow::DrawStation(bool items) {
  const MonotonicTime now = desk_.environment.loop.Monotonic();
  const StationState state = window_->Board().State();
  version_ = window_->Board().Version();
  nextOutputs_ = now + kLookAtOutputsEach;
  if (const QString title = CellText(state.name); windowTitle() != title) setWindowTitle(title);
  head_->Take(state);
  panels_->Take(state, window_->PanelVisible(Panel::kBounceControl));
  sending_ = std::any_of(state.outputs.begin(), state.outputs.end(),
                         [](const OutputState& output) { return output.progress.has_value(); });
  DrawOutputs(state);
  attention_->Take(outputs_.Rows());
  if (items) {
    itemsVersion_ = window_->ItemListVersion();
    nextItems_ = now + std::chrono::seconds(std::max(1, window_->service().settings.UpdateDisplayInterval));
    items_.Take(ItemRows(state));
  }
  if (pages_->currentWidget() == listeners_) listeners_->Take(state, window_->service());
  if (pages_->currentWidget() == history_) history_->Draw(state, *version_);
}

void ServiceWindow::DrawOutputs(const StationState& state) {
  // The view puts the choice elsewhere when its row goes: that is nobody's choice.
  const auto before = outputGrid_->Chosen();
  showsPlace_ = true;
  outputs_.Take(OutputRows(state, window_->service()));
  if (before && !outputs_.RowOf(*before)) outputGrid_->ChooseNone();
  showsPlace_ = false;
  KeepChoice(state);
}

// An output that has other settings now is another one; whoever had it chosen does not mind.
void ServiceWindow::KeepChoice(const StationState& state) {
  if (SelectedOutput() || !chosen_) {
    OutputChosen();
    return;
  }
  for (const OutputState& one : state.outputs)
    if (one.type == chosen_->type && one.number == chosen_->number)
      return outputGrid_->Choose(KeyOf(window_->service().Output(one.type, one.number)));
  chosen_.reset();
}

void ServiceWindow::OutputChosen() {
  if (showsPlace_) return;
  const OutputPtr output = SelectedOutput();
  chosen_.reset();
  if (!output) return;
  if (const auto place = window_->service().PlaceOf(output)) chosen_ = Place{place->type, place->number};
  listeners_->Choose(KeyOf(output));
}

// ---- What the frame asks

void ServiceWindow::ShowPage(Page page) {
  pages_->setCurrentIndex(static_cast<int>(page));
}

OutputPtr ServiceWindow::SelectedOutput() const {
  const auto key = outputGrid_->Chosen();
  return key ? OutputOf(*key, window_->service()) : nullptr;
}

void ServiceWindow::CopyStatusText() const {
  const OutputPtr output = SelectedOutput();
  if (!output) return;
  std::uint32_t colour = 0;
  QString text =
      OutputTitle(*output, chosen_ ? chosen_->number : 0) + ": " + T(output->GetStatusString(colour));
  if (const std::string problem = output->ProblemText(); !problem.empty()) text += "\n" + LinesText(problem);
  QApplication::clipboard()->setText(text);
}

void ServiceWindow::CancelSending() const {
  if (const auto output = std::dynamic_pointer_cast<clsZEBWebOutput>(SelectedOutput()))
    output->CancelByUser();
}

// "pages=1;splitter=200,300;outputs=90,80;items=60,200"
QString ServiceWindow::SaveState() const {
  QStringList sizes;
  for (const int size : splitter_->sizes()) sizes << QString::number(size);
  return QStringLiteral("page=%1;splitter=%2;outputs=%3;items=%4")
      .arg(pages_->currentIndex())
      .arg(sizes.join(','), outputGrid_->SaveColumns(), itemGrid_->SaveColumns());
}

void ServiceWindow::RestoreState(const QString& saved) {
  for (const QString& part : saved.split(';')) {
    const QString name = part.section('=', 0, 0), value = part.section('=', 1);
    if (name == "page" && value.toInt() >= 0 && value.toInt() < pages_->count())
      pages_->setCurrentIndex(value.toInt());
    if (name == "outputs") outputGrid_->RestoreColumns(value);
    if (name == "items") itemGrid_->RestoreColumns(value);
    if (name != "splitter") continue;
    QList<int> sizes;
    for (const QString& size : value.split(',')) sizes << std::clamp(size.toInt(), 0, 10000);
    if (sizes.size() == splitter_->count() && sizes[0] + sizes[1] > 0) splitter_->setSizes(sizes);
  }
}

}  // namespace zeb
