// The tests that reach source files.
#pragma once

#include <memory>
#include <vector>

#include "resolution/resolver.h"
#include "tarnwick/storage/repository.h"

namespace tarnwick::resolution {

/// The test files that import one of the files or use a symbol that it defines, closest first for each file:
///
///   1. those named after it (`test_parser.py`, `parser_test.go`, `ParserTest.java`, `parser.spec.ts`), then
///      those whose names hold its name as a part, then the others,
///   2. by the number of its symbols that they use, one that may mean several definitions counting in parts,
///   3. those that import it,
///   4. by the number of directories between the two, then by path.
///
/// The answer outlives the resolver.
std::shared_ptr<const TestRecords> covering_tests(const Resolver& resolver, const std::vector<Text>& paths);

/// How many directories lie between two files.
std::size_t path_distance(std::string_view a, std::string_view b);

}  // namespace tarnwick::resolution
