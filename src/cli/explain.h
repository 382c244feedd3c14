// Why a pack holds what it holds.
#pragma once

#include <cstddef>
#include <ostream>

#include "tarnwick/workers/context_builder.h"
#include "tarnwick/workers/retrieval.h"

namespace tarnwick::cli {

/// Writes a line for each symbol as the packer weighs it: rank, score, cost, and whether it was taken.
class Explanation {
 public:
  explicit Explanation(std::ostream& out) : out_(&out) {}

  void add(const Weighed& weighed);

 private:
  std::ostream* out_;
  std::size_t rank_ = 0;
};

}  // namespace tarnwick::cli
