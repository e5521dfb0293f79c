// TemplateProgram: a template parsed once: what to copy, which values to put in, which sections to ask.
//
// Its views are into the template's text, which must outlive it. Never changed once it is made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "templates/SectionCondition.h"

namespace zeb {

struct TemplateStep {
  enum Kind : std::uint32_t {
    kLiteral,  // `text` as it is
    kValue,    // of names[index]
    kSection,  // conditions[index]; the steps of its body follow, then those of its whole content
    kHeader,   // the page's header goes here
    kPiece     // `text` by the general expansion: its constructs do not nest as people write them
  };
  std::string_view text;
  Kind kind = kLiteral;
  std::uint32_t index = 0;
  std::uint32_t bodySteps = 0, allSteps = 0;
};

struct TemplateProgram {
  std::vector<TemplateStep> steps;
  std::vector<std::string_view> names;       // of tags, each once
  std::vector<SectionCondition> conditions;  // each once; their `body` is of no use here

  std::size_t Bytes() const {
    return steps.capacity() * sizeof(TemplateStep) + names.capacity() * sizeof(std::string_view) +
           conditions.capacity() * sizeof(SectionCondition);
  }
};

}  // namespace zeb
