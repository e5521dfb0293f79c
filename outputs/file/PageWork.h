// PageWork: from a template file to the bytes of a page, as the file and the web output do it.
//
// All of it may be called on a worker thread: nothing is touched but the arguments and the file system.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Shown.h"
#include "outputs/file/clsFileParameters.h"
#include "platform/FileSystem.h"
#include "platform/Result.h"
#include "templates/PageTemplate.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

// How the pair puts values into its template.
ValueEncoding PageValues(const clsFileParameters& pair, std::string_view templateText);

// The finished page. `date`: as in RefreshHeader. Files that it names are added to `uploadFiles`. Fails when
// it would be larger than kMaxPageBytes.
Result<std::string> BuildPage(const PageTemplate& page, const clsFileParameters& pair,
                              const ServiceSnapshot& snapshot, UploadFileList& uploadFiles,
                              ValueEncoding values = {}, std::string_view date = {});

// What is to be seen of a page: its text, and the bytes that are published.
Shown::Page ShownPage(const clsFileParameters& pair, std::string_view text, std::string_view bytes,
                      PageDigest::When digest = PageDigest::When::kNow);
// Notes what it was made of.
void NoteSource(Shown::Page& shown, const clsFileParameters& pair, std::shared_ptr<const PageTemplate> page,
                const SnapshotPtr& snapshot, const ValueEncoding& values);

// A new temporary file that holds the page's bytes. The caller deletes it, unless it is
// to be kept: then its name tells the next start so. What the debug log is to say of it is added to `trace`.
enum class TempPage { kPassing, kKept };
inline constexpr const char* kTempPrefix = "TMP";
Result<std::string> WriteTempPage(FileSystem& files, std::string_view bytes, TempPage kind,
                                  std::vector<std::string>* trace = nullptr);

// What to do about a failure, to be put behind its reason.
inline constexpr std::string_view kCheckTemplate = "; check the template's name and rights";
inline constexpr std::string_view kCheckTempFolder = "; check the space in the temporary folder";
inline constexpr std::string_view kCheckDestination =
    "; check that the folder is there, that ZEB may write to it and that the disk has room";

}  // namespace zeb
