#include "cli/explain.h"

#include <spdlog/fmt/fmt.h>

#include "cli/terminal.h"
#include "text/surrogates.h"

namespace tarnwick::cli {

void Explanation::add(const Weighed& weighed) {
  const auto& [symbol, score, file_path] = weighed.item;
  const std::string place =
      fmt::format("{} {}:{}", symbol->fqn().view(), file_path.value_or("?").view(), symbol->start_line());
  const std::string outcome =
      weighed.taken ? fmt::format("taken    costs {} of {}", weighed.cost, weighed.left)
                    : fmt::format("skipped  costs {}, only {} left", weighed.cost, weighed.left);
  *out_ << fmt::format("{:2}. {:<36} score {:.4f}  {}\n", ++rank_, outcome, score,
                       visible(text::replace_surrogates(place)));
}

}  // namespace tarnwick::cli
