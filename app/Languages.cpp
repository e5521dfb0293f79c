#include "app/Languages.h"

#include <set>
#include <utility>

#include "text/LetterCase.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr std::string_view kStart = "lang-";
constexpr std::string_view kEnd = ".txt";
constexpr char kOwnFile[] = "language.txt";
constexpr std::size_t kMostNames = 500;

bool IsLanguageFile(const std::string& name) {
  return name.size() > kStart.size() + kEnd.size() && StartsWithIgnoringCase(name, kStart) &&
         EqualIgnoringCase(std::string_view(name).substr(name.size() - kEnd.size()), kEnd);
}

}  // namespace

Languages::Languages(FileSystem& files, const CodePages* codePages, const std::string& dataFolder,
                     const std::string& programFolder)
    : files_(files), codePages_(codePages) {
  for (const std::string& folder : {dataFolder, programFolder}) {
    if (folder.empty()) continue;
    folders_.push_back(JoinPath(folder, "Languages"));
    folders_.push_back(folder);
  }
  if (!programFolder.empty()) folders_.push_back(JoinPath(programFolder, "../share/zeb/Languages"));
}

std::vector<std::string> Languages::Names() const {
  std::set<std::string> names;
  for (const std::string& folder : folders_) {
    const auto listed = files_.List(folder);
    if (!listed) continue;  // most of them are not there
    for (const std::string& file : listed.Value())
      if (IsLanguageFile(file) && names.size() < kMostNames)
        names.insert(file.substr(kStart.size(), file.size() - kStart.size() - kEnd.size()));
  }
  names.erase("template");  // an empty one, for translators
  return {names.begin(), names.end()};
}

std::string Languages::Find(const std::string& fileName) const {
  for (const std::string& folder : folders_) {
    std::string path = JoinPath(folder, fileName);
    if (const auto info = files_.Stat(path); info && info->isRegular) return path;
  }
  return "";
}

Result<Languages::Loaded> Languages::Load(const std::string& name) const {
  // A name, and no path to somewhere else.
  if (name.find_first_of("/\\") != std::string::npos)
    return Failure{"the language '" + name + "' is no name of a language file"};
  const std::string fileName = name.empty() ? kOwnFile : std::string(kStart) + name + std::string(kEnd);
  const std::string path = Find(fileName);
  if (path.empty()) {
    if (name.empty()) return Loaded{};
    return Failure{"there is no language file '" + fileName +
                   "' in the folder 'Languages' of the data folder"};
  }
  const Result<std::string> bytes = files_.Read(path, kMaxLanguageFileBytes);
  if (!bytes) return bytes.AsFailure();
  LanguageFile file = ReadLanguageFile(bytes.Value(), [this](int codePage, std::string_view text) {
    if (codePages_ != nullptr) return codePages_->Decode(codePage, text);
    return codePage == kUtf8CodePage ? std::optional<std::string>(text) : std::nullopt;
  });
  Loaded loaded;
  loaded.language = std::make_shared<const Language>(std::move(file.language));
  const std::string where = "'" + path + "': ";
  for (const std::string& problem : file.problems) loaded.problems.push_back(where + problem);
  return loaded;
}

}  // namespace zeb
