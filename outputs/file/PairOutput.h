// PairOutput: what the file and the web output have in common: an ordered list of template/destination pairs
// and the list of additional files that must travel with the pages.
//
// Pairs are numbered from 1. They may be changed while an update waits: an update works on the pairs as they
// were when it began.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/clsZEBTemplate.h"
#include "outputs/file/MediaRules.h"
#include "outputs/file/PublishedNames.h"
#include "outputs/file/clsFileParameters.h"
#include "platform/Epoch.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

// What is set for all pairs of an output together.
struct PairSwitches {
  bool CopyAdditionalFiles = false;
  bool AlwaysCopyFiles = false;  // also when an equal file is there already
};
SettingTable<PairSwitches> PairSwitchTable();

class PairOutput : public clsZEBTemplate, public PairSwitches {
 public:
  // `names` is shared by all outputs of the program.
  PairOutput(Environment& environment, std::shared_ptr<PublishedNames> names)
      : clsZEBTemplate(environment), names_(std::move(names)), ownNames_(names_) {}

  int UpdateFileCount() const { return static_cast<int>(pairs_.size()); }
  // The number must be within 1 to UpdateFileCount (else std::out_of_range).
  const clsFileParameters& UpdateFile(int number) const;
  void SetUpdateFile(int number, clsFileParameters pair);
  void AddUpdateFile(clsFileParameters pair);
  void RemoveUpdateFile(int number);  // a number without a pair: nothing happens

  // Files to be sent with the next update besides those that its pages name; unique without regard to case.
  void AddToUploadFilesList(const std::string& path) { uploadFiles_.Add(path); }
  void RemoveFromUploadFilesList(const std::string& path);
  const UploadFileList& UploadFilesList() const { return uploadFiles_; }

  std::string GetInformationString() const override;
  // Of the pairs and of the two switches above; an output with more settings puts them behind.
  std::string SettingsText() const override;
  // Each failing pair by its destination. A pair's failure is kept until that pair has been published again.
  std::vector<Problem> Problems() const override;
  // The page of each pair that has been published.
  Shown LastShown() const override;
  std::vector<PublicPlace> PublicPlaces() const override;

 protected:
  const std::vector<clsFileParameters>& Pairs() const { return pairs_; }
  void ReadPairSettings(const std::string& key, int outputIndex);
  void WritePairSettings(const std::string& key, int outputIndex);
  void ClearUploadFilesList() { uploadFiles_ = {}; }
  UploadFileList TakeUploadFilesList() { return std::exchange(uploadFiles_, {}); }

  // What may be published as an additional file, as set when the settings were read.
  MediaRules Media() const { return MakeMediaRules(environment_.dataFolder, mediaFolders_); }
  const std::shared_ptr<PublishedNames>& Names() const { return names_; }

  // Holds until a pair changes: then what an update learnt about pair 3 may be about another one.
  Epoch::Mark PairsMark() const { return pairsEpoch_.Now(); }
  // An empty reason: the pair is all right. `pair` counts from 0.
  void KeepProblem(std::size_t pair, const std::string& reason);
  void KeepShown(std::size_t pair, Shown::Page page) { shownPages_[pair] = std::move(page); }
  // A digest that nobody wanted of the last page is not worked out for the next one until somebody asks.
  PageDigest::When DigestWhen(std::size_t pair) const;
  std::size_t FailingPairs() const { return problems_.size(); }

 private:
  void PairsChanged();

  std::vector<clsFileParameters> pairs_;
  std::string mediaFolders_;  // of the settings root, for all outputs
  const std::shared_ptr<PublishedNames> names_;
  PublishedNames::Entry ownNames_;
  UploadFileList uploadFiles_;
  std::map<std::size_t, std::string> problems_;
  std::map<std::size_t, Shown::Page> shownPages_;
  Epoch pairsEpoch_;
};

}  // namespace zeb
