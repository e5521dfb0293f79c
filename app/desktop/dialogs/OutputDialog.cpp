#include "app/desktop/dialogs/OutputDialog.h"

#include <exception>
#include <memory>
#include <utility>

#include "app/ServiceEditor.h"
#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/PairGrid.h"
#include "app/desktop/dialogs/PropertyDialog.h"
#include "app/desktop/text/Translate.h"
#include "dialogs/OutputSheets.h"
#include "outputs/file/PairOutput.h"
#include "outputs/serial/clsZEBSerialOutput.h"

namespace zeb {
namespace {

std::vector<clsFileParameters> PairsOf(const PairOutput& output) {
  std::vector<clsFileParameters> pairs;
  for (int number = 1; number <= output.UpdateFileCount(); ++number)
    pairs.push_back(output.UpdateFile(number));
  return pairs;
}

void PutPairs(PairOutput& output, const std::vector<clsFileParameters>& pairs) {
  while (output.UpdateFileCount() > 0) output.RemoveUpdateFile(1);
  for (const clsFileParameters& pair : pairs) output.AddUpdateFile(pair);
}

// The grid, when the output has pairs.
PairGrid* MakeGrid(Desk& desk, const ServicePtr& window, const OutputDraft& edited) {
  const auto* output = dynamic_cast<const PairOutput*>(edited.draft.get());
  if (output == nullptr) return nullptr;
  return new PairGrid(desk,
                      edited.type == OutputType::kWeb ? FileParametersMode::kWeb : FileParametersMode::kFile,
                      PairsOf(*output), window);
}

PairsField PairsIn(PairGrid* grid) {
  if (grid == nullptr) return {};
  return {grid, [grid] { return static_cast<int>(grid->Pairs().size()); }};
}

// A serial port belongs to one at a time: while the output runs on it, that one is looked at.
const clsZEBTemplate& ToTest(const OutputDraft& edited) {
  const auto* draft = dynamic_cast<const clsZEBSerialOutput*>(edited.draft.get());
  const auto* running = dynamic_cast<const clsZEBSerialOutput*>(edited.running.get());
  const bool isBusy =
      draft && running && running->HasPort() && running->Line().device == draft->Line().device;
  return isBusy ? *edited.running : *edited.draft;
}

void Tell(Desk& desk, const std::string& problem) {
  desk.boxes.Show(desk.frame, MessageIcon::kExclamation, problem);
}

}  // namespace

std::string FullName(const ServicePtr& window, const std::string& output) {
  return output + " of " + window->service().settings.ServiceName;
}

void OpenOutputDialog(Desk& desk, const ServicePtr& window, OutputDraft given) {
  const auto edited = std::make_shared<OutputDraft>(std::move(given));
  PropertySheet sheet = SheetOf(edited->type, *edited->draft);
  if (sheet.fields.empty()) return Tell(desk, "This program has no such output");
  PairGrid* grid = MakeGrid(desk, window, *edited);
  auto* dialog = new PropertyDialog(desk, window, std::move(sheet), PairsIn(grid));
  dialog->setObjectName("OutputProperties");
  dialog->setWindowTitle(dialog->windowTitle() + " – " +
                         QString::fromStdString(FullName(window, edited->name)));
  const auto takePairs = [edited, grid] {
    if (grid != nullptr) PutPairs(dynamic_cast<PairOutput&>(*edited->draft), grid->Pairs());
  };
  dialog->store = [edited, takePairs] {
    takePairs();
    return edited->store(*edited->draft);
  };
  dialog->AddButton("Test", [&desk, dialog, edited, takePairs] {
    if (!dialog->TakeOver()) return;
    takePairs();
    OpenTestOf(desk, dialog, edited->type, ToTest(*edited), edited->name);
  });
  dialog->OpenToFit();
}

void OpenOutputProperties(Desk& desk, const ServicePtr& window, const OutputPtr& output) {
  const auto place = window->service().PlaceOf(output);
  OutputDraft edited;
  try {
    if (place) edited.draft = ServiceEditor(window).DraftOf(output);
  } catch (const std::exception& error) {
    return Tell(desk, error.what());
  }
  if (!edited.draft) return Tell(desk, "The output has been changed or removed meanwhile; look at it again");
  edited.type = place->type;
  edited.running = output;
  edited.name = std::string(NameOf(place->type)) + " " + std::to_string(place->number);
  edited.store = [window, output](clsZEBTemplate& draft) {
    return ServiceEditor(window).ReplaceOutput(output, draft);
  };
  OpenOutputDialog(desk, window, std::move(edited));
}

}  // namespace zeb
