#include "templates/ZEB_Class_Functions.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/SharedTime.h"

namespace zeb {

void InsertRefreshHeader(std::string& page, std::int32_t refreshSeconds, bool noCache, WallTime now,
                         std::string_view version) {
  const std::size_t html = FindIgnoringAsciiCase(page, "<HTML");
  if (html == std::string::npos) return;
  const std::size_t lineEnd = page.find("\r\n", html);
  if (lineEnd == std::string::npos) return;

  // Programs at stations look for this line: the minutes twice and no seconds, no blank before the time.
  std::string header = "<!-- ZEB last updated this file...";
  header += FormatDateTime(now, "hh:mm:nn dddddd");
  header += " -->\r\n<meta content=\"Hexmoor ZEB ";
  header += version;
  header += "\" name=\"RE-GENERATOR\">\r\n";
  if (refreshSeconds > 0) {
    header += "<meta HTTP-EQUIV=\"REFRESH\" CONTENT=\"";
    AppendPlainNumber(header, static_cast<std::int64_t>(refreshSeconds));
    header += "\">\r\n";
  }
  if (noCache)
    header +=
        "<meta http-equiv=\"pragma\" content=\"no-cache\">\r\n"
        "<meta http-equiv=\"Expires\" content=\"0\">\r\n";
  header += "<!-- End of ZEB modifications -->\r\n\r\n";
  page.insert(lineEnd + 2, header);
}

}  // namespace zeb
