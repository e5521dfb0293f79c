#include "outputs/file/PublishedNames.h"

#include "outputs/file/NumberedVersions.h"
#include "text/LetterCase.h"
#include "text/Paths.h"
#include "text/PercentEncoding.h"

namespace zeb {
namespace {

// Pages have few such files. One that is not noted is only not renewed.
constexpr std::size_t kMostCopies = 10'000;

}  // namespace

void PublishedNames::Entry::Set(const std::vector<clsFileParameters>& pairs) {
  Clear();
  for (const clsFileParameters& pair : pairs) Add(pair);
}

void PublishedNames::Entry::Add(const clsFileParameters& pair) {
  AddName(pair.DestinationFileName());
  AddName(pair.SourceFileName());
}

// A server path may hold the separators of any system.
void PublishedNames::Entry::AddName(std::string_view path) {
  const std::string name = LowerCase(path.substr(FolderPart(path).size()));
  if (name.empty()) return;
  names_.push_back(name);
  const std::lock_guard lock(owner_->mutex_);
  ++owner_->names_[name];
}

void PublishedNames::Entry::Clear() {
  const std::lock_guard lock(owner_->mutex_);
  for (const std::string& name : names_) {
    const auto found = owner_->names_.find(name);
    if (found != owner_->names_.end() && --found->second <= 0) owner_->names_.erase(found);
  }
  names_.clear();
}

bool PublishedNames::Contains(std::string_view name) const {
  const std::string lower = LowerCase(name);
  if (Has(lower)) return true;
  return name.find('%') != std::string_view::npos && Has(LowerCase(UrlDecode(name)));
}

bool PublishedNames::Has(const std::string& lowerCased) const {
  const std::string page = PageOfVersion(lowerCased);
  const std::lock_guard lock(mutex_);
  return names_.contains(lowerCased) || (!page.empty() && names_.contains(page));
}

void PublishedNames::NoteCopy(const std::string& place, const FileInfo& info) {
  const std::lock_guard lock(mutex_);
  if (copies_.size() < kMostCopies || copies_.contains(place)) copies_[place] = {info.size, info.modified};
}

bool PublishedNames::IsCopy(const std::string& place, const FileInfo& info) const {
  const std::lock_guard lock(mutex_);
  const auto found = copies_.find(place);
  return found != copies_.end() && found->second.size == info.size && found->second.modified == info.modified;
}

}  // namespace zeb
