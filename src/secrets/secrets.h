// What must not reach an agent: files that hold keys.
#pragma once

#include <string_view>

namespace tarnwick::secrets {

/// Whether a file of that repository path is one of those in which common tools keep keys and passwords
/// (`.env`, private keys, `.aws/credentials`). Examples of such files (`.env.example`) are not.
bool is_secret_file(std::string_view path);

}  // namespace tarnwick::secrets
