// clsZEBTemplate: the contract that every output fulfils, and the skeleton whose behaviour they refine.
//
// A service holds its outputs by shared_ptr and drives them only through this class. PrepareOutput,
// UpdateOutput, FinishOutput and the cue operations run inside a task and may wait; they read what they
// publish from the snapshot only, for the service may be cleared and gone meanwhile. Two of them never run at
// the same time on one output; StopOutput and Cancel may come at any time.
//
// An output reports trouble through its status and its problems. It need not catch what its libraries throw:
// the service does, and keeps the words as the output's problem.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/OutputTypes.h"
#include "core/PublicPlace.h"
#include "core/ServiceSnapshot.h"
#include "core/Shown.h"
#include "platform/Control.h"
#include "platform/Environment.h"
#include "platform/WorkLane.h"

namespace zeb {

class clsZEBTemplate {
 public:
  explicit clsZEBTemplate(Environment& environment) : lane_(environment.loop), environment_(environment) {}
  virtual ~clsZEBTemplate() = default;
  clsZEBTemplate(const clsZEBTemplate&) = delete;
  clsZEBTemplate& operator=(const clsZEBTemplate&) = delete;

  // Attached to a running service, with the window's control through which it works (null for outputs that
  // need none). False: it cannot work, and says why by status and problem.
  virtual bool StartOutput(std::shared_ptr<Control> control);
  virtual bool StopOutput();
  virtual bool PrepareOutput(const SnapshotPtr& snapshot);
  // True: something was sent or written. The same snapshot as in the last run is a repetition: only what
  // failed then need be done again.
  virtual bool UpdateOutput(const SnapshotPtr& snapshot);
  virtual bool FinishOutput(const SnapshotPtr& snapshot);
  // The service is about to stop: what is under way ends as soon as its peer allows.
  virtual void Cancel() {}

  // The output's own values below the service's key, in the type's subkey, numbered by position.
  virtual void StoreOutputInformation(int serviceNumber, int outputIndex);
  virtual void GetOutputInformation(int serviceNumber, int outputIndex);
  // Its number is another now, since one before it has gone; what is stored of it has been moved.
  virtual void NoteNumber(int /*serviceNumber*/, int /*outputIndex*/) {}
  // All settings as text: equal texts mean that a restart would change nothing.
  virtual std::string SettingsText() const { return simpleTextFormat_; }

  virtual std::int32_t Status() { return status_; }
  virtual void SetStatus(std::int32_t status) { status_ = status; }
  virtual std::string GetShortTypeDescription() const { return "Template"; }
  virtual std::string GetStatusString(std::uint32_t& colour);
  virtual std::string GetInformationString() const { return {}; }

  // What fails, each named once: `thing` is the part of the output that fails (a page), "" for all of it;
  // `reason` is one line that names what fails and what to do about it.
  struct Problem {
    std::string thing, reason;
    bool operator==(const Problem&) const = default;
  };
  virtual std::vector<Problem> Problems() const;
  // The same in one line, for the service window; "" while nothing fails.
  std::string ProblemText() const;
  // Something fails, or the status says so.
  bool Fails();
  // Whether what fails may pass without anybody's doing, so that trying again makes sense.
  virtual bool MayPass() const { return true; }
  // Something was thrown in one of the operations.
  virtual void NoteFault(const std::string& what);

  // What the last run put out and what it could not, counted as the type counts (files, pages, requests).
  struct Tally {
    int published = 0, failed = 0;
    int givenUp = 0;  // for something newer that waits; the service has it shown again unless newer items are
  };
  virtual Tally LastTally() const { return tally_; }
  // Called by the service when UpdateOutput has ended: one text, published or failing, unless the output has
  // counted for itself.
  void CountRun(bool published);

  // What it published last, as far as it keeps that.
  virtual Shown LastShown() const { return shown_; }
  // Where the public should see it, as far as the operator has said so.
  virtual std::vector<PublicPlace> PublicPlaces() const { return {}; }
  // How far the file is that is being sent; nothing while none is.
  virtual std::optional<int> ProgressPercent() const { return std::nullopt; }

  // A worker of this output hangs: it is skipped until the worker comes back.
  bool Hangs() const { return lane_.Hangs(); }
  void WhenBack(std::function<void()> work) { lane_.WhenBack(std::move(work)); }

  // Set by the service: to be called (on the loop's thread) when what is shown may be lost, so that it is
  // sent again: a connection broke.
  std::function<void()> onShownLost;

  // Set by the service: what waits for this output while it is busy. Who sends for long asks now and then.
  struct Waiting {
    bool nearEnd = false, travel = false;  // cues
    SnapshotPtr news;                      // newer items; null: none
  };
  std::function<Waiting()> whatWaits;

  std::int32_t DelaySeconds = 0;  // everything is shown this much later; kept by the service for all types

 protected:
  WorkLane lane_;  // for whatever blocks
  Environment& environment_;
  std::shared_ptr<Control> control_;
  std::string simpleTextFormat_;
  std::string problem_;  // of the output as a whole; "" while nothing fails
  Shown shown_;

  // Notes a word of an "EscapeValues" setting that there is not. `where` names the output, or its pair.
  void CheckEscapeWord(const std::string& where, const std::string& word);

  // What has been published, of an output that sends texts. `templateText` "": it is not known which template
  // the text came from.
  void NoteShown(std::string_view text, const std::string& templateText, const std::string& simpleText,
                 ValueEscape escape, bool urlEncode = false);

  // For an output that counts for itself, in UpdateOutput.
  void SetTally(Tally tally) {
    tally_ = tally;
    counted_ = true;
  }

 private:
  std::int32_t status_ = kStatusOff;
  Tally tally_;
  bool counted_ = false;  // by the output, in the run under way
};

using OutputPtr = std::shared_ptr<clsZEBTemplate>;

// The operations that only some types have; the service finds them by dynamic cast.
class ScriptCommandOutput {  // encoder: near-end cue
 public:
  virtual ~ScriptCommandOutput() = default;
  virtual void SendScriptCommand(const std::string& commandType, const std::string& text) = 0;
};

class StringOutput {  // serial: near-end cue and travel flag
 public:
  virtual ~StringOutput() = default;
  // False: it did not leave.
  virtual bool SendString(const ServiceSnapshot& snapshot, const std::string& text) = 0;
  virtual bool SetTravelFlagActivated(const ServiceSnapshot& snapshot) = 0;
  virtual bool SetTravelFlagCleared(const ServiceSnapshot& snapshot) = 0;
};

}  // namespace zeb
