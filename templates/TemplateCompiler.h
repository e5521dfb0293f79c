// TemplateCompiler: makes the program of a template, which expands to the very same text as the general
// expansion (TemplateExpander) makes of it.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "templates/TemplateProgram.h"

namespace zeb {

// A header that stands in the page when it is expanded, and not in its template.
struct HeaderInPage {
  std::size_t at = std::string_view::npos;  // offset in the template
  std::string_view text;                    // of this length in characters, and as harmless
};

// Whether a header may differ from the one that a page was compiled with: nothing in it opens or closes a
// construct.
bool IsHarmlessHeader(std::string_view header);

TemplateProgram CompileText(std::string_view text);
// A page in pieces of so many characters. Nothing: only the general expansion can do it.
std::optional<TemplateProgram> CompilePage(std::string_view page, const HeaderInPage& header,
                                           std::size_t characters);

}  // namespace zeb
