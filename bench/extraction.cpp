// extraction_benchmark DIRECTORY...: what extraction costs beside bare parsing of the same files with the
// same grammars, in one run on one core. Each file is parsed, then extracted; the ratio of the sums is the
// figure to watch.
#include <tree_sitter/api.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "extraction/extraction.h"
#include "languages/languages.h"
#include "text/lines.h"

namespace {

namespace fs = std::filesystem;
using tarnwick::languages::Language;
using Seconds = std::chrono::duration<double>;

struct Sums {
  std::size_t files = 0;
  std::size_t bytes = 0;
  std::size_t symbols = 0;
  std::size_t uses = 0;
  std::size_t fallbacks = 0;
  double parsing = 0;
  double extracting = 0;
};

template <typename Work>
double seconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return Seconds(std::chrono::steady_clock::now() - start).count();
}

std::string read(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return tarnwick::text::decode_file(text.str());
}

void parse(const Language& language, const std::string& text) {
  static const std::unique_ptr<TSParser, void (*)(TSParser*)> parser(ts_parser_new(), ts_parser_delete);
  ts_parser_set_language(parser.get(), language.grammar());
  ts_tree_delete(
      ts_parser_parse_string(parser.get(), nullptr, text.data(), static_cast<std::uint32_t>(text.size())));
}

void measure(const fs::path& path, std::map<std::string_view, Sums>& sums) {
  constexpr std::uintmax_t MAX_BYTES = 1 << 20;
  if (!fs::is_regular_file(fs::symlink_status(path)) || fs::file_size(path) > MAX_BYTES) return;
  const auto text = read(path);
  const auto* language = tarnwick::languages::language_of(path.native(), text);
  if (language == nullptr || language->grammar == nullptr) return;
  auto& sum = sums[language->name];
  if (sum.files == 0) tarnwick::extraction::extract(*language, "", "");  // compiles the query
  ++sum.files;
  sum.bytes += text.size();
  sum.parsing += seconds([&] { parse(*language, text); });
  sum.extracting += seconds([&] {
    const auto facts = tarnwick::extraction::extract(*language, text, path.native());
    sum.symbols += facts.definitions.size();
    sum.uses += facts.uses.size();
    sum.fallbacks += facts.is_fallback ? 1 : 0;
  });
}

void print(std::string_view name, const Sums& sum) {
  std::cout << std::left << std::setw(12) << name << std::right << std::setw(8) << sum.files << std::setw(9)
            << sum.bytes / 1000 << " KB" << std::setw(9) << sum.symbols << std::setw(10) << sum.uses
            << std::setw(6) << sum.fallbacks << std::fixed << std::setprecision(3) << std::setw(9)
            << sum.parsing << std::setw(9) << sum.extracting << std::setprecision(2) << std::setw(7)
            << sum.extracting / sum.parsing << "\n";
}

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string_view, Sums> sums;
  for (int i = 1; i < argc; ++i)
    for (const auto& entry : fs::recursive_directory_iterator(argv[i])) measure(entry.path(), sums);
  std::cout << "language       files      size    symbols      uses plain  parse s extract s  ratio\n";
  Sums all;
  for (const auto& [name, sum] : sums) {
    print(name, sum);
    all.files += sum.files;
    all.bytes += sum.bytes;
    all.symbols += sum.symbols;
    all.uses += sum.uses;
    all.fallbacks += sum.fallbacks;
    all.parsing += sum.parsing;
    all.extracting += sum.extracting;
  }
  if (all.files > 0) print("all", all);
  return 0;
}
