#include <algorithm>
#include <array>
#include <string>

#include "secrets/secrets.h"

namespace tarnwick::secrets {
namespace {

constexpr std::array<std::string_view, 31> NAMES = {".env",
                                                    ".envrc",
                                                    ".netrc",
                                                    "_netrc",
                                                    ".pgpass",
                                                    ".my.cnf",
                                                    ".mylogin.cnf",
                                                    ".htpasswd",
                                                    ".npmrc",
                                                    ".yarnrc.yml",
                                                    ".pypirc",
                                                    ".git-credentials",
                                                    ".dockercfg",
                                                    ".boto",
                                                    ".s3cfg",
                                                    ".vault-token",
                                                    ".terraformrc",
                                                    "id_rsa",
                                                    "id_dsa",
                                                    "id_ecdsa",
                                                    "id_ed25519",
                                                    "credentials.json",
                                                    "credentials.yml",
                                                    "credentials.yaml",
                                                    "credentials.toml",
                                                    "secrets.json",
                                                    "secrets.yml",
                                                    "secrets.yaml",
                                                    "secrets.toml",
                                                    "master.key",
                                                    "terraform.tfstate"};

constexpr std::array<std::string_view, 9> ENDS = {".pem", ".key",      ".p12",  ".pfx",   ".jks",
                                                  ".ppk", ".keystore", ".kdbx", ".tfvars"};

/// The last folder and the name.
constexpr std::array<std::string_view, 6> PLACES = {".aws/credentials", ".docker/config.json",
                                                    ".kube/config",     ".config/hub",
                                                    "gh/hosts.yml",     "rclone/rclone.conf"};

constexpr std::array<std::string_view, 6> EXAMPLES = {"example", "sample",   "template",
                                                      "dist",    "defaults", "schema"};

bool is_example(std::string_view name) {
  return std::any_of(EXAMPLES.begin(), EXAMPLES.end(),
                     [&](std::string_view word) { return name.find(word) != std::string_view::npos; });
}

/// Files that cloud consoles hand out under names of this kind.
bool is_downloaded_key(std::string_view name) {
  return name.ends_with(".json") &&
         (name.starts_with("client_secret") || name.starts_with("service-account") ||
          name.starts_with("service_account"));
}

}  // namespace

bool is_secret_file(std::string_view path) {
  std::string lower(path);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  const std::string_view whole = lower;
  const std::string_view name = whole.substr(whole.rfind('/') + 1);
  if (is_example(name)) return false;
  const auto ends_whole = [&](std::string_view end) {
    return ("/" + lower).ends_with("/" + std::string(end));
  };
  return std::find(NAMES.begin(), NAMES.end(), name) != NAMES.end() || name.starts_with(".env.") ||
         is_downloaded_key(name) || std::any_of(PLACES.begin(), PLACES.end(), ends_whole) ||
         std::any_of(ENDS.begin(), ENDS.end(), [&](std::string_view end) { return name.ends_with(end); });
}

}  // namespace tarnwick::secrets
