#include "platform/windows/RegistryJournal.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace zeb {
namespace {

constexpr char kClosing[] = "Pieces";
// A value may be of 1 MB in every registry.
constexpr std::size_t kPieceBytes = 512 * 1024;
constexpr std::size_t kMostPieces = 512;

}  // namespace

void RegistryJournal::Write(const RegistryChanges& undoing) {
  const std::string bytes = undoing.Bytes();
  const std::size_t pieces = bytes.size() / kPieceBytes + 1;
  if (pieces > kMostPieces)
    throw SettingsError("registry key '" + tree_.ShownPath(key_) +
                        "': too much to change at once; change a part at a time");
  tree_.Create(key_);
  for (std::size_t i = 0; i < pieces; ++i)
    tree_.Write(key_, {{std::to_string(i), REG_BINARY, bytes.substr(i * kPieceBytes, kPieceBytes)}});
  tree_.Write(key_, {ToRegistry(kClosing, static_cast<std::uint32_t>(pieces))});
}

std::optional<RegistryChanges> RegistryJournal::Read() const {
  const auto closing = tree_.Read(key_, kClosing);
  if (!closing) return std::nullopt;
  const auto data = FromRegistry(*closing);
  const auto* pieces = data ? std::get_if<std::uint32_t>(&*data) : nullptr;
  std::string bytes;
  bool whole = pieces != nullptr && *pieces <= kMostPieces;
  for (std::uint32_t i = 0; whole && i < *pieces; ++i) {
    const auto piece = tree_.Read(key_, std::to_string(i));
    whole = piece.has_value();
    if (whole) bytes += piece->data;
  }
  std::optional<RegistryChanges> undoing;
  if (whole) undoing = RegistryChanges::FromBytes(bytes);
  if (!undoing)
    throw SettingsError(
        "registry key '" + tree_.ShownPath(key_) +
        "' is damaged, which tells how to undo a change that was broken off: delete this key, "
        "and look whether all services are as they should be");
  return undoing;
}

void RegistryJournal::Close() {
  tree_.Remove(key_, kClosing);
}

void RegistryJournal::Remove() {
  Close();  // first, whatever the registry would take first
  tree_.Delete(key_);
}

}  // namespace zeb
