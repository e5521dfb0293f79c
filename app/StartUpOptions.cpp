#include "app/StartUpOptions.h"

#include "text/LetterCase.h"

namespace zeb {
namespace {

constexpr std::string_view kImport = "/IMPORT=";

bool Holds(std::string_view line, std::string_view option) {
  return FindIgnoringAsciiCase(line, option) != std::string_view::npos;
}

// A shell has taken the quotes off already; where they are still there (a unit file, a shortcut), the name
// may have been split at its blanks, so the closing quote is looked for in the whole line.
Result<std::string> ImportFileName(const std::vector<std::string>& words, const std::string& line) {
  for (const std::string& word : words) {
    const std::size_t at = FindIgnoringAsciiCase(word, kImport);
    if (at == std::string::npos) continue;
    std::string name = word.substr(at + kImport.size());
    if (!name.empty() && name.front() == '"') {
      const std::size_t open = FindIgnoringAsciiCase(line, kImport) + kImport.size() + 1;
      const std::size_t close = line.find('"', open);
      if (close == std::string::npos) return Failure{"the file name behind /IMPORT= has no closing quote"};
      name = line.substr(open, close - open);
    }
    if (name.empty()) return Failure{"/IMPORT= needs a file name"};
    return name;
  }
  return std::string();
}

}  // namespace

Result<StartUpOptions> ReadStartUpOptions(const std::vector<std::string>& arguments) {
  StartUpOptions options;
  std::vector<std::string> words;  // the old options; the data folder's name must not be searched for them
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& word = arguments[i];
    if (word == "--home") {
      if (++i == arguments.size()) return Failure{"--home needs a folder"};
      options.home = arguments[i];
    } else if (word.rfind("--home=", 0) == 0) {
      options.home = word.substr(7);
    } else if (word == "--version") {
      options.showVersion = true;
    } else if (word == "--help" || word == "-h") {
      options.showHelp = true;
    } else if (word.size() > 1 && word.front() == '-') {
      return Failure{"unknown option '" + word + "'"};
    } else {
      words.push_back(word);
      options.commandLine += (options.commandLine.empty() ? "" : " ") + word;
    }
    if (word.rfind("--home", 0) == 0 && options.home.empty()) return Failure{"--home needs a folder"};
  }
  const std::string& line = options.commandLine;
  options.preserveTempFiles = Holds(line, "/PRESERVETEMPFILES");
  options.noPreviousCheck = Holds(line, "/NOPREVCHECK");
  options.schedule = Holds(line, "/SCHEDULE");
  options.silent = options.schedule || Holds(line, "/SILENT");
  options.minimised = options.schedule || Holds(line, "/MINIMIZED") || Holds(line, "/MINIMISED");
  Result<std::string> importFile = ImportFileName(words, line);
  if (!importFile) return importFile.AsFailure();
  options.importFile = importFile.Value();
  return options;
}

CommandTable StartUpTable(const std::string& program) {
  return {.name = program,
          .help = "the publisher",
          .options = {{{"--home"}, "folder", "the data folder"},
                      {{"--version"}, "", "the version"},
                      {{"--help", "-h"}, "", "all options"}},
          .words = {"=/IMPORT= /DEBUG /PRESERVETEMPFILES /NOPREVCHECK /SILENT /SCHEDULE /MINIMISED"},
          .manyWords = true};
}

}  // namespace zeb
