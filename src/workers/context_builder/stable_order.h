// A stable sort that any comparison may drive.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace tarnwick {

/// Sorts `items` so that a before b holds where `before(a, b)`; the input order stays among equals.
///
/// The values of a host, and numbers that are none, may compare inconsistently. std::stable_sort then may run
/// off its range; this merge sort looks at nothing but elements and ends whatever the answers are. When
/// `before` throws, the items are left in no particular state.
template <class Item, class Before>
void stable_order(std::vector<Item>& items, Before before) {
  std::vector<Item> merged(items.size());
  const auto at = [&](std::size_t index) { return items.begin() + static_cast<std::ptrdiff_t>(index); };
  for (std::size_t width = 1; width < items.size(); width *= 2) {
    auto out = merged.begin();
    for (std::size_t left = 0; left < items.size(); left += 2 * width) {
      const std::size_t middle = std::min(left + width, items.size());
      const std::size_t right = std::min(left + 2 * width, items.size());
      out = std::merge(std::move_iterator(at(left)), std::move_iterator(at(middle)),
                       std::move_iterator(at(middle)), std::move_iterator(at(right)), out, before);
    }
    items.swap(merged);
  }
}

}  // namespace tarnwick
