// CartStore: looks a cart up by its number in the playout system's store of carts.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace zeb {

struct Cart {
  std::array<std::string, 3> lines;  // the cart's three text lines
  std::string serialisation;         // its own record in item-message form; may be empty
};

class CartStore {
 public:
  virtual ~CartStore() = default;
  virtual std::optional<Cart> Find(std::int32_t cartNumber) = 0;
};

}  // namespace zeb
