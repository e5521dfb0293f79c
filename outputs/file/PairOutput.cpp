#include "outputs/file/PairOutput.h"

#include <utility>

#include "text/LetterCase.h"

namespace zeb {
namespace {

constexpr SettingRow<PairSwitches> kSwitchRows[] = {
    {"CopyAdditionalFiles", &PairSwitches::CopyAdditionalFiles},
    {"AlwaysCopyFiles", &PairSwitches::AlwaysCopyFiles},
};
constexpr SettingTable<PairSwitches> kSwitches = kSwitchRows;

}  // namespace

SettingTable<PairSwitches> PairSwitchTable() {
  return kSwitches;
}

const clsFileParameters& PairOutput::UpdateFile(int number) const {
  return pairs_.at(static_cast<std::size_t>(number) - 1);
}

void PairOutput::SetUpdateFile(int number, clsFileParameters pair) {
  pairs_.at(static_cast<std::size_t>(number) - 1) = std::move(pair);
  PairsChanged();
}

void PairOutput::AddUpdateFile(clsFileParameters pair) {
  ownNames_.Add(pair);
  pairs_.push_back(std::move(pair));
}

void PairOutput::RemoveUpdateFile(int number) {
  if (number < 1 || number > UpdateFileCount()) return;
  pairs_.erase(pairs_.begin() + (number - 1));
  PairsChanged();
}

void PairOutput::PairsChanged() {
  ownNames_.Set(pairs_);
  problems_.clear();
  shownPages_.clear();
  pairsEpoch_.Next();
}

void PairOutput::RemoveFromUploadFilesList(const std::string& path) {
  UploadFileList kept;
  for (const std::string& file : uploadFiles_.Paths())
    if (!EqualIgnoringCase(file, path)) kept.Add(file);
  uploadFiles_ = std::move(kept);
}

std::string PairOutput::GetInformationString() const {
  if (pairs_.empty()) return "No files to update";
  return "Update " + std::to_string(pairs_.size()) + (pairs_.size() == 1 ? " file" : " files");
}

void PairOutput::KeepProblem(std::size_t pair, const std::string& reason) {
  if (reason.empty())
    problems_.erase(pair);
  else
    problems_[pair] = reason;
}

std::vector<clsZEBTemplate::Problem> PairOutput::Problems() const {
  std::vector<Problem> problems = clsZEBTemplate::Problems();
  for (const auto& [pair, reason] : problems_)
    problems.push_back({pair < pairs_.size() ? pairs_[pair].DestinationFileName() : std::string(), reason});
  return problems;
}

Shown PairOutput::LastShown() const {
  Shown shown;
  for (const auto& [pair, page] : shownPages_) shown.pages.push_back(page);
  return shown;
}

PageDigest::When PairOutput::DigestWhen(std::size_t pair) const {
  const auto last = shownPages_.find(pair);
  return last == shownPages_.end() || last->second.digest.Asked() ? PageDigest::When::kNow
                                                                  : PageDigest::When::kWhenAsked;
}

std::vector<PublicPlace> PairOutput::PublicPlaces() const {
  std::vector<PublicPlace> places;
  for (const auto& [pair, page] : shownPages_)
    if (pair < pairs_.size() && !pairs_[pair].VerifyURL.empty())
      places.push_back(
          {PublicPlace::Kind::kPage, pairs_[pair].VerifyURL, page.digest.Text(), FirstLines(page.beginning)});
  return places;
}

void PairOutput::ReadPairSettings(const std::string& key, int outputIndex) {
  CopyAdditionalFiles = false;  // unless it is known where from
  pairs_ = ReadPairs(environment_.hive, key, outputIndex);
  for (const clsFileParameters& pair : pairs_)
    CheckEscapeWord("'" + pair.DestinationFileName() + "'", pair.EscapeValues);
  PairsChanged();
  mediaFolders_ = environment_.hive.ReadText(environment_.settingsRoot, kMediaFolders, "");
  ReadSettings<PairSwitches>(environment_.hive, key, std::to_string(outputIndex), kSwitches, *this);
}

void PairOutput::WritePairSettings(const std::string& key, int outputIndex) {
  WritePairs(environment_.hive, key, outputIndex, pairs_);
  WriteSettings<PairSwitches>(environment_.hive, key, std::to_string(outputIndex), kSwitches, *this);
}

std::string PairOutput::SettingsText() const {
  std::string text = PairsText(pairs_) + zeb::SettingsText<PairSwitches>(kSwitches, *this);
  if (CopyAdditionalFiles) text.append(kMediaFolders).append("=").append(mediaFolders_).append("\n");
  return text;
}

}  // namespace zeb
