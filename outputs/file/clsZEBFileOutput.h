// clsZEBFileOutput: turns template files into finished files on a disk or a share.
//
// All work on files is done off the loop's thread, so that a share that hangs holds up this output only.
// Pages are expanded on the loop's thread, all of an update at one go, so that they show one moment of the
// service.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "outputs/file/DestinationsInProgress.h"
#include "outputs/file/FileJob.h"
#include "outputs/file/PairOutput.h"

namespace zeb {

class clsZEBFileOutput : public PairOutput {
 public:
  // `destinations` is shared by all file outputs of the program.
  clsZEBFileOutput(Environment& environment, std::shared_ptr<DestinationsInProgress> destinations);

  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  // Deletes the work files that the update could not put in place.
  bool FinishOutput(const SnapshotPtr& snapshot) override;

  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  std::string GetShortTypeDescription() const override { return "File"; }
  std::string GetStatusString(std::uint32_t& colour) override;

 private:
  using Jobs = std::vector<FileJob>;
  void UpdatePairs(const ServiceSnapshot& snapshot);
  Jobs DueJobs(const ServiceSnapshot& snapshot) const;
  Jobs LoadBatch(Jobs& jobs, std::size_t& next);
  void ExpandBatch(Jobs& batch, const ServiceSnapshot& snapshot);
  void WriteBatch(Jobs& batch, std::set<std::string>& failedCopies);
  std::vector<AdditionalCopy> AdditionalCopies(const Jobs& batch) const;
  void KeepResults(const Jobs& batch, int generation);
  void NoteFailedCopies(std::set<std::string> reasons);

  std::shared_ptr<DestinationsInProgress> destinations_;
  std::vector<std::string> leftOvers_;  // destinations whose work file is left
  std::set<std::string> failedCopies_;  // reasons, of the last update
};

}  // namespace zeb
