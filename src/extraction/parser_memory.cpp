#include "extraction/parser_memory.h"

#include <tree_sitter/api.h>

#include <cstdlib>
#include <new>

namespace tarnwick::extraction {
namespace {

/// What `allocate` gives; asks the new-handler as long as that is nothing. No size gives nothing by right.
template <class Allocate>
void* insist(std::size_t size, const Allocate& allocate) {
  for (;;) {
    void* const memory = allocate();
    if (memory != nullptr || size == 0) return memory;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) std::abort();
    handler();
  }
}

void* allocate(std::size_t size) {
  return insist(size, [=] { return std::malloc(size); });
}

void* allocate_zeros(std::size_t count, std::size_t size) {
  return insist(count * size, [=] { return std::calloc(count, size); });
}

void* reallocate(void* memory, std::size_t size) {
  return insist(size, [=] { return std::realloc(memory, size); });
}

}  // namespace

void fail_parsers_as_new() {
  ts_set_allocator(allocate, allocate_zeros, reallocate, std::free);
}

}  // namespace tarnwick::extraction
