// clsZEBTemplate: the contract that every output fulfils, and the skeleton whose behaviour they refine.
//
// A service holds its outputs by shared_ptr and drives them only through this class. PrepareOutput,
// UpdateOutput, FinishOutput and the cue operations run inside a task and may wait; another event can remove
// the output from its service meanwhile, so they must not count on being in a collection. Two of them never
// run at the same time on one output. An output reports trouble through its status and ProblemText only; what
// it throws, the service catches and logs.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/OutputTypes.h"
#include "platform/Control.h"
#include "platform/Environment.h"

namespace zeb {

class clsZEBService;

class clsZEBTemplate {
 public:
  explicit clsZEBTemplate(Environment& environment) : environment_(environment) {}
  virtual ~clsZEBTemplate() = default;
  clsZEBTemplate(const clsZEBTemplate&) = delete;
  clsZEBTemplate& operator=(const clsZEBTemplate&) = delete;

  // Attached to a running service, with the window's control through which it works (null for outputs that
  // need none). False: it cannot work, and says why by status and ProblemText.
  virtual bool StartOutput(std::shared_ptr<Control> control);
  virtual bool StopOutput();
  virtual bool PrepareOutput(clsZEBService& service);
  virtual bool UpdateOutput(clsZEBService& service);
  virtual bool FinishOutput(clsZEBService& service);

  // The output's own values below the service's key, in the type's subkey, numbered by position.
  virtual void StoreOutputInformation(int serviceNumber, int outputIndex);
  virtual void GetOutputInformation(int serviceNumber, int outputIndex);

  virtual std::int32_t Status() { return status_; }
  virtual void SetStatus(std::int32_t status) { status_ = status; }
  virtual std::string GetShortTypeDescription() const { return "Template"; }
  virtual std::string GetStatusString(std::uint32_t& colour);
  virtual std::string GetInformationString() const { return {}; }

  // One line that names what fails and what to do about it; empty while nothing does. For the journal and the
  // service window, beside the fixed status texts.
  virtual std::string ProblemText() const { return {}; }

 protected:
  Environment& environment_;
  std::shared_ptr<Control> control_;
  std::string simpleTextFormat_;

 private:
  std::int32_t status_ = kStatusOff;
};

// The operations that only some types have; the service finds them by dynamic cast.
class ScriptCommandOutput {  // encoder: near-end cue
 public:
  virtual ~ScriptCommandOutput() = default;
  virtual void SendScriptCommand(const std::string& commandType, const std::string& text) = 0;
};

class StringOutput {  // serial: near-end cue and travel flag
 public:
  virtual ~StringOutput() = default;
  virtual void SendString(clsZEBService& service, const std::string& text) = 0;
  virtual void SetTravelFlagActivated(clsZEBService& service) = 0;
  virtual void SetTravelFlagCleared(clsZEBService& service) = 0;
};

}  // namespace zeb
