#include "files/source_text.h"

#include <unicode/unistr.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "text/lines.h"
#include "text/surrogates.h"

namespace tarnwick::files {
namespace fs = std::filesystem;
namespace {

std::string decode_utf16(std::string_view bytes, bool big_endian) {
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units += static_cast<char16_t>(big_endian ? first << 8 | second : second << 8 | first);
  }
  std::string text;
  icu::UnicodeString(units.data(), static_cast<std::int32_t>(units.size())).toUTF8String(text);
  return text;
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  int number() const { return number_; }

 private:
  int number_;
};

}  // namespace

fs::path source_path(const fs::path& root, std::string_view path) {
  return root / text::to_os(path);
}

std::string decode_source(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE")) return text::decode_file(decode_utf16(bytes.substr(2), false));
  if (bytes.starts_with("\xFE\xFF")) return text::decode_file(decode_utf16(bytes.substr(2), true));
  return text::decode_file(bytes);
}

FileBytes read_regular_file(const fs::path& file) {
  FileBytes result;
  // Opening a pipe or a device must neither wait nor set anything off.
  const Descriptor descriptor(
      ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW));
  if (descriptor.number() < 0 || ::fstat(descriptor.number(), &result.status) != 0) {
    result.error = errno;
    return result;
  }
  if (!S_ISREG(result.status.st_mode) || static_cast<std::size_t>(result.status.st_size) > MAX_FILE_SIZE) {
    result.error = S_ISREG(result.status.st_mode) ? EFBIG : EINVAL;
    return result;
  }
  result.bytes.resize(static_cast<std::size_t>(result.status.st_size));
  std::size_t done = 0;
  while (done < result.bytes.size()) {
    const ssize_t got = ::read(descriptor.number(), result.bytes.data() + done, result.bytes.size() - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) result.error = errno;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  result.bytes.resize(done);
  return result;
}

std::optional<std::string> read_line(const fs::path& file, std::int64_t number) {
  const FileBytes read = read_regular_file(file);
  if (read.error != 0) return std::nullopt;
  const std::string text = decode_source(read.bytes);
  const std::vector<std::string_view> lines = text::split_lines(text);
  if (number < 1 || static_cast<std::size_t>(number) > lines.size()) return std::nullopt;
  std::string_view line = lines[static_cast<std::size_t>(number) - 1];
  if (line.ends_with('\n')) line.remove_suffix(1);
  return std::string(line);
}

}  // namespace tarnwick::files
