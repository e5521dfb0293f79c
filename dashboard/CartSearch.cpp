#include "dashboard/CartSearch.h"

#include <algorithm>

#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

bool Holds(std::int32_t number, const Cart& cart, std::string_view query,
           const std::vector<std::string>& words) {
  if (std::to_string(number).starts_with(query)) return true;
  const std::string text = LowerCase(cart.lines[0] + "\n" + cart.lines[1] + "\n" + cart.lines[2]);
  return std::all_of(words.begin(), words.end(),
                     [&](const std::string& word) { return text.find(word) != std::string::npos; });
}

}  // namespace

std::vector<FoundCart> SearchCarts(const CartTable& carts, std::string_view query, std::size_t most) {
  query = TrimBlanks(query);
  std::vector<std::string> words;
  for (const std::string_view word : SplitAt(query, " "))
    if (!word.empty()) words.push_back(LowerCase(word));
  std::vector<std::int32_t> numbers;
  for (const auto& [number, cart] : carts)
    if (Holds(number, cart, query, words)) numbers.push_back(number);
  std::sort(numbers.begin(), numbers.end());
  if (numbers.size() > most) numbers.resize(most);
  std::vector<FoundCart> found;
  found.reserve(numbers.size());
  for (const std::int32_t number : numbers) found.push_back({number, carts.at(number)});
  return found;
}

}  // namespace zeb
