#include "mcp/serve.h"

#include <utility>

#include "mcp/transport.h"

namespace tarnwick::mcp {
namespace {

/// How long a client that has nothing more to say is still answered; it ends the process after a few seconds.
constexpr std::chrono::milliseconds PATIENCE{1500};

}  // namespace

void serve(int input, int output, const Tool& tool, const ServerOptions& options) {
  LineWriter writer(output, input);
  Server server(
      tool, [&writer](std::string line) { writer.send(std::move(line)); }, options);
  LineReader reader(input, writer.closed(), options.max_message_bytes);
  for (LineReader::Read read = reader.next(); read.status != LineReader::Status::end; read = reader.next()) {
    server.receive(read);
  }
  server.finish(writer.is_closed() ? std::chrono::milliseconds(0) : PATIENCE);
}

}  // namespace tarnwick::mcp
