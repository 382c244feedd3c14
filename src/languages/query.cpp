#include "languages/query.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>

#include "languages/built_in.h"

namespace tarnwick::languages {

namespace {

using Clock = std::chrono::steady_clock;

bool fits(const Step& step, const SyntaxNode& node) {
  if (step.field != 0 && step.field != node.field) return false;
  if (step.symbols.empty()) return !step.named || node.is_named;
  return std::ranges::find(step.symbols, node.symbol) != step.symbols.end();
}

bool holds(const Step& step, std::string_view node) {
  return std::ranges::all_of(step.predicates, [&](const Step::Predicate& predicate) {
    return (std::ranges::find(predicate.values, node) != predicate.values.end()) == predicate.wanted;
  });
}

/// Tries forms at nodes: a search over the choices of a node for each step, the first choice first.
class Matcher {
 public:
  Matcher(const SyntaxTree& tree, std::string_view text, Clock::time_point deadline)
      : tree_(tree), text_(text), deadline_(deadline) {}

  /// Calls `emit` with the captures of each match of `form` whose root is at `root`; how many there were.
  template <class Emit>
  std::size_t match(const Form& form, std::uint32_t root, const Emit& emit) {
    if (!is_acceptable(form.steps.front(), root)) return 0;
    places_.assign(form.steps.size(), root);
    return choose(form, 1, emit);
  }

  bool out_of_time() const { return out_of_time_; }

  /// Counts a step of work, and now and then looks at the clock.
  bool tick() {
    constexpr std::uint32_t TICKS_PER_LOOK = 1 << 14;
    if (++ticks_ % TICKS_PER_LOOK == 0) out_of_time_ = out_of_time_ || Clock::now() > deadline_;
    return !out_of_time_;
  }

 private:
  bool is_acceptable(const Step& step, std::uint32_t place) const {
    const SyntaxNode& node = tree_[place];
    if (!fits(step, node) || !holds(step, node.in(text_))) return false;
    if (step.absent.empty()) return true;
    for (std::uint32_t child = place + 1; child < node.after; child = tree_[child].after)
      if (std::ranges::find(step.absent, tree_[child].field) != step.absent.end()) return false;
    return true;
  }

  bool is_last(std::uint32_t place, std::uint32_t parent) const {
    for (place = tree_[place].after; place < tree_[parent].after; place = tree_[place].after)
      if (tree_[place].is_named) return false;
    return true;
  }

  template <class Emit>
  std::size_t choose(const Form& form, std::size_t number, const Emit& emit) {
    if (number == form.steps.size()) return emit_captures(form, emit);
    const Step& step = form.steps[number];
    const std::uint32_t parent = places_[step.parent];
    std::size_t count = 0;
    for (auto place = first_choice(form, number); place < tree_[parent].after; place = tree_[place].after) {
      if (!tick()) return count;
      if (is_acceptable(step, place) && (!step.last || is_last(place, parent))) {
        places_[number] = place;
        count += choose(form, number + 1, emit);
      }
      if (step.adjacent && tree_[place].is_named) break;
    }
    return count;
  }

  /// Behind the sibling that an earlier step took, or the parent's first child.
  std::uint32_t first_choice(const Form& form, std::size_t number) const {
    const std::size_t parent = form.steps[number].parent;
    for (std::size_t before = number - 1; before > parent; --before)
      if (form.steps[before].parent == parent) return tree_[places_[before]].after;
    return places_[parent] + 1;
  }

  template <class Emit>
  std::size_t emit_captures(const Form& form, const Emit& emit) {
    captured_.clear();
    for (std::size_t i = 0; i < form.steps.size(); ++i)
      for (const Capture* capture : form.steps[i].captures)
        captured_.push_back({capture, &tree_[places_[i]]});
    emit(captured_);
    return 1;
  }

  const SyntaxTree& tree_;
  std::string_view text_;
  Clock::time_point deadline_;
  std::uint32_t ticks_ = 0;
  bool out_of_time_ = false;
  std::vector<std::uint32_t> places_;  // of the node that each step took
  std::vector<Captured> captured_;
};

}  // namespace

Query::Query(const TSLanguage* grammar, std::string_view text, std::string_view name)
    : patterns_(read_patterns(grammar, text, name)) {
  for (const Form& form : patterns_.forms) {
    if (form.steps.front().symbols.empty()) of_any_symbol_.push_back(&form);
    for (const std::size_t symbol : form.steps.front().symbols) {
      if (symbol >= by_symbol_.size()) by_symbol_.resize(symbol + 1);
      by_symbol_[symbol].push_back(&form);
    }
  }
}

bool Query::run(const SyntaxTree& tree, std::string_view text, Clock::time_point deadline,
                const std::function<void(const Match&)>& visit) const {
  Matcher matcher(tree, text, deadline);
  for (std::uint32_t root = 0; root < tree.size() && matcher.tick(); ++root) {
    std::uint32_t pattern = 0;
    std::size_t count = 0;  // of the pattern's matches here
    const auto try_form = [&](const Form* form) {
      if (form->pattern != pattern) count = 0;
      pattern = form->pattern;
      if (form->without && count > 0) return;
      count += matcher.match(*form, root, [&](const std::vector<Captured>& captured) {
        visit({pattern, patterns_.options[pattern], captured});
      });
    };
    const std::size_t symbol = tree[root].symbol;
    if (symbol < by_symbol_.size()) std::ranges::for_each(by_symbol_[symbol], try_form);
    std::ranges::for_each(of_any_symbol_, try_form);
  }
  return !matcher.out_of_time();
}

const Query* query_of(const Language& language) {
  struct Slot {
    std::once_flag once;
    std::unique_ptr<const Query> query;
  };
  static std::vector<Slot> slots(languages().size());
  if (!language.grammar) return nullptr;
  auto& slot = slots.at(static_cast<std::size_t>(&language - languages().data()));
  std::call_once(slot.once, [&] {
    std::string text;
    for (const auto& file : language.queries) text += query_text(file);
    slot.query = std::make_unique<const Query>(language.grammar(), text, language.name);
  });
  return slot.query.get();
}

}  // namespace tarnwick::languages
