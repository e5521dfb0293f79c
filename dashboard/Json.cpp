#include "dashboard/Json.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "text/OneLine.h"

namespace zeb {

namespace {

constexpr std::size_t kMostDepth = 16;

}  // namespace

Result<boost::json::object> ReadJsonObject(std::string_view text) {
  if (text.empty()) return boost::json::object();
  boost::json::parse_options options;
  options.max_depth = kMostDepth;
  boost::json::error_code error;
  boost::json::value value = boost::json::parse({text.data(), text.size()}, error, {}, options);
  if (error) return Failure{"the body is no JSON: " + OneLine(error.message())};
  if (!value.is_object()) return Failure{"the body must be a JSON object"};
  return std::move(value.as_object());
}

Result<std::string> JsonText(const boost::json::object& object, std::string_view name) {
  const boost::json::value* value = object.if_contains({name.data(), name.size()});
  if (!value || value->is_null()) return std::string();
  if (!value->is_string()) return Failure{"\"" + std::string(name) + "\" must be a text"};
  return std::string(value->as_string());
}

HttpAnswer JsonAnswer(const boost::json::value& value, int status) {
  HttpAnswer answer;
  answer.status = status;
  answer.body = boost::json::serialize(value) + "\n";
  return answer;
}

}  // namespace zeb
