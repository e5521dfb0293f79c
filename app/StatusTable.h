// StatusTable: the state of a publisher as a table for a person who has to see at once what is wrong.
#pragma once

#include <boost/json/value.hpp>
#include <string>

namespace zeb {

// `list` is the answer to GET /api/v1/services. Ages are reckoned from its own time. Stations that fail stand
// last, where the eye is when the table has scrolled by.
std::string StatusTable(const boost::json::value& list);

// Whether anything at all fails.
bool SomethingFails(const boost::json::value& list);

}  // namespace zeb
