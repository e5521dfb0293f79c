#include "app/SetCommand.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

#include "sources/frmManualZEB.h"

namespace zeb {

namespace {

using Options = std::map<std::string, std::string>;

struct Target {
  const char* name;
  ManualSlot slot;
};
constexpr Target kTargets[] = {{"current", ManualSlot::kCurrent},
                               {"next", ManualSlot::kNext},
                               {"previous", ManualSlot::kPrevious},
                               {"coming", ManualSlot::kComingSoon}};
constexpr Target kPromotions[] = {{"next", ManualSlot::kPromoteNext}, {"coming", ManualSlot::kPromoteComing}};

template <std::size_t N>
const Target* FindTarget(const Target (&targets)[N], const std::string& name) {
  for (const Target& target : targets)
    if (name == target.name) return &target;
  return nullptr;
}

Result<std::int32_t> ReadNumber(const std::string& option, const std::string& text) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < 0)
    return Failure{option + " takes a number, not '" + text + "'"};
  return number;
}

Result<std::int32_t> ReadType(const std::string& text) {
  static const std::map<std::string, std::int32_t> words = {
      {"song", 7}, {"link", 3}, {"spot", 4}, {"other", 2}};
  const auto found = words.find(text);
  if (found != words.end()) return found->second;
  return ReadNumber("--type", text);
}

Result<std::string> ItemMessageOf(ManualSlot slot, const Options& options) {
  const auto value = [&](const char* name) {
    const auto found = options.find(name);
    return found == options.end() ? std::string() : found->second;
  };
  ManualEntry entry;
  entry.slot = slot;
  entry.itemName = value("--title");
  entry.artist = value("--artist");
  entry.notes = value("--notes");
  entry.cartNumber = value("--cart");
  if (!entry.cartNumber.empty())
    if (const auto number = ReadNumber("--cart", entry.cartNumber); !number) return Failure{number.Reason()};
  if (options.count("--type") > 0) {
    const auto type = ReadType(value("--type"));
    if (!type) return Failure{type.Reason()};
    entry.itemType = type.Value();
  }
  return ManualItemMessage(entry);
}

}  // namespace

Result<SendOptions> ReadSetOptions(const std::vector<std::string>& arguments) {
  if (arguments.empty())
    return Failure{"set what? current, next, previous, coming, promote, presenter or show"};
  const std::string& what = arguments[0];
  std::size_t at = 1;
  const Target* target = FindTarget(kTargets, what);
  if (what == "promote") {
    target = arguments.size() > at ? FindTarget(kPromotions, arguments[at++]) : nullptr;
    if (!target) return Failure{"set promote takes next or coming"};
  }
  std::vector<std::string> allowed;
  if (target)
    allowed = {"--title", "--artist", "--type", "--cart", "--notes"};
  else if (what == "presenter")
    allowed = {"--reference", "--name"};
  else if (what == "show")
    allowed = {"--reference", "--title"};
  else
    return Failure{"'" + what + "' cannot be set"};

  Options options;
  std::vector<std::string> sending;  // for `send`
  for (; at < arguments.size(); at += 2) {
    const std::string& name = arguments[at];
    const bool toSend = name == "--host" || name == "--port" || name == "--controller";
    if (!toSend && std::find(allowed.begin(), allowed.end(), name) == allowed.end())
      return Failure{std::string("set ").append(what).append(" has no option '").append(name).append("'")};
    // An empty text is a value; an empty host is not.
    if (at + 1 == arguments.size() || (toSend && arguments[at + 1].empty()))
      return Failure{name + " needs a value"};
    if (!toSend) {
      options[name] = arguments[at + 1];
      continue;
    }
    sending.push_back(name == "--controller" ? "--name" : name);
    sending.push_back(arguments[at + 1]);
  }

  std::string message;
  if (target) {
    Result<std::string> item = ItemMessageOf(target->slot, options);
    if (!item) return Failure{item.Reason()};
    message = std::move(item.Value());
  } else {
    if (options["--reference"].empty()) return Failure{"set " + what + " needs --reference"};
    message = what == "show" ? ManualShowMessage(options["--reference"], options["--title"])
                             : ManualPresenterMessage(options["--reference"], options["--name"]);
  }
  sending.push_back("--");
  sending.push_back(std::move(message));
  return ReadSendOptions(sending);
}

}  // namespace zeb
