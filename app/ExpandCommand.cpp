#include "app/ExpandCommand.h"

#include "platform/FileSystem.h"
#include "sources/ControlLink.h"
#include "sources/ItemIntake.h"
#include "sources/SilentWindow.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Encodings.h"

namespace zeb {
namespace {

void FeedMessages(ControlLink& link, std::string_view messages) {
  while (!messages.empty()) {
    const std::size_t end = messages.find('\n');
    std::string_view line = messages.substr(0, end);
    messages.remove_prefix(end == std::string_view::npos ? messages.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (!line.empty()) link.MessageFromController(1, line);
  }
}

}  // namespace

Outcome RunExpandCommand(Environment& environment, const ExpandOptions& options,
                         std::string_view templateBytes, std::string_view messages, std::ostream& out,
                         std::ostream& err) {
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
    const std::string text = UndoEscapedTags(DecodeFile(templateBytes, encoding));
    const ValueEncoding values{.escape = EscapeFor(options.escape, options.templateFile, text)};
    const std::optional<std::string> page =
        ExpandPage(text, *service.TakeSnapshot(), options.simpleText, files, values);
    if (!page) return Failure{"the page would be larger than " + std::to_string(kMaxPageBytes) + " bytes"};
    bytes = EncodeFile(*page, encoding);
  } else {
    const std::string text = DecodeLenient(templateBytes);
    bytes = ExpandTemplate(
        text, service, options.simpleText, files,
        {.urlEncode = options.urlEncode, .escape = EscapeFor(options.escape, options.templateFile, text)});
  }
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.flush();
  if (!options.listFiles) return {};
  for (const std::string& path : files.Paths()) err << path << '\n';
  err.flush();
  return {};
}

}  // namespace zeb
