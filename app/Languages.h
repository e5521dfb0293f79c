// Languages: the language files that are at hand, and the one that is in use.
//
// Files "lang-NAME.txt" are looked for in the folder Languages of the data folder, in the data folder, and
// then the same beside the program and in what is installed with it; the first of a name counts. Without a
// name ("Language" of the settings root is empty) "language.txt" is used, where there is one.
//
// Looking at files blocks: call these on a worker.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CodePages.h"
#include "platform/Environment.h"
#include "platform/FileSystem.h"
#include "platform/Result.h"
#include "text/LanguageFile.h"

namespace zeb {

inline constexpr char kLanguageSetting[] = "Language";

class Languages {
 public:
  // Without code pages (null) only UTF-8 is read. All outlive this object.
  Languages(FileSystem& files, const CodePages* codePages, const std::string& dataFolder,
            const std::string& programFolder);
  explicit Languages(const Environment& environment)
      : Languages(environment.files, environment.codePages, environment.dataFolder,
                  environment.programFolder) {}

  // The names of the files that are there, sorted: "German" of lang-German.txt.
  std::vector<std::string> Names() const;

  struct Loaded {
    std::shared_ptr<const Language> language;  // null: English, as it is written
    std::vector<std::string> problems;         // lines of the file that were left out, with its name
  };
  // Fails when there is no such file, or it cannot be read.
  Result<Loaded> Load(const std::string& name) const;

 private:
  std::string Find(const std::string& fileName) const;  // its path; "" when it is nowhere

  FileSystem& files_;
  const CodePages* const codePages_;
  std::vector<std::string> folders_;
};

}  // namespace zeb
