// clsZEBFileOutput: turns template files into finished files on a disk or a share.
//
// All of an update's work, from reading the templates to putting the pages in place, is done by a worker
// thread (outputs/file/FileWork.h), so that a share that hangs, or a page that takes long to expand, holds up
// this output only. A page that could not be put in place is owed: it is done again at every further update
// and repetition, with the items that asked for it unless newer ones do.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "outputs/file/CopyNotes.h"
#include "outputs/file/DestinationsInProgress.h"
#include "outputs/file/FileWork.h"
#include "outputs/file/PairOutput.h"

namespace zeb {

class clsZEBFileOutput : public PairOutput {
 public:
  // `destinations` and `names` are shared by all file outputs of the program, `templates` by all that use
  // template files.
  clsZEBFileOutput(Environment& environment, std::shared_ptr<DestinationsInProgress> destinations,
                   std::shared_ptr<TemplateStore> templates, std::shared_ptr<PublishedNames> names);

  bool StopOutput() override;  // an update under way ends after its present page
  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  // Deletes the work files that the update could not put in place.
  bool FinishOutput(const SnapshotPtr& snapshot) override;
  void Cancel() override;

  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  std::string GetShortTypeDescription() const override { return "File"; }
  std::string GetStatusString(std::uint32_t& colour) override;

  // Pages, and pairs that failed.
  Tally LastTally() const override { return lastTally_; }
  void NoteFault(const std::string& what) override;

 private:
  void NoteOwed(const SnapshotPtr& snapshot);
  std::shared_ptr<FileWork> MakeWork(UploadFileList listed);
  bool DoPiece(const std::shared_ptr<FileWork>& work);
  void TakeLateResults();
  bool KeepResults(FileWork& work);
  void KeepResult(FileJob& job);
  // `ofAll`: all that are wanted were tried.
  void NoteFailedCopies(const FileWork& work, bool ofAll);
  void NoteHanging(const WorkPlace& place, bool progressed);

  std::shared_ptr<DestinationsInProgress> destinations_;
  std::shared_ptr<TemplateStore> templates_;
  SnapshotPtr last_;                         // of the last run
  std::map<std::size_t, SnapshotPtr> owed_;  // pairs (from 0) whose page is not in place, and what it shows
  std::optional<Epoch::Mark> pairsMark_;     // of the pairs that those are about
  std::shared_ptr<FileWork> work_;           // under way, or not yet asked what became of it
  CopyNotes copyNotes_;
  Tally lastTally_;
};

}  // namespace zeb
