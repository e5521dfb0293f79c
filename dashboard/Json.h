// Json: JSON from outside, with bounds, and answers in JSON.
#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <string>
#include <string_view>

#include "dashboard/HttpMessage.h"
#include "platform/Result.h"

namespace zeb {

// At most 16 levels deep; the length is the request's. An empty text is an empty object.
Result<boost::json::object> ReadJsonObject(std::string_view text);

// A member that must be a text; "" when there is none or it is null. Fails when it is something else, naming
// it.
Result<std::string> JsonText(const boost::json::object& object, std::string_view name);

HttpAnswer JsonAnswer(const boost::json::value& value, int status = 200);

}  // namespace zeb
