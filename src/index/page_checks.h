// Checksums of the pages of an index file.
#pragma once

namespace tarnwick::index {

/// Bytes at the end of each page that the checks take: eight that all pages of one file share, and a checksum.
inline constexpr int RESERVED_BYTES = 16;

/// The name of a file system layer of SQLite that gives each page of a main database file a checksum when it is
/// written, and checks it whenever it is read: a page with other bytes than were written, one of another place or
/// of another file, and one that is cut off are answered with SQLITE_CORRUPT instead of being believed. What
/// stands in a write-ahead log has checksums of SQLite's own.
///
/// It serves files whose pages keep RESERVED_BYTES free (SQLITE_FCNTL_RESERVE_BYTES before the first page is
/// written); others are read and written as they are. Registered with the first call. Safe to call from several
/// threads.
const char* checked_file_layer();

}  // namespace tarnwick::index
