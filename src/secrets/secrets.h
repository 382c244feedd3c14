// What must not reach an agent: files that hold keys, and keys inside other files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnwick::secrets {

/// Whether a file of that repository path is one of those in which common tools keep keys and passwords
/// (`.env`, private keys, `.aws/credentials`). Examples of such files (`.env.example`) are not.
bool is_secret_file(std::string_view path);

struct Redacted {
  std::string text;
  std::size_t count = 0;  ///< how many keys were taken out
};

/// `text` with "[redacted]" in place of what is shaped like a key: tokens of known services, private key
/// blocks, passwords in URLs, and random-looking literals that are assigned to a name such as `api_key`. What
/// tells the kind of a key stays (`ghp_[redacted]`). Linear in the length of the text. Never throws for what
/// the text holds.
Redacted redact(std::string_view text);

}  // namespace tarnwick::secrets
