#include <memory>
#include <utility>

#include "app/ServiceEditor.h"
#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/PropertyDialog.h"
#include "app/desktop/dialogs/SourcePreview.h"
#include "app/desktop/text/Translate.h"
#include "dialogs/ServiceSettingsDialog.h"

namespace zeb {
namespace {

constexpr const char* kInformation = "FileInformation";

struct Editing {
  ServiceDraft before, draft;
  std::unique_ptr<SourcePreview> preview;
};

Outcome Store(const ServicePtr& window, const Editing& editing) {
  ServiceEditor::UpdateIntervals intervals;
  for (std::size_t i = 0; i < kOutputTypesOffered.size(); ++i)
    if (editing.draft.intervals[i] != editing.before.intervals[i])
      intervals[kOutputTypesOffered[i]] = editing.draft.intervals[i];
  return ServiceEditor(window).ApplySettings(editing.before.settings, editing.draft.settings, intervals);
}

// The chooser and the preview go with the type and the name of the source's file.
void FollowSource(PropertyDialog& dialog, Editing& editing, const Entries& entries) {
  const std::string type = EntryOf(entries, "InfoSourceType");
  const SourceFileChooser chooser = ChooserFor(type);
  dialog.Field("InfoSourceFileName")->SetChooser(std::string(chooser.title), std::string(chooser.filters));
  const std::string name = chooser.title.empty() ? "" : EntryOf(entries, "InfoSourceFileName");
  editing.preview->Show(QString::fromStdString(type).toInt(), name);
}

}  // namespace

void OpenServiceSettings(Desk& desk, const ServicePtr& window) {
  const auto editing = std::make_shared<Editing>();
  editing->before = DraftOf(window->service());
  editing->draft = editing->before;
  auto* dialog = new PropertyDialog(desk, window, ServiceSheet(editing->draft));
  dialog->setObjectName("ServiceSettings");
  editing->preview = std::make_unique<SourcePreview>(desk.environment, [dialog](const std::string& text) {
    dialog->SetNote(kInformation, T(kFileInformation) + (text.empty() ? "" : "\n") + T(text));
  });
  dialog->store = [window, editing] { return Store(window, *editing); };
  dialog->onChanged = [dialog, editing](const Entries& entries) { FollowSource(*dialog, *editing, entries); };
  FollowSource(*dialog, *editing, dialog->Entered());
  dialog->OpenToFit();
}

}  // namespace zeb
