// What listeners see of an output: its text as it arrives in the output's own character set, what of it had
// to be replaced, and how much of the room it takes.
#pragma once

#include <QString>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/clsZEBTemplate.h"
#include "text/Encodings.h"

namespace zeb {

inline constexpr std::size_t kRdsCharacters = 64;  // of a radio text

// How an output writes. Without a set: pages are in the encoding of their templates.
struct OutputRoom {
  std::optional<CharacterSet> set{};
  std::optional<std::size_t> most{};  // characters; nothing: as many as there are
  bool asLabel = false;               // they count as a DAB label takes them on the air
};
OutputRoom RoomOf(const clsZEBTemplate& output);

struct ListenersText {
  struct Replaced {
    qsizetype at = 0, length = 0;  // in `text`; nothing may be in its place
    QString from, to;
    bool operator==(const Replaced&) const = default;
  };
  QString text;
  std::vector<Replaced> replaced;
  QString cut{};               // what found no room
  std::size_t characters = 0;  // as the set counts them

  QString Counter(const OutputRoom& room) const;  // "61 / 64", "61"
  QString Lost() const;                           // what of it is replaced or cut, each once; "": nothing
  bool operator==(const ListenersText&) const = default;
};
// `published` as the output says it; `wanted` is what it was made of, "" when that is not known.
ListenersText SeenByListeners(const std::string& published, const std::string& wanted,
                              const OutputRoom& room);
// What the published text's template gives against the snapshot; "" when the template is not known.
std::string WantedText(const Shown& shown, const SnapshotPtr& snapshot);

}  // namespace zeb
