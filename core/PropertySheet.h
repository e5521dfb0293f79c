// PropertySheet: what a dialog of settings shows and checks, without the drawing: the fields in their groups,
// each bound to a member of a draft, and the check that OK makes.
//
// Names, ranges, words and secrecy are those of the settings' table (SettingFields.h); a sheet adds captions,
// groups and lists. It is made for one draft, which must outlive it, and changes it only by Enter.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "core/SettingFields.h"
#include "platform/Operator.h"

namespace zeb {

enum class FieldKind {
  kText,
  kPassword,
  kNumber,
  kSwitch,
  kChoice,     // one of a list
  kSuggested,  // a text, with a list of what it may be
  kTemplate,
  kTemplateList,  // with "|" between; a line each in the dialog
  kFile,
  kFolder,
  kPairs,  // of an output with pairs; the dialog's maker draws them, and their number is what is entered
  kNote    // a line of text without a value
};

struct ChoiceText {
  std::string_view value, text;
};

// One row of a sheet as its table says it. All texts are English; "&" before the letter that leads to the
// field where it has to be a certain one, else the dialog finds one.
struct FieldText {
  std::string_view group = {};  // begins a group of this caption; "-": one without a caption
  std::string_view name = {};   // of the setting; "" for a note
  std::string_view caption = {};
  std::optional<FieldKind> kind = {};  // none: by the setting
  std::span<const ChoiceText> choices = {};
  // The field that switches this one: "HTTPAuthenticate" (on), or "EncoderType=2|7" (one of these).
  std::string_view enabledBy = {};
  std::string_view help = {};
  // Of a file: the chooser's title, and its filters as "Text|*.EXT|Text|*.*".
  std::string_view chooserTitle = {}, filters = {};
};

using Binding = std::variant<std::monostate, std::string*, std::int32_t*, bool*, CharacterSet*>;

struct PropertyChoice {
  std::string value, text;
};

struct PropertyField {
  SettingInfo setting;
  std::string name;  // of the setting, with a number where it has one
  std::string caption;
  std::string group;  // as in FieldText
  FieldKind kind = FieldKind::kText;
  std::vector<PropertyChoice> choices;
  std::string enabledBy, help, chooserTitle, filters;
  Binding value;
  std::string stored;  // the draft's value as text, before anything was entered
};

// What has been entered, as text ("1" and "0" of a switch), by the fields' names.
using Entries = std::map<std::string, std::string, std::less<>>;
// "" for a name that there is not.
std::string EntryOf(const Entries& entries, std::string_view name);

struct SheetProblem {
  std::string text;  // what to show
  MessageIcon icon = MessageIcon::kExclamation;
  std::string field;  // to be put right
};

struct PropertySheet {
  std::string caption;
  std::vector<PropertyField> fields;
  // What OK looks at first, in its own order and words; none: nothing.
  std::function<std::optional<SheetProblem>(const Entries&)> check;

  const PropertyField* Find(std::string_view name) const;
};

// Whether the field may be used as the others stand.
bool IsEnabled(const PropertyField& field, const Entries& entries);

// Puts what was entered into the draft, all of it or nothing: the sheet's own check, then each field that was
// changed by its setting's range and words. What was not changed stays as it is stored, also when nobody
// could enter it; and so does a field that may not be used and holds what cannot be.
std::optional<SheetProblem> Enter(const PropertySheet& sheet, const Entries& entries);

namespace detail {
PropertyField MakeField(const FieldText& text, SettingInfo setting, Binding value);
}

// Adds the row's field, bound to the draft. A name that the table does not have is a fault of the program
// (std::logic_error).
template <class S>
PropertyField& AddField(PropertySheet& sheet, SettingTable<S> table, S& draft, const FieldText& text) {
  for (const SettingRow<S>& row : table)
    if (row.name == text.name) {
      const Binding value = std::visit([&](auto member) { return Binding(&(draft.*member)); }, row.member);
      return sheet.fields.emplace_back(detail::MakeField(text, InfoOf(row), value));
    }
  throw std::logic_error("no setting '" + std::string(text.name) + "'");
}

template <class S>
void AddFields(PropertySheet& sheet, SettingTable<S> table, S& draft, std::span<const FieldText> texts) {
  for (const FieldText& text : texts) AddField(sheet, table, draft, text);
}

// A row that is no setting of a table: a note, pairs, or a value that is kept elsewhere.
PropertyField& AddField(PropertySheet& sheet, const FieldText& text, Binding value = {});
PropertyField& AddField(PropertySheet& sheet, const FieldText& text, SettingInfo setting, Binding value);

// The caption without its mnemonic and what ends it.
std::string PlainCaption(std::string_view caption);

}  // namespace zeb
