// CartStore: looks a cart up by its number in the playout system's store of carts.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace zeb {

struct Cart {
  std::array<std::string, 3> lines;  // the cart's three text lines
  std::string serialisation;         // its own record in item-message form; may be empty
};

using CartTable = std::unordered_map<std::int32_t, Cart>;  // by number

class CartStore {
 public:
  virtual ~CartStore() = default;
  virtual std::optional<Cart> Find(std::int32_t cartNumber) = 0;
  // All of them as they are now, to be read on any thread; null where they cannot be listed.
  virtual std::shared_ptr<const CartTable> All() { return nullptr; }
};

}  // namespace zeb
