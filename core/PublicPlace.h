// PublicPlace: an address at which everyone can see what an output has published, and what should be seen
// there.
#pragma once

#include <string>

#include "text/Encodings.h"

namespace zeb {

struct PublicPlace {
  enum class Kind {
    kPage,   // a page: byte for byte what was published
    kTitle,  // a page on which the present title stands somewhere
    kStream  // a stream: the title that its listeners are sent
  };
  Kind kind = Kind::kPage;
  std::string url;
  std::string digest;  // of a page: SHA-256 of its bytes
  std::string text;    // of a page its first lines, else the title
  // Of a stream: how the title was sent, which decides what it looks like when the server took it wrongly.
  CharacterSet characterSet = CharacterSet::kUtf8;
  bool mount = false;  // to a mount, always as UTF-8

  bool operator==(const PublicPlace&) const = default;
};

}  // namespace zeb
