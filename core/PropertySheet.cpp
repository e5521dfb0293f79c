#include "core/PropertySheet.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/EnteredSettings.h"
#include "text/Lines.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

std::string TextOf(const Binding& value) {
  if (const auto* text = std::get_if<std::string*>(&value)) return **text;
  if (const auto* number = std::get_if<std::int32_t*>(&value)) return detail::SettingText(**number);
  if (const auto* isOn = std::get_if<bool*>(&value)) return detail::SettingText(**isOn);
  if (const auto* set = std::get_if<CharacterSet*>(&value)) return detail::SettingText(**set);
  return {};
}

void Put(const Binding& value, const std::string& text) {
  if (auto* const* to = std::get_if<std::string*>(&value)) **to = text;
  if (auto* const* to = std::get_if<std::int32_t*>(&value)) **to = LeadingInteger(text);
  if (auto* const* to = std::get_if<bool*>(&value)) **to = text == "1";
  if (auto* const* to = std::get_if<CharacterSet*>(&value)) **to = CharacterSetByName(text, **to);
}

FieldKind KindOf(const SettingInfo& setting, bool hasChoices) {
  if (setting.secret) return FieldKind::kPassword;
  if (setting.kind == SettingInfo::Kind::kYesNo) return FieldKind::kSwitch;
  if (setting.kind == SettingInfo::Kind::kCharacterSet || hasChoices) return FieldKind::kChoice;
  if (setting.kind == SettingInfo::Kind::kNumber || setting.entry.is == SettingIs::kNumber)
    return FieldKind::kNumber;
  return setting.entry.is == SettingIs::kNeededFile ? FieldKind::kFile : FieldKind::kText;
}

// The setting, with the field's caption for its name in what is said of it.
Result<CheckedSetting> Check(const PropertyField& field, const std::string& text) {
  const std::string name = field.caption.empty() ? field.name : PlainCaption(field.caption);
  SettingInfo setting = field.setting;
  setting.name = name;
  return CheckSetting({setting}, "", name, text);
}

}  // namespace

std::string EntryOf(const Entries& entries, std::string_view name) {
  const auto found = entries.find(name);
  return found == entries.end() ? std::string() : found->second;
}

std::string PlainCaption(std::string_view caption) {
  std::string plain;
  for (const char c : caption)
    if (c != '&') plain += c;
  plain.erase(plain.find_last_not_of(" :.") + 1);
  return plain;
}

const PropertyField* PropertySheet::Find(std::string_view name) const {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [name](const PropertyField& field) { return field.name == name; });
  return found == fields.end() ? nullptr : &*found;
}

PropertyField detail::MakeField(const FieldText& text, SettingInfo setting, Binding value) {
  PropertyField field;
  field.name = text.name;
  field.caption = text.caption;
  field.group = text.group;
  field.kind = text.kind.value_or(KindOf(setting, !text.choices.empty()));
  for (const ChoiceText& choice : text.choices)
    field.choices.push_back({std::string(choice.value), std::string(choice.text)});
  if (setting.kind == SettingInfo::Kind::kCharacterSet)
    for (const CharacterSet set : kCharacterSets)
      field.choices.push_back({std::string(CharacterSetName(set)), std::string(CharacterSetName(set))});
  field.enabledBy = text.enabledBy;
  field.help = text.help;
  field.chooserTitle = text.chooserTitle;
  field.filters = text.filters;
  field.stored = TextOf(value);
  field.setting = std::move(setting);
  field.value = value;
  return field;
}

PropertyField& AddField(PropertySheet& sheet, const FieldText& text, Binding value) {
  return AddField(sheet, text, SettingInfo{.name = text.name, .entry = {}, .byDefault = {}}, value);
}

PropertyField& AddField(PropertySheet& sheet, const FieldText& text, SettingInfo setting, Binding value) {
  return sheet.fields.emplace_back(detail::MakeField(text, std::move(setting), value));
}

bool IsEnabled(const PropertyField& field, const Entries& entries) {
  if (field.enabledBy.empty()) return true;
  const std::size_t equals = field.enabledBy.find('=');
  const std::string entered = EntryOf(entries, std::string_view(field.enabledBy).substr(0, equals));
  if (equals == std::string::npos) return entered == "1";
  const auto wanted = SplitAt(std::string_view(field.enabledBy).substr(equals + 1), "|");
  return std::find(wanted.begin(), wanted.end(), entered) != wanted.end();
}

std::optional<SheetProblem> Enter(const PropertySheet& sheet, const Entries& entries) {
  if (sheet.check)
    if (auto problem = sheet.check(entries)) return problem;
  std::vector<std::pair<const PropertyField*, std::string>> values;
  for (const PropertyField& field : sheet.fields) {
    if (field.value.index() == 0) continue;
    const auto entered = entries.find(field.name);
    if (entered == entries.end() || entered->second == field.stored) {
      values.emplace_back(&field, field.stored);
      continue;
    }
    Result<CheckedSetting> checked = Check(field, entered->second);
    if (checked)
      values.emplace_back(&field, std::move(checked.Value().text));
    else if (IsEnabled(field, entries))
      return SheetProblem{checked.Reason(), MessageIcon::kExclamation, field.name};
    else
      values.emplace_back(&field, field.stored);
  }
  for (const auto& [field, text] : values) Put(field->value, text);
  return std::nullopt;
}

}  // namespace zeb
