#include "app/HelpTopics.h"

#include "app/CommandLine.h"
#include "dialogs/TemplateBuilder.h"

namespace zeb {
namespace {

constexpr char kTags[] = "tags";

std::string Topics(const CommandTable& program, const std::string& between) {
  std::string topics;
  for (const CommandTable& command : program.commands) topics += command.name + between;
  return topics + kTags;
}

std::string Tags() {
  std::string text = "Tags of templates. NOW may also be NEXT, PREVIOUS or COMING:\n";
  for (const BuilderSlot slot : {BuilderSlot::kNow, BuilderSlot::kSpecial}) {
    text += '\n';
    for (const std::string_view field : BuilderFields(slot))
      if (const std::string tag = BuilderInsertion(slot, field); !tag.empty()) text += "  " + tag + '\n';
  }
  return text;
}

}  // namespace

std::string HelpTopicWords(const CommandTable& program) {
  return "=" + Topics(program, " ");
}

Result<std::string> HelpOn(const CLI::App& program, const std::vector<std::string>& words) {
  if (words == std::vector<std::string>{kTags}) return Tags();
  if (std::string help = HelpOf(program, words); !help.empty()) return help;
  std::string asked;
  for (const std::string& word : words) asked += (asked.empty() ? "" : " ") + word;
  return Failure{"there is no help on '" + asked + "', but on " + Topics(TableOf(program), ", ")};
}

}  // namespace zeb
