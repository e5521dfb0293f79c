// PageFiles: the files of the web page, part of the program (made by EmbedPage.cmake from dashboard/page/).
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace zeb {

struct PageFile {
  std::string_view name;  // "main.js"
  std::string_view bytes;
};

std::span<const PageFile> PageFiles();

}  // namespace zeb
