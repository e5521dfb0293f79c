#include "platform/windows/RegistryHive.h"

#include <algorithm>
#include <utility>

#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

// Of a service and its outputs, and those for all services.
constexpr std::size_t kMostKeysKnown = 32;

bool IsBelow(const std::string& key, const std::string& top) {
  return top.empty() || StartsWithIgnoringCase(key, top + "\\");
}

}  // namespace

RegistryPlace RegistryPlace::Machine() {
  return {RegistryTree::Root::kMachine, "", "Software\\Hexmoor", "Software\\Hexmoor\\ZEB changes under way"};
}

// The lock, and nothing half done by others, for as long as this lives.
class RegistryHive::Held {
 public:
  explicit Held(RegistryHive& hive) : hive_(hive) {
    if (hive_.held_ == 0 && !hive_.lock_.Take(hive_.patience_))
      throw SettingsError("registry key '" + hive_.tree_.ShownPath(hive_.place_.changeable) +
                          "' is being changed by another program");
    ++hive_.held_;
    if (hive_.held_ > 1) return;
    try {
      hive_.UndoWhatWasBrokenOff();
    } catch (...) {
      LetGo();
      throw;
    }
  }
  Held(const Held&) = delete;
  ~Held() { LetGo(); }

 private:
  void LetGo() {
    if (--hive_.held_ == 0) hive_.lock_.LetGo();
  }
  RegistryHive& hive_;
};

RegistryHive::RegistryHive(const RegistryPlace& place, std::chrono::milliseconds patience)
    : place_(place),
      tree_(place.root, place.top),
      besides_(place.root, ""),
      journal_(besides_, place.journal),
      lock_("ZEB settings in " + tree_.ShownPath(place.changeable)),
      patience_(patience) {
  const Held held(*this);
}

Result<std::unique_ptr<RegistryHive>> RegistryHive::Open(const RegistryPlace& place,
                                                         std::chrono::milliseconds patience) {
  try {
    return std::make_unique<RegistryHive>(place, patience);
  } catch (const SettingsError& error) {
    return Failure{error.what()};
  }
}

std::string RegistryHive::Changeable(const std::string& key) const {
  CheckSettingsKey(key);
  std::string normal = NormalSettingsKey(key);
  if (!IsBelow(normal, place_.changeable))
    throw SettingsError("registry key '" + tree_.ShownPath(normal) +
                        "' is not ZEB's to change; only what is below '" +
                        tree_.ShownPath(place_.changeable) + "' is");
  if (place_.top.empty() && (EqualIgnoringCase(normal, place_.journal) || IsBelow(normal, place_.journal)))
    throw SettingsError("registry key '" + tree_.ShownPath(normal) + "' is not for settings");
  return normal;
}

bool RegistryHive::KeyExists(const std::string& key) {
  const Held held(*this);
  return changes_.Exists(tree_, NormalSettingsKey(key));
}

std::vector<std::string> RegistryHive::SubKeys(const std::string& key) {
  const Held held(*this);
  return changes_.SubKeys(tree_, NormalSettingsKey(key));
}

std::vector<SettingsValue> RegistryHive::Values(const std::string& key) {
  const Held held(*this);
  std::vector<SettingsValue> values;
  for (RegistryValue& value : changes_.Values(tree_, NormalSettingsKey(key)))
    if (std::optional<SettingsData> data = FromRegistry(value))
      values.push_back({std::move(value.name), std::move(*data)});
  return values;
}

const RegistryHive::KnownValues& RegistryHive::ValuesKnownOf(const std::string& key) {
  const auto found = known_.find(key);
  if (found != known_.end()) return found->second;
  if (known_.size() >= kMostKeysKnown) known_.clear();
  KnownValues values;
  for (SettingsValue& value : Values(key)) values[LowerCase(value.name)] = std::move(value.data);
  return known_[key] = std::move(values);
}

std::optional<SettingsData> RegistryHive::Read(const std::string& key, const std::string& name) {
  if (reading_) {
    const KnownValues& values = ValuesKnownOf(key);
    const auto found = values.find(LowerCase(name));
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  const Held held(*this);
  const std::optional<RegistryValue> value = changes_.Read(tree_, NormalSettingsKey(key), name);
  return value ? FromRegistry(*value) : std::nullopt;
}

bool RegistryHive::HasValue(const std::string& key, const std::string& name) {
  return Read(key, name).has_value();
}

std::string RegistryHive::ReadText(const std::string& key, const std::string& name,
                                   const std::string& byDefault) {
  std::optional<SettingsData> data = Read(key, name);
  if (!data) return byDefault;
  if (auto* text = std::get_if<std::string>(&*data)) return std::move(*text);
  return PlainNumber(std::int64_t{static_cast<std::int32_t>(std::get<std::uint32_t>(*data))});
}

std::int32_t RegistryHive::ReadNumber(const std::string& key, const std::string& name,
                                      std::int32_t byDefault) {
  const std::optional<SettingsData> data = Read(key, name);
  if (!data) return byDefault;
  if (const auto* text = std::get_if<std::string>(&*data)) return LeadingInteger(*text);
  return static_cast<std::int32_t>(std::get<std::uint32_t>(*data));
}

void RegistryHive::WriteText(const std::string& key, const std::string& name, const std::string& text) {
  CheckSettingsValue(key, name, text);
  Write(key, name, text);
}

void RegistryHive::WriteNumber(const std::string& key, const std::string& name, std::int32_t number) {
  CheckSettingsValue(key, name, {});
  Write(key, name, static_cast<std::uint32_t>(number));
}

void RegistryHive::Write(const std::string& key, const std::string& name, const SettingsData& data) {
  const std::string path = Changeable(key);
  Transaction([&] { changes_.Write(tree_, path, ToRegistry(name, data)); });
}

void RegistryHive::CreateKey(const std::string& key) {
  const std::string path = Changeable(key);
  Transaction([&] { changes_.Create(tree_, path); });
}

void RegistryHive::DeleteKey(const std::string& key) {
  const std::string path = Changeable(key);
  Transaction([&] { changes_.Delete(path); });
}

void RegistryHive::DeleteValue(const std::string& key, const std::string& name) {
  const std::string path = Changeable(key);
  Transaction([&] { changes_.Remove(path, name); });
}

void RegistryHive::Transaction(const std::function<void()>& changes) {
  known_.clear();
  if (inTransaction_) return changes();
  {
    const Held held(*this);
    struct Collecting {
      explicit Collecting(RegistryHive& collector) : hive(collector) { hive.inTransaction_ = true; }
      ~Collecting() {
        hive.inTransaction_ = false;
        hive.changes_ = {};
        hive.known_.clear();
      }
      RegistryHive& hive;
    };
    const Collecting collecting(*this);
    changes();
    Commit();
  }
  if (onStored) onStored();
}

void RegistryHive::ReadTransaction(const std::function<void()>& reads) {
  if (reading_) return reads();
  const Held held(*this);
  struct Reading {
    explicit Reading(RegistryHive& reader) : hive(reader) {
      hive.reading_ = true;
      hive.tree_.BeginReading();
    }
    ~Reading() {
      hive.reading_ = false;
      hive.tree_.EndReading();
      hive.known_.clear();
    }
    RegistryHive& hive;
  };
  const Reading reading(*this);
  reads();
}

void RegistryHive::UndoWhatWasBrokenOff() {
  if (!journal_.Exists()) return;
  if (const std::optional<RegistryChanges> undoing = journal_.Read()) {
    undoing->ApplyTo(tree_);
    journal_.Remove();
    return;
  }
  try {
    journal_.Remove();
  } catch (const SettingsError&) {
    // It does not count; who may only read leaves it there.
  }
}

void RegistryHive::Commit() {
  tree_.EndReading();  // which this transaction may stand within
  const RegistryChanges undoing = changes_.Undoing(tree_);
  if (undoing.Empty()) return;
  if (undoing.IsOneCall()) return changes_.ApplyTo(tree_);
  ApplyOrUndo(undoing);
  tree_.Flush(place_.changeable);
}

void RegistryHive::ApplyOrUndo(const RegistryChanges& undoing) {
  try {
    journal_.Write(undoing);
    changes_.ApplyTo(tree_);
    journal_.Close();
  } catch (...) {
    try {
      UndoWhatWasBrokenOff();
    } catch (const SettingsError&) {
      // The next one that holds the lock tries again.
    }
    throw;
  }
  try {
    journal_.Remove();
  } catch (const SettingsError&) {
    // Closed, it does no harm.
  }
}

}  // namespace zeb
