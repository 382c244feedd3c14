#include "index/compression.h"

#include <zstd.h>

#include <cstddef>
#include <memory>

#include "index/packed_numbers.h"

namespace tarnwick::index {
namespace {

constexpr int COMPRESSION_LEVEL = 3;
constexpr unsigned long long MAX_UNPACKED = 1ULL << 28U;

}  // namespace

std::string compress(std::string_view bytes) {
  // Making a context costs more than compressing a small file.
  thread_local const std::unique_ptr<ZSTD_CCtx, std::size_t (*)(ZSTD_CCtx*)> context(ZSTD_createCCtx(),
                                                                                     ZSTD_freeCCtx);
  std::string packed(ZSTD_compressBound(bytes.size()), '\0');
  packed.resize(ZSTD_compressCCtx(context.get(), packed.data(), packed.size(), bytes.data(), bytes.size(),
                                  COMPRESSION_LEVEL));
  return packed;
}

std::string decompress(std::string_view packed) {
  const unsigned long long size = ZSTD_getFrameContentSize(packed.data(), packed.size());
  if (size > MAX_UNPACKED) PackedInput::damaged();
  std::string bytes(size, '\0');
  if (ZSTD_decompress(bytes.data(), bytes.size(), packed.data(), packed.size()) != size)
    PackedInput::damaged();
  return bytes;
}

}  // namespace tarnwick::index
