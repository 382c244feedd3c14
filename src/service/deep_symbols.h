// Symbols that are asked for with their whole bodies.
#pragma once

#include <string>
#include <vector>

#include "tarnwick/storage/repository.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick::service {

/// Asks for the bodies of these symbols, and with them for the snippets of all others.
void ask_for_bodies(const std::vector<Text>& fqns, BuildOptions& options);

/// A line for each of them that the pack does not show, saying why.
std::vector<std::string> missing_bodies(const Repository& repository, const std::vector<Text>& fqns,
                                        const ContextPack& pack);

}  // namespace tarnwick::service
