#include "index/packed_uses.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "index/errors.h"

namespace tarnwick::index {
namespace {

// The head of a use: its type and what follows, below the position of its name.
constexpr std::uint64_t TYPE_BITS = 7;
constexpr std::uint64_t QUALIFIED = 8;
constexpr std::uint64_t SEVERAL = 16;
constexpr unsigned NAME_SHIFT = 5;

std::vector<std::int64_t> distinct(std::vector<std::int64_t> numbers) {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

}  // namespace

std::string pack(const std::vector<UseRow>& uses, const std::vector<std::int64_t>& names) {
  std::string out;
  const std::vector<std::int64_t> known = distinct(names);
  put(out, known.size());
  std::int64_t last = 0;
  for (const std::int64_t name : known)
    put(out, static_cast<std::uint64_t>(name - std::exchange(last, name)));
  std::unordered_map<std::string_view, std::size_t> places;
  std::string qualifiers;
  for (const UseRow& use : uses) {
    if (!use.qualifier.empty() && places.try_emplace(use.qualifier, places.size()).second)
      put(qualifiers, use.qualifier);
  }
  put(out, places.size());
  out += qualifiers;
  put(out, uses.size());
  std::int64_t line = 0;
  std::int64_t enclosing = 0;
  for (std::size_t i = 0; i < uses.size(); ++i) {
    const UseRow& use = uses[i];
    const auto name =
        static_cast<std::uint64_t>(std::lower_bound(known.begin(), known.end(), names[i]) - known.begin());
    put(out, name << NAME_SHIFT | (use.qualifier.empty() ? 0 : QUALIFIED) | (use.count > 1 ? SEVERAL : 0) |
                 static_cast<std::uint64_t>(use.type));
    if (!use.qualifier.empty()) put(out, places.at(use.qualifier));
    if (use.count > 1) put(out, static_cast<std::uint64_t>(use.count));
    put_difference(out, use.line - std::exchange(line, use.line));
    const std::int64_t symbol = use.enclosing ? static_cast<std::int64_t>(*use.enclosing) + 1 : 0;
    put_difference(out, symbol - std::exchange(enclosing, symbol));
  }
  return out;
}

void PackedInput::damaged() {
  throw IndexError(IndexError::Kind::damaged, "the index holds damaged values");
}

PackedUses::PackedUses(std::string_view packed) : input_(packed) {
  names_.resize(input_.count());
  std::int64_t last = 0;
  for (std::int64_t& name : names_) name = last += static_cast<std::int64_t>(input_.number());
  qualifiers_.resize(input_.count());
  for (std::string_view& qualifier : qualifiers_) qualifier = input_.text();
  left_ = input_.count();
}

bool PackedUses::next(PackedUse& use) {
  if (left_ == 0) return false;
  --left_;
  const std::uint64_t head = input_.number();
  use.type = static_cast<std::int64_t>(head & TYPE_BITS);
  use.name = head >> NAME_SHIFT;
  const std::uint64_t qualifier = (head & QUALIFIED) != 0 ? input_.number() : qualifiers_.size();
  use.qualifier = (head & QUALIFIED) == 0          ? std::string_view()
                  : qualifier < qualifiers_.size() ? qualifiers_[qualifier]
                                                   : (PackedInput::damaged(), std::string_view());
  use.count = (head & SEVERAL) != 0 ? static_cast<std::int64_t>(input_.number()) : 1;
  use.line = line_ += input_.difference();
  use.enclosing = enclosing_ += input_.difference();
  if (use.name >= names_.size()) PackedInput::damaged();
  return true;
}

}  // namespace tarnwick::index
