#include "dashboard/PageRoutes.h"

#include <string>
#include <string_view>
#include <utility>

#include "dashboard/PageFiles.h"

namespace zeb {

namespace {

constexpr std::pair<std::string_view, std::string_view> kTypes[] = {
    {".html", "text/html; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".svg", "image/svg+xml"},
};

std::string TypeOf(std::string_view name) {
  for (const auto& [ending, type] : kTypes)
    if (name.ends_with(ending)) return std::string(type);
  return "application/octet-stream";
}

HttpAnswer FileAnswer(std::string_view name) {
  for (const PageFile& file : PageFiles()) {
    if (file.name != name) continue;
    HttpAnswer answer;
    answer.type = TypeOf(name);
    answer.body = file.bytes;
    return answer;
  }
  return ErrorAnswer(404, "the page has no such file");
}

}  // namespace

void AddPageRoutes(Router& router) {
  router.Add("GET", "/", Need::kNothing, [](const HttpRequest&) { return FileAnswer("index.html"); });
  router.Add("GET", "/page/{file}", Need::kNothing,
             [](const HttpRequest& request) { return FileAnswer(request.Argument("file")); });
}

}  // namespace zeb
