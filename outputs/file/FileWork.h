// FileWork: one update of a file output, as a worker thread does it: pair by pair each template is read,
// expanded and put in place, so that one page at a time is held, a page whose template is an earlier pair's
// page sees the new one, and the pictures that a page shows are there before it.
//
// Owned by the output and by the worker that does a piece of it. While a worker has it, the loop's thread
// touches only what is marked so; afterwards everything. A piece ends after so many pairs, so that its time
// limit is passed by a share that hangs and not by many pages, and before a file, known only
// then, that another output is writing (a picture, or what is behind a link): the work then waits for its
// destinations anew, all at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "outputs/file/AdditionalCopy.h"
#include "outputs/file/FileJob.h"

namespace zeb {

class FileWork {
 public:
  struct Setting {
    FileSystem& files;
    std::shared_ptr<DestinationsInProgress> destinations;
    std::shared_ptr<TemplateStore> templates;
    MediaRules media;  // for additional files; its data folder is what relative names start from
    std::shared_ptr<PublishedNames> names;
    bool copyAdditional = false, alwaysCopy = false;  // as the output is set
    bool preserveTempFiles = false, trace = false;
  };
  // `listed`: files that go beside every page, besides those that the pages name.
  FileWork(Setting setting, std::vector<FileJob> jobs, UploadFileList listed);

  bool Ended() const { return givenUp_ || next_ == jobs_.size(); }
  // Whether Destinations must be claimed before the next piece.
  bool NeedsClaim() const { return !claim_; }
  std::vector<std::string> Destinations() const;
  void SetClaim(DestinationsInProgress::ClaimPtr claim) { claim_ = std::move(claim); }

  // On a worker. Whatever it throws or gives up, nothing stays claimed.
  void DoPiece();

  // The jobs that have ended since the last call.
  std::vector<FileJob> TakeEnded();
  // The additional files that were tried, by their targets; "": all is well.
  const std::map<std::string, std::string>& Copies() const { return copies_; }

  // At any time: it ends after the pair it is working on.
  void GiveUp() { givenUp_ = true; }
  bool GivenUp() const { return givenUp_; }
  const WorkPlace& Place() const { return place_; }

 private:
  using Claim = DestinationsInProgress::Claim;
  // How it is with a file that is to be written besides the destinations: held now, to be waited for once, or
  // another output's even after that.
  enum class Hold { kOurs, kWait, kTaken };
  Hold HoldAlso(Claim& claim, const std::string& path);
  bool Do(FileJob& job, Claim& claim);
  bool CopyBesidePages(Claim& claim);
  FileTools Tools() {
    return {setting_.files, *setting_.destinations,    *setting_.templates,
            place_,         setting_.media.dataFolder, setting_.preserveTempFiles,
            setting_.trace};
  }

  const Setting setting_;
  std::vector<FileJob> jobs_;
  std::size_t next_ = 0, taken_ = 0;
  UploadFileList listed_;
  std::map<std::string, std::size_t> folders_;  // of pages, and how many of the list are beside them
  std::map<std::string, std::string> copies_;
  std::set<std::string> waitedFor_;  // files that another output was writing
  DestinationsInProgress::ClaimPtr claim_;
  std::size_t pieceBytes_ = 0;  // of templates
  std::atomic<bool> givenUp_ = false;
  WorkPlace place_;
};

}  // namespace zeb
