#include "app/ServiceEditor.h"

#include <exception>
#include <utility>

#include "platform/Operator.h"

namespace zeb {
namespace {

Outcome CheckInterval(std::int32_t seconds) {
  if (seconds >= 0 && seconds <= kLongestUpdateInterval) return {};
  return Failure{"an update interval is from 0 to " + std::to_string(kLongestUpdateInterval) + " seconds"};
}

}  // namespace

ServiceEditor::ServiceEditor(std::shared_ptr<frmService> window) : window_(std::move(window)) {}

Outcome ServiceEditor::Change(const std::function<Result<std::string>(StoredServices&)>& write) {
  clsZEBService& service = window_->service();
  const Environment& environment = service.environment();
  if (!window_->IsOpen()) return Failure{"the service is being closed"};
  std::string line;
  try {
    environment.hive.Transaction([&] {
      StoredServices stored(environment.hive, environment.settingsRoot);
      if (const Outcome there = stored.Check(Number()); !there) throw SettingsError(there.Reason());
      if (const Outcome read = window_->Reload(); !read) throw SettingsError(read.Reason());
      service.WriteStored();
      Result<std::string> written = write(stored);
      if (!written) throw SettingsError(written.Reason());
      line = std::move(written.Value());
    });
  } catch (const std::exception& error) {
    return Failure{error.what()};
  }
  if (const Outcome read = window_->Reload(); !read)
    return Failure{"the change is stored, but comes into use only when the settings are read again: " +
                   read.Reason()};
  environment.person.Note(service.settings.ServiceName + ": " + line);
  return {};
}

Outcome ServiceEditor::ApplySettings(const ServiceSettings& before, const ServiceSettings& after,
                                     const UpdateIntervals& intervals) {
  for (const auto& [type, seconds] : intervals)
    if (Outcome right = CheckInterval(seconds); !right) return right;
  return Change([&](const StoredServices& stored) -> Result<std::string> {
    if (const std::int32_t port = after.TolvanTCPControlPort; port != before.TolvanTCPControlPort)
      if (const Outcome isFree = stored.CheckControlPort(port, Number()); !isFree) return isFree.AsFailure();
    ServiceSettings wanted = window_->service().settings;
    TakeChanges(before, after, wanted);
    window_->service().WriteStored(wanted);
    for (const auto& [type, seconds] : intervals) window_->service().WriteStoredInterval(type, seconds);
    return std::string("settings changed");
  });
}

// ---- Outputs

Result<OutputName> ServiceEditor::Place(const OutputPtr& running) const {
  if (const auto place = window_->service().PlaceOf(running)) return *place;
  return Failure{"the output has been changed or removed meanwhile; look at it again"};
}

OutputPtr ServiceEditor::NewDraft(OutputType type) const {
  return window_->service().MakeDraft(type, 0);
}

OutputPtr ServiceEditor::DraftOf(const OutputPtr& running) const {
  const auto place = window_->service().PlaceOf(running);
  return place ? window_->service().MakeDraft(place->type, place->number) : nullptr;
}

Result<OutputName> ServiceEditor::AddOutput(OutputType type, clsZEBTemplate& draft) {
  OutputName added;
  const Outcome outcome = Change([&](StoredServices& stored) -> Result<std::string> {
    const Result<OutputName> output = stored.AddOutput(Number(), type);
    if (!output) return output.AsFailure();
    added = output.Value();
    window_->service().WriteStored(type, added.number, draft);
    return "output " + added.Text() + " added";
  });
  if (!outcome) return outcome.AsFailure();
  return added;
}

Outcome ServiceEditor::ReplaceOutput(const OutputPtr& running, clsZEBTemplate& draft) {
  return Change([&](StoredServices& stored) -> Result<std::string> {
    const Result<OutputName> output = Place(running);
    if (!output) return output.AsFailure();
    const OutputName& place = output.Value();
    if (const Outcome empty = stored.EmptyOutput(Number(), place); !empty) return empty.AsFailure();
    window_->service().WriteStored(place.type, place.number, draft);
    return "output " + place.Text() + " changed";
  });
}

Outcome ServiceEditor::RemoveOutput(const OutputPtr& running) {
  return Change([&](StoredServices& stored) -> Result<std::string> {
    const Result<OutputName> output = Place(running);
    if (!output) return output.AsFailure();
    if (const Outcome gone = stored.RemoveOutput(Number(), output.Value()); !gone) return gone.AsFailure();
    return "output " + output.Value().Text() + " removed";
  });
}

Outcome ServiceEditor::SetUpdateInterval(OutputType type, std::int32_t seconds) {
  if (Outcome right = CheckInterval(seconds); !right) return right;
  return Change([&](StoredServices&) -> Result<std::string> {
    window_->service().WriteStoredInterval(type, seconds);
    return "update interval of the " + std::string(NameOf(type)) + " outputs: " + std::to_string(seconds) +
           " s";
  });
}

}  // namespace zeb
