// A page that was damaged on disk parses as often as not, and then answers with other symbols than the repository
// has. SQLite notices what breaks its own structure alone, so each page carries a checksum: its last 16 bytes are a
// random number of the file and the hash of everything before it, seeded with the page's position. The layer sits
// between SQLite and its usual one for files ("unix"), and passes on all but reads and writes of pages.
#include "index/page_checks.h"

#include <sqlite3.h>
#include <xxhash.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "index/schema.h"

namespace tarnwick::index {
namespace {

// Where the header in the first page has what is asked of it, and how long that header is.
constexpr std::size_t RESERVED_AT = 20;
constexpr std::size_t VERSION_AT = 60;
constexpr std::size_t APPLICATION_AT = 68;
constexpr std::size_t HEADER_BYTES = 100;
/// The first schema whose files have checksums.
constexpr std::uint32_t FIRST_CHECKED_SCHEMA = 9;

constexpr std::size_t HASH_BYTES = 8;

/// A main database file. SQLite allocates it, with the file of the layer below behind it.
struct CheckedFile {
  sqlite3_file base;
  std::uint64_t file_number;  ///< of all pages; 0 before the first page was seen
  bool checked;               ///< whether its pages keep bytes for the checks
};

sqlite3_vfs* below(sqlite3_vfs* layer) {
  return static_cast<sqlite3_vfs*>(layer->pAppData);
}
CheckedFile& checked(sqlite3_file* file) {
  return *reinterpret_cast<CheckedFile*>(file);  // NOLINT(*-reinterpret-cast): SQLite's way of deriving
}
sqlite3_file* real(sqlite3_file* file) {
  return reinterpret_cast<sqlite3_file*>(&checked(file) + 1);  // NOLINT(*-reinterpret-cast,*-pointer-arithmetic)
}

std::uint32_t big_endian(const unsigned char* bytes) {
  std::uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number << 8U | bytes[i];
  return number;
}

bool is_page(int size, sqlite3_int64 offset) {
  return size >= 512 && (size & (size - 1)) == 0 && offset % size == 0;
}

std::uint64_t hash_of(const unsigned char* page, std::size_t size, sqlite3_int64 offset) {
  return XXH3_64bits_withSeed(page, size - HASH_BYTES, static_cast<XXH64_hash_t>(offset) + 1);
}

std::uint64_t number_at(const unsigned char* bytes) {
  std::uint64_t number = 0;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

/// Whether a first page is one of ours that must have a checksum, whatever else its header says.
bool must_be_checked(const unsigned char* page) {
  return big_endian(page + APPLICATION_AT) == static_cast<std::uint32_t>(APPLICATION_ID) &&
         big_endian(page + VERSION_AT) >= FIRST_CHECKED_SCHEMA;
}

/// Checks a page that was read.
int check(CheckedFile& file, const unsigned char* page, std::size_t size, sqlite3_int64 offset) {
  if (offset == 0) {
    file.checked = page[RESERVED_AT] == RESERVED_BYTES;
    if (!file.checked) return must_be_checked(page) ? SQLITE_CORRUPT : SQLITE_OK;
    file.file_number = number_at(page + size - RESERVED_BYTES);
  }
  if (!file.checked) return SQLITE_OK;
  const bool sound = number_at(page + size - RESERVED_BYTES) == file.file_number &&
                     number_at(page + size - HASH_BYTES) == hash_of(page, size, offset);
  return sound ? SQLITE_OK : SQLITE_CORRUPT;
}

int read(sqlite3_file* file, void* buffer, int size, sqlite3_int64 offset) {
  const int result = real(file)->pMethods->xRead(real(file), buffer, size, offset);
  if (!is_page(size, offset)) return result;
  // A page that is not there, or not whole, reads as zeros; only an empty file is sound without it.
  if (result == SQLITE_IOERR_SHORT_READ && offset > 0 && checked(file).checked) return SQLITE_CORRUPT;
  if (result != SQLITE_OK) return result;
  return check(checked(file), static_cast<const unsigned char*>(buffer), static_cast<std::size_t>(size), offset);
}

std::uint64_t new_file_number() {
  std::random_device random;
  return static_cast<std::uint64_t>(random()) << 32U | random() | 1U;
}

int write(sqlite3_file* file, const void* buffer, int size, sqlite3_int64 offset) {
  CheckedFile& state = checked(file);
  const auto* const bytes = static_cast<const unsigned char*>(buffer);
  if (is_page(size, offset) && offset == 0) state.checked = bytes[RESERVED_AT] == RESERVED_BYTES;
  if (!is_page(size, offset) || !state.checked) return real(file)->pMethods->xWrite(real(file), buffer, size, offset);
  if (state.file_number == 0) state.file_number = new_file_number();
  // A copy: the page may be shared with readers of this process.
  thread_local std::vector<unsigned char> page;
  page.assign(bytes, bytes + size);
  const std::size_t end = page.size();
  std::memcpy(&page[end - RESERVED_BYTES], &state.file_number, sizeof state.file_number);
  const std::uint64_t hash = hash_of(page.data(), end, offset);
  std::memcpy(&page[end - HASH_BYTES], &hash, sizeof hash);
  return real(file)->pMethods->xWrite(real(file), page.data(), size, offset);
}

int close(sqlite3_file* file) {
  return real(file)->pMethods->xClose(real(file));
}
int truncate(sqlite3_file* file, sqlite3_int64 size) {
  return real(file)->pMethods->xTruncate(real(file), size);
}
int sync(sqlite3_file* file, int flags) {
  return real(file)->pMethods->xSync(real(file), flags);
}
int file_size(sqlite3_file* file, sqlite3_int64* size) {
  return real(file)->pMethods->xFileSize(real(file), size);
}
int lock(sqlite3_file* file, int kind) {
  return real(file)->pMethods->xLock(real(file), kind);
}
int unlock(sqlite3_file* file, int kind) {
  return real(file)->pMethods->xUnlock(real(file), kind);
}
int check_reserved_lock(sqlite3_file* file, int* result) {
  return real(file)->pMethods->xCheckReservedLock(real(file), result);
}
int file_control(sqlite3_file* file, int operation, void* argument) {
  return real(file)->pMethods->xFileControl(real(file), operation, argument);
}
int sector_size(sqlite3_file* file) {
  return real(file)->pMethods->xSectorSize(real(file));
}
int device_characteristics(sqlite3_file* file) {
  return real(file)->pMethods->xDeviceCharacteristics(real(file));
}
int map_shared(sqlite3_file* file, int region, int size, int extend, void volatile** memory) {
  return real(file)->pMethods->xShmMap(real(file), region, size, extend, memory);
}
int lock_shared(sqlite3_file* file, int offset, int count, int flags) {
  return real(file)->pMethods->xShmLock(real(file), offset, count, flags);
}
void shared_barrier(sqlite3_file* file) {
  real(file)->pMethods->xShmBarrier(real(file));
}
int unmap_shared(sqlite3_file* file, int remove) {
  return real(file)->pMethods->xShmUnmap(real(file), remove);
}
/// Mapped pages would reach SQLite unchecked.
int fetch(sqlite3_file* /*file*/, sqlite3_int64 /*offset*/, int /*size*/, void** page) {
  *page = nullptr;
  return SQLITE_OK;
}
int unfetch(sqlite3_file* /*file*/, sqlite3_int64 /*offset*/, void* /*page*/) {
  return SQLITE_OK;
}

constexpr sqlite3_io_methods METHODS = {3,
                                        close,
                                        read,
                                        write,
                                        truncate,
                                        sync,
                                        file_size,
                                        lock,
                                        unlock,
                                        check_reserved_lock,
                                        file_control,
                                        sector_size,
                                        device_characteristics,
                                        map_shared,
                                        lock_shared,
                                        shared_barrier,
                                        unmap_shared,
                                        fetch,
                                        unfetch};

int open(sqlite3_vfs* layer, sqlite3_filename name, sqlite3_file* file, int flags, int* flags_out) {
  if ((flags & SQLITE_OPEN_MAIN_DB) == 0) return below(layer)->xOpen(below(layer), name, file, flags, flags_out);
  checked(file) = {};
  const int result = below(layer)->xOpen(below(layer), name, real(file), flags, flags_out);
  // With methods, SQLite closes the file, even after a failure.
  if (result == SQLITE_OK) file->pMethods = &METHODS;
  return result;
}

sqlite3_vfs make_layer() {
  sqlite3_vfs* const usual = sqlite3_vfs_find(nullptr);
  sqlite3_vfs layer = *usual;  // all but opening is the usual layer's
  layer.zName = "tarnwick";
  layer.pNext = nullptr;
  layer.szOsFile += static_cast<int>(sizeof(CheckedFile));
  layer.pAppData = usual;
  layer.xOpen = open;
  return layer;
}

}  // namespace

const char* checked_file_layer() {
  static sqlite3_vfs layer = make_layer();
  [[maybe_unused]] static const int REGISTERED = sqlite3_vfs_register(&layer, 0);
  return layer.zName;
}

}  // namespace tarnwick::index
