// A log's text without the carriage returns that it has on Windows.
#pragma once

#include <string>

namespace zeb {

inline std::string PlainLines(std::string text) {
  std::erase(text, '\r');
  return text;
}

}  // namespace zeb
