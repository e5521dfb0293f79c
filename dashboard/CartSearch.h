// CartSearch: finds carts by number or by words of their text lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CartStore.h"

namespace zeb {

struct FoundCart {
  std::int32_t number = 0;
  Cart cart;
};

// Those that hold every word of `query` in their lines, without regard to case, or whose number begins with
// it; by number, at most `most`. An empty query finds all. Takes a moment for a large table: for workers.
std::vector<FoundCart> SearchCarts(const CartTable& carts, std::string_view query, std::size_t most);

}  // namespace zeb
