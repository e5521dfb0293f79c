#include "outputs/web/ServerFiles.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr int kMaxNamesTried = 100;

}  // namespace

Outcome ServerFiles::Replace(const std::string& from, const std::string& to, MovedPage& old, bool again) {
  old.page = to;
  if (again) {
    const Result<bool> waits = server_.Exists(from);
    if (!waits) return waits.AsFailure();
    const Result<bool> stands = server_.Exists(to);
    if (!stands) return stands.AsFailure();
    if (!waits.Value() && stands.Value()) {  // done, only the answer was lost
      if (PutBack(old)) old.aside.clear();
      return {};
    }
    if (!old.aside.empty() && !stands.Value()) return Finish(from, old);
    old.aside.clear();  // the old page was not moved
    if (!waits.Value()) return Failure{"'" + from + "' is no longer there"};
  }
  if (server_.MayReplace()) {
    Outcome replaced = server_.Rename(from, to);
    if (replaced || !server_.Connected()) return replaced;
    const Result<bool> inTheWay = server_.Exists(to);
    if (!inTheWay) return inTheWay.AsFailure();
    if (!inTheWay.Value()) return replaced;
  } else {
    const Result<bool> inTheWay = server_.Exists(to);
    if (!inTheWay) return inTheWay.AsFailure();
    if (!inTheWay.Value()) return server_.Rename(from, to);
  }
  if (Outcome moved = MoveAside(old); !moved) return moved;
  return Finish(from, old);
}

// The name is noted before it is used: the answer to the renaming may be lost.
Outcome ServerFiles::MoveAside(MovedPage& old) {
  const Result<std::string> name = FreeName(old.page);
  if (!name) return name.AsFailure();
  old.aside = name.Value();
  Outcome moved = server_.Rename(old.page, old.aside);
  if (!moved && server_.Connected()) old.aside.clear();
  return moved;
}

// With the old page aside.
Outcome ServerFiles::Finish(const std::string& from, MovedPage& old) {
  Outcome renamed = server_.Rename(from, old.page);
  if (renamed) server_.NoteCannotReplace();
  if (server_.Connected() && PutBack(old)) old.aside.clear();
  return renamed;
}

bool ServerFiles::PutBack(const MovedPage& old) {
  if (old.aside.empty()) return true;
  const Result<bool> stands = server_.Exists(old.page);
  if (!stands) return false;
  if (stands.Value()) {
    if (server_.Delete(old.aside)) return true;
  } else if (server_.Rename(old.aside, old.page)) {
    return true;
  }
  const Result<bool> stillAside = server_.Exists(old.aside);
  return stillAside && !stillAside.Value();
}

Result<std::string> ServerFiles::FreeName(const std::string& path) {
  std::mt19937 source{std::random_device{}()};
  std::uniform_real_distribution<double> fraction(0.0, 1.0);
  for (int tries = 0; tries < kMaxNamesTried; ++tries) {
    const auto number = std::min<std::int64_t>(99999, std::llround(fraction(source) * 99999 + 1));
    std::string name = std::string(FolderPart(path)) + "ZEB" + PaddedNumber(number, 5) + ".TMP";
    const Result<bool> taken = server_.Exists(name);
    if (!taken) return taken.AsFailure();
    if (!taken.Value()) return name;
  }
  return Failure{"no free name beside '" + path + "'"};
}

Outcome ServerFiles::Remove(const std::string& path) {
  const Result<std::string> name = FreeName(path);
  if (!name) return name.AsFailure();
  if (Outcome renamed = server_.Rename(path, name.Value()); !renamed) return renamed;
  return server_.Delete(name.Value());
}

}  // namespace zeb
