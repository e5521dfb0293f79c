// The template language as its rules are told to people: step by step on one text that is rebuilt at every
// replacement, with positions that count from 1. Slow and plain; what the fast expansion is measured by.
#pragma once

#include <string>
#include <string_view>

#include "core/clsZEBService.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb::literal {

std::string Expand(std::string_view text, const clsZEBService& service, std::string_view simpleText,
                   UploadFileList& uploadFiles, ValueEncoding values = {});

// Piece by piece: the farthest place for each cut is found by trying them all.
std::string ExpandPage(std::string_view page, const clsZEBService& service, std::string_view simpleText,
                       UploadFileList& uploadFiles, std::size_t characters);

}  // namespace zeb::literal
