// EnteredSettings: settings as a person enters them, by name, checked against their tables before anything is
// stored.
#pragma once

#include <string>
#include <string_view>

#include "core/SettingFields.h"
#include "platform/Result.h"
#include "platform/SettingsHive.h"

namespace zeb {

struct CheckedSetting {
  SettingInfo info;
  std::string text;  // as it is stored: "1" for "yes", a word in its usual spelling
};

// `of` is whose settings they are: "the File output". A name that there is not, and a value that is none, is
// a failure that says what is possible. Whether a file is there is not looked at.
Result<CheckedSetting> CheckSetting(const SettingList& list, std::string_view of, std::string_view name,
                                    std::string_view value);

// `name`: with the output's number, where it has one.
void WriteSetting(SettingsHive& hive, const std::string& key, const std::string& name,
                  const CheckedSetting& setting);

}  // namespace zeb
