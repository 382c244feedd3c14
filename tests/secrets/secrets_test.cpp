#include "secrets/secrets.h"

#include <gmock/gmock.h>

#include <string>

namespace tarnwick::secrets {
namespace {

TEST(SecretFiles, AreThoseOfCommonToolsButNotTheirExamples) {
  for (const char* path :
       {".env", "web/.env.production", "deploy/id_ed25519", "a/b/Server.PEM", ".aws/credentials",
        "home/.docker/config.json", "config/master.key", "client_secret_12.json", ".netrc"})
    EXPECT_TRUE(is_secret_file(path)) << path;
  for (const char* path :
       {".env.example", "env.py", "config.json", "docs/credentials.md", "src/secrets.py", "key.go",
        "aws/credentials.py", "keyboard.keymap", "config/secrets.yml.sample", ""})
    EXPECT_FALSE(is_secret_file(path)) << path;
}

}  // namespace
}  // namespace tarnwick::secrets
