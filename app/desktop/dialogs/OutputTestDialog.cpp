#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/OutputDialog.h"
#include "app/desktop/text/Translate.h"
#include "outputs/OutputTable.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr std::size_t kMostShown = 1000;  // characters of a step

struct StepsView {
  QPointer<QDialog> dialog;
  QLabel* state = nullptr;
  QListWidget* steps = nullptr;
};

StepsView MakeDialog(QWidget* parent, const std::string& name) {
  StepsView shown;
  shown.dialog = new QDialog(parent);
  shown.dialog->setObjectName("OutputTest");
  shown.dialog->setAttribute(Qt::WA_DeleteOnClose);
  shown.dialog->setWindowTitle(T("Test of %1").arg(QString::fromStdString(name)));
  shown.state = new QLabel(T("Testing; this takes 30 seconds at the most..."));
  shown.state->setObjectName("TestState");
  shown.steps = new QListWidget;
  shown.steps->setObjectName("TestSteps");
  shown.steps->setAccessibleName(T("Steps"));
  shown.steps->setWordWrap(true);
  shown.steps->setMinimumSize(shown.steps->fontMetrics().averageCharWidth() * 70,
                              shown.steps->fontMetrics().lineSpacing() * 8);
  auto* close = new QPushButton(T("Close"));
  close->setDefault(true);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(close);
  auto* whole = new QVBoxLayout(shown.dialog);
  whole->addWidget(shown.state);
  whole->addWidget(shown.steps);
  whole->addLayout(buttons);
  QObject::connect(close, &QPushButton::clicked, shown.dialog, [dialog = shown.dialog] { dialog->close(); });
  return shown;
}

void Add(const StepsView& shown, const TestStep& step) {
  shown.steps->addItem((step.ok ? "✓ " : "✗ ") + QString::fromStdString(OneLine(step.Text(), kMostShown)));
  shown.steps->scrollToBottom();
}

void Finish(const StepsView& shown, const std::vector<TestStep>& steps) {
  const bool ok =
      !steps.empty() && std::all_of(steps.begin(), steps.end(), [](const TestStep& step) { return step.ok; });
  shown.state->setText(T(ok ? "All is well." : "Something is wrong:"));
}

}  // namespace

void OpenTestOf(Desk& desk, QWidget* parent, OutputType type, const clsZEBTemplate& output,
                const std::string& name) {
  const std::shared_ptr<OutputTest> test = MakeOutputTest(desk.environment, type, output);
  if (!test) return desk.boxes.Show(parent, MessageIcon::kExclamation, "This output cannot be tested");
  const StepsView shown = MakeDialog(parent, name);
  shown.dialog->open();
  // It may be closed before the test ends, which then goes on by itself; what it finds is drawn in events of
  // their own, not in the task.
  EventLoop& loop = desk.environment.loop;
  loop.Start("testing an output", [&loop, test, shown] {
    auto steps = StepsOf(loop, *test, [&loop, shown](const TestStep& step) {
      loop.Post([shown, step] {
        if (shown.dialog) Add(shown, step);
      });
    });
    loop.Post([shown, steps = std::move(steps)] {
      if (shown.dialog) Finish(shown, steps);
    });
  });
}

void OpenOutputTest(Desk& desk, const ServicePtr& window, const OutputPtr& output) {
  const auto place = window->service().PlaceOf(output);
  if (!place) return;
  const std::string name = std::string(NameOf(place->type)) + " " + std::to_string(place->number);
  OpenTestOf(desk, desk.frame, place->type, *output, FullName(window, name));
}

}  // namespace zeb
