#include "dashboard/ItemBody.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "dashboard/Json.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

using Names = std::initializer_list<std::string_view>;

Result<boost::json::object> ReadFields(std::string_view body, Names names) {
  Result<boost::json::object> object = ReadJsonObject(body);
  if (!object) return object;
  for (const auto& member : object.Value()) {
    const std::string_view name(member.key().data(), member.key().size());
    if (std::find(names.begin(), names.end(), name) != names.end()) continue;
    std::string known;
    for (const std::string_view one : names) known.append(known.empty() ? "" : ", ").append(one);
    return Failure{"there is no \"" + std::string(name) + "\" here, only " + known};
  }
  return object;
}

// Texts, and numbers as they are written.
Result<std::string> TextOrNumber(const boost::json::object& object, std::string_view name) {
  const boost::json::value* value = object.if_contains({name.data(), name.size()});
  if (value && value->is_int64()) return std::to_string(value->as_int64());
  return JsonText(object, name);
}

Outcome ReadItem(const boost::json::object& object, ManualEntry& entry) {
  const std::pair<const char*, std::string ManualEntry::*> texts[] = {
      {"title", &ManualEntry::itemName}, {"artist", &ManualEntry::artist}, {"notes", &ManualEntry::notes}};
  for (const auto& [name, member] : texts) {
    Result<std::string> text = JsonText(object, name);
    if (!text) return text.AsFailure();
    entry.*member = std::move(text.Value());
  }
  Result<std::string> cart = TextOrNumber(object, "cart");
  if (!cart) return cart.AsFailure();
  if (!cart.Value().empty() && !WholeNumber<std::uint32_t>(cart.Value()))
    return Failure{"\"cart\" takes a number, not '" + cart.Value() + "'"};
  entry.cartNumber = std::move(cart.Value());
  const Result<std::string> type = TextOrNumber(object, "type");
  if (!type) return type.AsFailure();
  if (type.Value().empty()) return {};
  const auto code = ManualItemType(type.Value());
  if (!code) return Failure{"\"type\" takes song, link, spot, other or a number, not '" + type.Value() + "'"};
  entry.itemType = *code;
  return {};
}

struct Referred {
  std::string reference, text;
};

Result<Referred> ReadReferred(std::string_view body, std::string_view textName) {
  const auto object = ReadFields(body, {"reference", textName});
  if (!object) return object.AsFailure();
  Result<std::string> reference = TextOrNumber(object.Value(), "reference");
  if (!reference) return reference.AsFailure();
  if (reference.Value().empty()) return Failure{"\"reference\" is to be given"};
  Result<std::string> text = JsonText(object.Value(), textName);
  if (!text) return text.AsFailure();
  return Referred{std::move(reference.Value()), std::move(text.Value())};
}

}  // namespace

Result<std::string> ItemMessageOf(std::string_view body, ManualSlot slot) {
  const auto object = ReadFields(body, {"title", "artist", "type", "cart", "notes"});
  if (!object) return object.AsFailure();
  ManualEntry entry;
  entry.slot = slot;
  if (const Outcome read = ReadItem(object.Value(), entry); !read) return read.AsFailure();
  return ManualItemMessage(entry);
}

Result<std::string> PromoteMessageOf(std::string_view body) {
  const auto object = ReadFields(body, {"from", "title", "artist", "type", "cart", "notes"});
  if (!object) return object.AsFailure();
  const Result<std::string> from = JsonText(object.Value(), "from");
  if (!from) return from.AsFailure();
  ManualEntry entry;
  if (from.Value() == "next")
    entry.slot = ManualSlot::kPromoteNext;
  else if (from.Value() == "coming")
    entry.slot = ManualSlot::kPromoteComing;
  else
    return Failure{"\"from\" takes next or coming"};
  if (const Outcome read = ReadItem(object.Value(), entry); !read) return read.AsFailure();
  return ManualItemMessage(entry);
}

Result<std::string> PresenterMessageOf(std::string_view body) {
  const Result<Referred> read = ReadReferred(body, "name");
  if (!read) return read.AsFailure();
  return ManualPresenterMessage(read.Value().reference, read.Value().text);
}

Result<std::string> ShowMessageOf(std::string_view body) {
  const Result<Referred> read = ReadReferred(body, "title");
  if (!read) return read.AsFailure();
  return ManualShowMessage(read.Value().reference, read.Value().text);
}

}  // namespace zeb
