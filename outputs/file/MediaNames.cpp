#include "outputs/file/MediaNames.h"

#include <algorithm>
#include <vector>

#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/PercentEncoding.h"

namespace zeb {
namespace {

using Words = std::vector<std::string_view>;

bool IsOneOf(const Words& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsPageEnding(std::string_view ending) {
  static const Words kEndings = {"htm",   "html",  "shtm", "shtml", "stm",  "xht",  "xhtm",  "xhtml", "mht",
                                 "mhtml", "phtml", "pht",  "phar",  "asp",  "aspx", "asa",   "asax",  "ascx",
                                 "ashx",  "asmx",  "cer",  "jsp",   "jsf",  "jspx", "js",    "mjs",   "css",
                                 "cgi",   "fcgi",  "pl",   "py",    "rb",   "cfm",  "cfc",   "htc",   "hta",
                                 "xsl",   "xslt",  "wasm", "wml",   "wmls", "ssi",  "config"};
  return ending.substr(0, 3) == "php" || IsOneOf(kEndings, ending);
}

// "INDEX~1.HTM": how some systems also call a file with a longer name.
bool IsShortForm(std::string_view name) {
  const std::string_view stem = name.substr(0, name.find('.'));
  const std::size_t tilde = stem.rfind('~');
  return stem.size() <= 8 && tilde != std::string_view::npos && tilde + 1 < stem.size() &&
         stem.find_first_not_of("0123456789", tilde + 1) == std::string_view::npos;
}

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

std::string WhyNot(std::string_view name) {
  if (name.empty()) return "it has no name";
  if (name[0] == '.') return "its name begins with a dot";
  if (name.back() == '.' || name.back() == ' ') return "its name ends in a dot or a blank";
  if (name.find_first_of("\\/:") != std::string_view::npos ||
      std::any_of(name.begin(), name.end(), IsControl))
    return "its name holds a control character, or one of \\ / :";
  if (EqualIgnoringAsciiCase(name, "web.config")) return "its name is that of a web server's settings";
  if (IsShortForm(name)) return "its name is the short form of another one";
  const bool isWork = name.size() >= 4 && EqualIgnoringAsciiCase(name.substr(name.size() - 4), ".tmp");
  return isWork ? "names that end in .tmp are those of pages on their way" : std::string();
}

}  // namespace

std::string WhyNoMediaName(std::string_view name) {
  std::string why = WhyNot(name);
  if (why.empty() && name.find('%') != std::string_view::npos) why = WhyNot(UrlDecode(name));
  return why;
}

bool IsPageName(std::string_view name) {
  const std::string plain = UrlDecode(LowerCase(name));
  const Words parts = SplitAt(plain, ".");
  return std::any_of(parts.begin() + 1, parts.end(), IsPageEnding);
}

bool IsPictureName(std::string_view name) {
  static const Words kEndings = {"jpg",  "jpeg", "jpe", "jfif", "png",  "gif",
                                 "webp", "bmp",  "ico", "tif",  "tiff", "avif"};
  const std::string lower = LowerCase(name);
  const std::size_t dot = lower.rfind('.');
  return dot != std::string::npos && IsOneOf(kEndings, std::string_view(lower).substr(dot + 1)) &&
         !IsPageName(name);
}

}  // namespace zeb
