#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <chrono>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "app/ServiceEditor.h"
#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/OutputDialog.h"
#include "app/desktop/text/Translate.h"
#include "text/Composed.h"

namespace zeb {
namespace {

constexpr Duration kUndoFor = std::chrono::seconds(30);

struct Removed {
  ServicePtr window;
  OutputType type = OutputType::kFile;
  OutputPtr draft;  // its settings
  std::string name;
};

void Tell(Desk& desk, const std::string& problem) {
  desk.boxes.Show(desk.frame, MessageIcon::kExclamation, problem);
}

// A small window that goes by itself.
void OfferUndo(Desk& desk, const Removed& removed) {
  auto* offer = new QDialog(desk.frame, Qt::Tool);
  offer->setObjectName("Undo");
  offer->setAttribute(Qt::WA_DeleteOnClose);
  offer->setAttribute(Qt::WA_ShowWithoutActivating);
  offer->setWindowTitle("ZEB");
  auto* text = new QLabel(T("%1 has been removed").arg(QString::fromStdString(removed.name)));
  text->setTextFormat(Qt::PlainText);
  auto* undo = new QPushButton(T("&Undo"));
  auto* close = new QPushButton(T("&Close"));
  auto* row = new QHBoxLayout(offer);
  row->addWidget(text);
  row->addWidget(undo);
  row->addWidget(close);
  QObject::connect(undo, &QPushButton::clicked, offer, [&desk, offer, removed] {
    offer->close();
    const auto added = ServiceEditor(removed.window).AddOutput(removed.type, *removed.draft);
    if (!added) Tell(desk, added.Reason());
  });
  QObject::connect(close, &QPushButton::clicked, offer, [offer] { offer->close(); });
  const auto timer =
      std::make_shared<Timer>(desk.environment.loop.After(kUndoFor, [offer] { offer->close(); }));
  QObject::connect(offer, &QObject::destroyed, [timer] { timer->Stop(); });
  offer->show();
}

void Remove(Desk& desk, const ServicePtr& window, const OutputPtr& output, const std::string& name) {
  const ServiceEditor editor(window);
  Removed removed{window, OutputType::kFile, nullptr, name};
  if (const auto place = window->service().PlaceOf(output)) removed.type = place->type;
  try {
    removed.draft = editor.DraftOf(output);
  } catch (const std::exception& error) {
    return Tell(desk, error.what());
  }
  if (const Outcome gone = ServiceEditor(window).RemoveOutput(output); !gone)
    return Tell(desk, gone.Reason());
  if (removed.draft) OfferUndo(desk, removed);
}

}  // namespace

void AskRemoveOutput(Desk& desk, const ServicePtr& window, const OutputPtr& output) {
  const auto place = window->service().PlaceOf(output);
  if (!place) return;
  const std::string name =
      FullName(window, std::string(NameOf(place->type)) + " " + std::to_string(place->number));
  desk.boxes.Ask(desk.frame, Composed("Are you sure you want to remove the Output \"%1\"?", {name}),
                 [&desk, window, output, name](bool yes) {
                   if (yes) Remove(desk, window, output, name);
                 });
}

}  // namespace zeb
