#include "templates/ZEB_Class_Functions.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/SharedTime.h"

namespace zeb {

std::size_t RefreshHeaderPlace(std::string_view page) {
  const std::size_t html = FindIgnoringAsciiCase(page, "<HTML");
  if (html == std::string_view::npos) return html;
  const std::size_t lineEnd = page.find("\r\n", html);
  return lineEnd == std::string_view::npos ? lineEnd : lineEnd + 2;
}

std::string RefreshHeaderText(const RefreshHeader& header, WallTime now) {
  // Programs at stations look for this line: the minutes twice and no seconds, no blank before the time.
  std::string text = "<!-- ZEB last updated this file...";
  text += FormatDateTime(now, "hh:mm:nn dddddd");
  text += " -->\r\n<meta content=\"Hexmoor ZEB ";
  text += header.version;
  text += "\" name=\"RE-GENERATOR\">\r\n";
  if (header.refreshSeconds > 0) {
    text += "<meta HTTP-EQUIV=\"REFRESH\" CONTENT=\"";
    AppendPlainNumber(text, static_cast<std::int64_t>(header.refreshSeconds));
    text += "\">\r\n";
  }
  if (header.noCache)
    text +=
        "<meta http-equiv=\"pragma\" content=\"no-cache\">\r\n"
        "<meta http-equiv=\"Expires\" content=\"0\">\r\n";
  text += "<!-- End of ZEB modifications -->\r\n\r\n";
  return text;
}

void InsertRefreshHeader(std::string& page, const RefreshHeader& header, WallTime now) {
  const std::size_t at = RefreshHeaderPlace(page);
  if (at != std::string::npos) page.insert(at, RefreshHeaderText(header, now));
}

}  // namespace zeb
