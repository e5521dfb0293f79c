// The property dialog of a file pair, without the drawing: its texts, its lists, and what OK checks. Shared
// by the file output and the web output, which call the thing "File" and "Page". For the desktop program.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "outputs/file/clsFileParameters.h"
#include "text/Paths.h"

namespace zeb {

enum class FileParametersMode { kFile, kWeb };

inline constexpr std::string_view kFileParametersCaption = "File Parameters:";
inline constexpr std::string_view kCopyAdditionalCaption =
    "Also &copy additional files (ie pictures) to these locations";

struct FileParametersTexts {
  std::string source, destination;
  std::string onlyByRules, whenNoItem, whenAnyTrue;
  std::string browseSourceTitle, browseDestinationTitle;
};
FileParametersTexts TextsFor(FileParametersMode mode);

inline constexpr std::string_view kPageOptionsNote =
    "These options will only be used if the file is detected to be a web page:";
inline constexpr std::string_view kNoCacheCaption = "Automatically add tags so this file is not \"Cached\".";
inline constexpr std::string_view kRefreshCaption = "Add a tag to make browsers refresh this every";
inline constexpr std::string_view kRefreshUnit = "secs";
inline constexpr std::string_view kVersionsCaption = "Create chronologically numbered versions of this file.";

// In the order of UpdateRulesUsingItem.
inline constexpr std::array<std::string_view, 4> kRuleItems = {"Current Item", "Next Item", "Previous Item",
                                                               "'Coming Soon' Item"};

struct UpdateRuleText {
  clsFileParameters::UpdateFlag flag;
  std::string_view text;
};
inline constexpr std::array<UpdateRuleText, 6> kUpdateRules = {{
    {clsFileParameters::kAdvert, "When the item is an Advert"},
    {clsFileParameters::kCart, "When the item is a Cart"},
    {clsFileParameters::kJingle, "When the item is a Jingle"},
    {clsFileParameters::kSong, "When the item is a Song"},
    {clsFileParameters::kVoiceCustom, "When the item is a Voice Link"},
    {clsFileParameters::kUnknown, "When the type of the item is unknown"},
}};

inline constexpr std::string_view kBrowseExtension = "htm", kBrowsePattern = "*.ht*";
inline constexpr std::string_view kBrowseFilters =
    "Active Server Page (*.asp)|*.ASP|HTML Document (*.htm)|*.HT*|Text Files (*.TXT)|*.TXT|"
    "Web Information Files (*.WIN)|*.WIN|XML File (*.XML)|*.XML|All Files (*.*)|*.*|";

// What the person has entered.
struct FileParametersEntries {
  std::string source, destination;
  bool refresh = false;
  std::string refreshSeconds;
};

enum class FileParametersField { kSource, kDestination, kRefreshSeconds };
struct FileParametersProblem {
  std::string message;  // to show instead of closing the dialog; "" when all is well
  FileParametersField field = FileParametersField::kSource;  // at fault
};
// `separator` is the platform's: a path in file mode must not hold the other one's "/".
FileParametersProblem CheckFileParameters(FileParametersMode mode, const FileParametersEntries& entries,
                                          char separator = kPathSeparator);

}  // namespace zeb
