// indexing_benchmark DIRECTORY...: what an index costs, beside bare parsing of the same files with the same
// grammars on as many threads, in one run. For each directory: the seconds of parsing (which reads and
// decodes the files, too), of a cold indexing and their ratio, in time and in processor time, of an update
// that finds nothing, and of one that finds one file edited; the size of the index over that of the text; the
// peak memory of the process so far. The edit is made in a copy of the tree; the copy and the index are
// removed at the end.
#include <sys/resource.h>
#include <tree_sitter/api.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "extraction/source_extractor.h"
#include "files/source_text.h"
#include "index/index.h"
#include "indexing/indexer.h"
#include "languages/languages.h"

namespace {

namespace fs = std::filesystem;
using namespace tarnwick;

/// A copy of a tree with its index beside it.
class Copy {
 public:
  explicit Copy(const fs::path& source) {
    std::string place = (fs::temp_directory_path() / "indexing_benchmark-XXXXXX").string();
    if (mkdtemp(place.data()) == nullptr) throw std::runtime_error("cannot make a directory " + place);
    place_ = place;
    fs::copy(source, root(), fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  }
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;
  ~Copy() {
    std::error_code ignored;
    fs::remove_all(place_, ignored);
  }

  fs::path root() const { return place_ / "tree"; }
  fs::path index_file() const { return place_ / "index.db"; }

 private:
  fs::path place_;
};

struct SourceFile {
  fs::path path;
  const languages::Language* language;
  std::int64_t size;
};

struct Cost {
  double seconds = 0;
  double processor = 0;  ///< seconds of all threads: what other programs do meanwhile shows less in it
};

template <class Work>
Cost cost_of(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  const std::clock_t processor = std::clock();
  work();
  return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
          static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC};
}

void update(const Copy& copy) {
  static const extraction::SourceExtractor EXTRACTOR;
  index::Index index(copy.index_file());
  indexing::update_index({.root = copy.root(), .index = &index, .extractor = &EXTRACTOR});
}

/// The files that the index holds, by path.
std::vector<SourceFile> indexed_files(const Copy& copy) {
  const auto snapshot = index::Index(copy.index_file()).snapshot();
  std::vector<SourceFile> files;
  for (const auto& [id, file] : snapshot->files().all()) {
    const fs::path path = files::source_path(copy.root(), file.path);
    files.push_back(
        {path, languages::language_named(file.language), static_cast<std::int64_t>(fs::file_size(path))});
  }
  std::ranges::sort(files, {}, &SourceFile::path);
  return files;
}

void parse(TSParser* parser, const SourceFile& file) {
  const std::string text = files::decode_source(files::read_regular_file(file.path).bytes);
  if (file.language == nullptr || file.language->grammar == nullptr) return;
  ts_parser_set_language(parser, file.language->grammar());
  ts_tree_delete(
      ts_parser_parse_string(parser, nullptr, text.data(), static_cast<std::uint32_t>(text.size())));
}

void parse_all(const std::vector<SourceFile>& files) {
  std::atomic<std::size_t> next = 0;
  std::vector<std::jthread> threads;
  for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i) {
    threads.emplace_back([&] {
      const std::unique_ptr<TSParser, void (*)(TSParser*)> parser(ts_parser_new(), ts_parser_delete);
      for (std::size_t at = next++; at < files.size(); at = next++) parse(parser.get(), files[at]);
    });
  }
}

std::int64_t peak_megabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

void measure(const fs::path& directory) {
  const Copy copy(directory);
  const Cost indexing = cost_of([&] { update(copy); });
  const std::int64_t peak = peak_megabytes();
  const std::vector<SourceFile> files = indexed_files(copy);
  if (files.empty()) throw std::runtime_error(directory.string() + " holds nothing to index");
  const Cost parsing = cost_of([&] { parse_all(files); });
  const auto index_size = static_cast<double>(fs::file_size(copy.index_file()));
  const Cost unchanged = cost_of([&] { update(copy); });
  std::ofstream(files[files.size() / 2].path, std::ios::app) << "\n";
  const Cost edited = cost_of([&] { update(copy); });
  double text_size = 0;
  for (const SourceFile& file : files) text_size += static_cast<double>(file.size);
  std::cout << std::left << std::setw(20) << fs::canonical(directory).filename().string() << std::right
            << std::fixed << std::setw(7) << files.size() << std::setprecision(1) << std::setw(8)
            << text_size / 1e6 << std::setprecision(2) << std::setw(10) << parsing.seconds << std::setw(10)
            << indexing.seconds << std::setw(8) << indexing.seconds / parsing.seconds << std::setw(8)
            << indexing.processor / parsing.processor << std::setw(8) << index_size / text_size
            << std::setprecision(3) << std::setw(12) << unchanged.seconds << std::setw(9) << edited.seconds
            << std::setw(9) << peak << std::endl;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 2) throw std::invalid_argument("usage: indexing_benchmark DIRECTORY...");
  std::cout << "directory             files      MB   parse s   index s   ratio     cpu    size  no change s "
               "  edit s"
               "  peak MB\n";
  for (int i = 1; i < argc; ++i) measure(argv[i]);
  return 0;
} catch (const std::exception& error) {
  std::cerr << "indexing_benchmark: " << error.what() << "\n";
  return 1;
}
