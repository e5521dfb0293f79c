#include <exception>
#include <string>

#include "app/ServiceEditor.h"
#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/ListDialog.h"
#include "app/desktop/dialogs/OutputDialog.h"
#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

void Add(Desk& desk, const ServicePtr& window, OutputType type) {
  OutputDraft added;
  added.type = type;
  added.name = "New " + std::string(NameOf(type));
  try {
    added.draft = ServiceEditor(window).NewDraft(type);
  } catch (const std::exception& error) {
    return desk.boxes.Show(desk.frame, MessageIcon::kExclamation, error.what());
  }
  if (!added.draft)
    return desk.boxes.Show(desk.frame, MessageIcon::kExclamation, "This program has no such output");
  added.store = [window, type](clsZEBTemplate& draft) {
    return Outcome(ServiceEditor(window).AddOutput(type, draft));
  };
  OpenOutputDialog(desk, window, std::move(added));
}

}  // namespace

void OpenAddOutput(Desk& desk, const ServicePtr& window) {
  ListQuestion question{"OutputTypes", "Add Output", "Which output is to be added:", {}};
  for (const OutputType type : kOutputTypesOffered)
    question.lines.push_back(T(FindOutputType(static_cast<std::int32_t>(type))->description));
  OpenList(desk, question, [&desk, window](int chosen) {
    if (chosen >= 0) Add(desk, window, kOutputTypesOffered.at(static_cast<std::size_t>(chosen)));
  });
}

}  // namespace zeb
