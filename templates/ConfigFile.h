// Reading and replacing an initialisation file.
#pragma once

#include <string>

#include "platform/FileSystem.h"
#include "text/IniFile.h"

namespace zeb {

inline Result<IniFile> ReadConfigFile(FileSystem& files, const std::string& fileName) {
  const Result<std::string> bytes = files.Read(fileName, kMaxFileBytes);
  if (!bytes) return Failure{bytes.Reason()};
  return IniFile::FromBytes(bytes.Value());
}

// A file that is missing begins empty; one that cannot be read is left alone. Replaced in one step.
template <class Change>
Outcome ChangeConfigFile(FileSystem& files, const std::string& fileName, const Change& change) {
  IniFile file;
  if (files.Stat(fileName)) {
    Result<IniFile> read = ReadConfigFile(files, fileName);
    if (!read) return Failure{read.Reason()};
    file = std::move(read.Value());
  }
  change(file);
  const auto target = files.FindTarget(fileName, {});
  return target ? target.Value()->Replace(file.ToBytes()) : Outcome(target);
}

}  // namespace zeb
