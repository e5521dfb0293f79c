#include "sources/ControlLink.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "diagnostics/hxGeneral.h"
#include "sources/ItemMessage.h"
#include "text/Encodings.h"
#include "text/HexEscapes.h"
#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Parameters.h"

namespace zeb {

namespace {

constexpr const char* kWaiting = "Information Update received, waiting..";
constexpr const char* kUpdating = "Information Update received, Updating..";
constexpr const char* kForcing = "Forcing Information Update, waiting..";

std::string UpperCaseAscii(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), AsciiUpper);
  return upper;
}

// The value of the first of the keys that has one.
std::string FirstValue(std::string_view arguments, std::initializer_list<std::string_view> keys) {
  for (const std::string_view key : keys) {
    std::string value = ParameterValue(arguments, key);
    if (!value.empty()) return value;
  }
  return {};
}

clsZEBItemInfo EmptyItem(int slot) {
  clsZEBItemInfo item;
  item.ItemIndexNumber = static_cast<std::int16_t>(slot);
  return item;
}

// The two debug lines around the handling of a message, which stand with the message's text.
class MessageTrace {
 public:
  MessageTrace(int connectionIndex, std::string_view line) {
    if (DebugLevelAllows(5))
      WriteDebugLine(
          "Started MessageFromController (" + std::to_string(connectionIndex) + ") :" + DecodeLenient(line),
          5, LineKind::kStarted);
  }
  ~MessageTrace() { WriteDebugLine("Finished MessageFromController", 5, LineKind::kFinished); }
  MessageTrace(const MessageTrace&) = delete;
  MessageTrace& operator=(const MessageTrace&) = delete;
};

}  // namespace

ControlLink::ControlLink(ItemIntake& intake, CartStore& carts) : intake_(intake), carts_(carts) {}

void ControlLink::MessageFromController(int connectionIndex, std::string_view line) {
  const MessageTrace trace(connectionIndex, line);
  Relay(connectionIndex, line);
  try {
    const FirstWord words = CutFirstWord(line);
    Dispatch(UpperCaseAscii(words.word), words.rest);
  } catch (const std::exception&) {
    ReportException("handling a message from the controller", Report::kQuietly);
  }
}

void ControlLink::Relay(int connectionIndex, std::string_view line) {
  try {
    if (relay && relay(connectionIndex, line)) DebugLine("Bouncing to Client ZEB");
  } catch (const std::exception&) {
    ReportException("bouncing a message", Report::kQuietly);
  }
}

void ControlLink::Dispatch(const std::string& command, std::string_view arguments) {
  if (HandleItem(command, arguments)) return;
  if (command == "SET")
    HandleBulkLoad(arguments);
  else if (command.starts_with("CLEAR_"))
    HandleClear(command);
  else if (command == "SET_PRESENTER" || command == "SET_LOGIN")
    HandlePresenter(arguments);
  else if (command == "SET_SHOW" || command == "SET_HOUR")
    HandleShow(arguments);
  else if (command == "UPDATE")
    intake_.NoteInformation(kForcing);
  else if (command == "CURRENTITEM_NEAREND" && currentItemNearEnd)
    currentItemNearEnd();
}

ControlLink::SetItem ControlLink::SetterFor(std::string_view slot) {
  if (slot == "CURRENT_ITEM") return &ItemIntake::SetCurrentItem;
  if (slot == "NEXT_ITEM") return &ItemIntake::SetNextItem;
  if (slot == "PREVIOUS_ITEM") return &ItemIntake::SetPreviousItem;
  if (slot == "COMINGSOON_ITEM") return &ItemIntake::SetComingSoonItem;
  return nullptr;
}

bool ControlLink::HandleItem(std::string_view command, std::string_view arguments) {
  constexpr std::string_view kStart = "SET_";
  if (!command.starts_with(kStart)) return false;
  const SetItem set = SetterFor(command.substr(kStart.size()));
  if (!set) return false;
  clsZEBItemInfo item;
  if (ParseItemMessage(arguments, intake_, carts_, item)) (intake_.*set)(&item, true);
  return true;
}

void ControlLink::HandleClear(std::string_view command) {
  const std::string_view what = command.substr(std::string_view("CLEAR_").size());
  if (const SetItem set = SetterFor(what)) {
    const clsZEBItemInfo empty;
    (intake_.*set)(&empty, true);
    return;
  }
  clsZEBService& service = intake_.service();
  if (what == "NEXT_ITEMS")
    for (int i = 1; i <= service.ItemCount(); ++i) service.SetNextItem(i, EmptyItem(i));
  else if (what == "PREVIOUS_ITEMS")
    for (int i = 1; i <= service.ItemCount(); ++i) service.SetPreviousItem(i, EmptyItem(i));
  else
    return;
  intake_.window().RefreshItemList();
  intake_.NoteInformation(kWaiting);
}

void ControlLink::HandlePresenter(std::string_view arguments) {
  clsZEBService& service = intake_.service();
  service.PresenterReference =
      intake_.Bounded("PresenterReference", FirstValue(arguments, {"PRESENTER", "REFERENCE", "LOGIN"}));
  service.PresenterFullName = intake_.Bounded("PresenterFullName", ParameterValue(arguments, "FULLNAME"));
  if (!service.settings.ProcessPresenterUpdates) return;
  intake_.NoteInformation(kWaiting);
  intake_.window().RefreshItemList();
}

void ControlLink::HandleShow(std::string_view arguments) {
  clsZEBService& service = intake_.service();
  service.ShowReference =
      intake_.Bounded("ShowReference", FirstValue(arguments, {"SHOW", "HOUR", "REFERENCE"}));
  service.ShowTitle = intake_.Bounded("ShowTitle", FirstValue(arguments, {"TITLE", "DESCRIPTION"}));
  if (!service.settings.ProcessShowUpdates) return;
  intake_.NoteInformation(kWaiting);
  intake_.window().RefreshItemList();
}

void ControlLink::HandleBulkLoad(std::string_view arguments) {
  const FirstWord log = CutFirstWord(arguments);
  if (!EqualIgnoringAsciiCase(log.word, "LOG") || log.rest.empty()) return;
  const std::vector<std::string_view> elements = SplitAt(log.rest, ",");
  if (!EqualIgnoringAsciiCase(elements[0], "CURRENTITEMS")) return;
  const int count = static_cast<int>(elements.size()) - 1;
  const bool escaped = count > 0 && elements[1].find("Reference={22}") != std::string_view::npos;
  DebugLine("Received ", count, " items");

  // One element beyond the slots, so that the log shows a list that is too long.
  const int taken = std::min(count, kMaxNextItems + 2);
  for (int i = 1; i <= taken; ++i) {
    const std::string_view element = elements[static_cast<std::size_t>(i)];
    clsZEBItemInfo item;
    if (!ParseItemMessage(escaped ? UndoHexEscapes(element) : std::string(element), intake_, carts_, item))
      continue;
    if (i == 1) {
      intake_.SetCurrentItem(&item, false);
    } else {
      item.ItemIndexNumber = static_cast<std::int16_t>(i - 1);
      intake_.SetNextItem(&item, false);
    }
  }
  // A shorter list takes away what a longer one left behind.
  for (int slot = std::max(count, 1); slot <= kMaxNextItems; ++slot) {
    const clsZEBItemInfo empty = EmptyItem(slot);
    intake_.SetNextItem(&empty, false);
  }
  intake_.window().RefreshItemList();
  intake_.NoteInformation(kUpdating);
  intake_.window().UpdateOutputsNow();
}

std::string ControlLink::HelpText() {
  return "-\r\n"
         "-Commands:\r\n"
         "-   HELP                 :   Displays this help message\r\n"
         "-   LIST                 :   Displays a test message\r\n"
         "-   SERVICE_NAME?        :   Displays the service name of QSV \r\n"
         "-   STATUS?              :   Displays the current status of QSV and \r\n"
         "-                            details of other connections\r\n"
         "-   VERSION?             :   Displays the current version of QSV \r\n"
         "-\r\n"
         "-Tolvan Control Commands:\r\n"
         "-   NET_CONTROL?         :   Shows the name of the current Controller \r\n"
         "-   NET_CONTROL_LOGON    :   Request to make yourself the Controller \r\n"
         "-   NET_CONTROL_LOGOFF   :   Request to release yourself as Controller \r\n";
}

}  // namespace zeb
