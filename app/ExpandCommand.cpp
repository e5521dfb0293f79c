#include "app/ExpandCommand.h"

#include <charconv>

#include "platform/FileSystem.h"
#include "sources/ControlLink.h"
#include "sources/ItemIntake.h"
#include "sources/SilentWindow.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Encodings.h"

namespace zeb {
namespace {

bool ReadDigits(std::string_view text, std::size_t at, std::size_t count, int& number) {
  const char* start = text.data() + at;
  const auto [end, error] = std::from_chars(start, start + count, number);
  return error == std::errc() && end == start + count && *start != '-';
}

// "YYYY-MM-DD hh:mm:ss", or with a T between the two.
std::optional<WallTime> ReadMoment(std::string_view text) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (text.size() != 19 || text[4] != '-' || text[7] != '-' || (text[10] != ' ' && text[10] != 'T') ||
      text[13] != ':' || text[16] != ':')
    return std::nullopt;
  if (!ReadDigits(text, 0, 4, year) || !ReadDigits(text, 5, 2, month) || !ReadDigits(text, 8, 2, day) ||
      !ReadDigits(text, 11, 2, hour) || !ReadDigits(text, 14, 2, minute) || !ReadDigits(text, 17, 2, second))
    return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return WallTime(std::chrono::local_days(date)) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
         std::chrono::seconds(second);
}

void FeedMessages(ControlLink& link, std::string_view messages) {
  while (!messages.empty()) {
    const std::size_t end = messages.find('\n');
    std::string_view line = messages.substr(0, end);
    messages.remove_prefix(end == std::string_view::npos ? messages.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (!line.empty()) link.MessageFromController(1, line);
  }
}

Result<int> ReadServiceNumber(const std::string& text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < 1)
    return Failure{"'" + text + "' is no service number"};
  return number;
}

Outcome TakeValue(ExpandOptions& options, const std::string& option, const std::string& value) {
  if (option == "--simple-text") {
    options.simpleText = value;
  } else if (option == "--messages") {
    options.messagesFile = value;
  } else if (option == "--now") {
    options.now = ReadMoment(value);
    if (!options.now) return Failure{"'" + value + "' is no moment: write --now \"YYYY-MM-DD hh:mm:ss\""};
  } else {
    const Result<int> number = ReadServiceNumber(value);
    if (!number) return Failure{number.Reason()};
    options.service = number.Value();
  }
  return {};
}

}  // namespace

Result<ExpandOptions> ReadExpandOptions(const std::vector<std::string>& arguments) {
  ExpandOptions options;
  options.simpleText = kDefaultSimpleTextFormat;
  bool fileGiven = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& word = arguments[i];
    if (word == "--url-encode") {
      options.urlEncode = true;
    } else if (word == "--list-files") {
      options.listFiles = true;
    } else if (word == "--page") {
      options.page = true;
    } else if (word == "--simple-text" || word == "--messages" || word == "--now" || word == "--service") {
      if (++i == arguments.size()) return Failure{word + " needs a value"};
      if (const Outcome taken = TakeValue(options, word, arguments[i]); !taken)
        return Failure{taken.Reason()};
    } else if (word.size() > 1 && word.front() == '-') {
      return Failure{"expand has no option '" + word + "'"};
    } else if (fileGiven) {
      return Failure{"expand takes one template file"};
    } else {
      fileGiven = true;
      options.templateFile = word;
    }
  }
  if (options.page && options.urlEncode) return Failure{"pages are not URL-encoded: --page or --url-encode"};
  return options;
}

void RunExpandCommand(Environment& environment, const ExpandOptions& options, std::string_view templateBytes,
                      std::string_view messages, std::ostream& out, std::ostream& err) {
  ServiceEvents nobody;
  clsZEBService service(
      environment, [](OutputType) { return nullptr; }, nobody);
  service.SetItemCount(kMaxNextItems);
  if (options.service > 0) service.SetServiceNumber(options.service);
  SilentWindow window;
  ItemIntake intake(service, window);
  ControlLink link(intake, environment.carts);
  FeedMessages(link, messages);

  UploadFileList files;
  std::string bytes;
  if (options.page) {
    const FileEncoding encoding = DetectFileEncoding(templateBytes);
    const std::string page = UndoEscapedTags(DecodeFile(templateBytes, encoding));
    bytes = EncodeFile(ExpandPage(page, *service.TakeSnapshot(), options.simpleText, files), encoding);
  } else {
    bytes = ExpandTemplate(DecodeLenient(templateBytes), service, options.simpleText, files,
                           ValueEncoding{options.urlEncode, CharacterSet::kUtf8});
  }
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.flush();
  if (!options.listFiles) return;
  for (const std::string& path : files.Paths()) err << path << '\n';
  err.flush();
}

}  // namespace zeb
