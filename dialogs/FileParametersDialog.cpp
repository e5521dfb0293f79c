#include "dialogs/FileParametersDialog.h"

#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr std::int32_t kMaxRefreshSeconds = 3600;

std::string ModeWord(FileParametersMode mode) {
  return mode == FileParametersMode::kFile ? "File" : "Page";
}

bool Holds(const std::string& text, char character) {
  return text.find(character) != std::string::npos;
}

bool IsSameFile(const std::string& a, const std::string& b, char separator) {
  return separator == '/' ? a == b : EqualIgnoringCase(a, b);
}

}  // namespace

FileParametersTexts TextsFor(FileParametersMode mode) {
  const std::string word = ModeWord(mode);
  FileParametersTexts texts;
  texts.source = "&Source " + word + " ...";
  texts.destination = "&Output " + word + " ";
  texts.onlyByRules = "Only update this " + word + " according to the following rules:";
  texts.whenNoItem = "Update this " + word + " when there is no item to display";
  texts.whenAnyTrue = "Update this " + word + " when any of the following are true:";
  texts.browseSourceTitle = "Select the Source " + word + " you want to use:";
  texts.browseDestinationTitle = "Select the name of the file that you want to be written:";
  return texts;
}

FileParametersProblem CheckFileParameters(FileParametersMode mode, const FileParametersEntries& entries,
                                          char separator) {
  using Field = FileParametersField;
  const bool fileMode = mode == FileParametersMode::kFile;
  if (entries.refresh) {
    std::int32_t seconds = LeadingInteger(entries.refreshSeconds);
    if (seconds < 1 || seconds > kMaxRefreshSeconds)
      return {"You can only give a number from 1 to 3600 seconds (1 Hour) for the Auto-Refresh",
              Field::kRefreshSeconds};
  }
  if (!fileMode && Holds(entries.destination, '\\'))
    return {
        "You cannot use the \"\\\" character in the destination file name.\n"
        "Web/WAP servers use a \"/\" instead",
        Field::kDestination};
  if (fileMode && separator != '/' && Holds(entries.destination, '/'))
    return {
        "You cannot use the \"/\" character in the destination file name.\n"
        "Files use the \"\\\" character instead",
        Field::kDestination};
  if (entries.source.empty())
    return {"You must choose a Source " + ModeWord(mode) + " to use.", Field::kSource};
  if (fileMode && IsSameFile(entries.source, entries.destination, separator))
    return {"The Source and Destination filenames cannot be the same in the same directory.",
            Field::kDestination};
  if (entries.destination.empty())
    return {"You must choose an Destination " + ModeWord(mode) + " to use.", Field::kDestination};
  return {};
}

}  // namespace zeb
