#include "tarnwick/storage/answers.h"

namespace tarnwick {
namespace {

class RankedTest final : public FileTest {
 public:
  RankedTest(OrderKey rank, Text path) : rank_(std::move(rank)), path_(std::move(path)) {}
  OrderKey rank() const override { return rank_; }
  Text path() const override { return path_; }

 private:
  OrderKey rank_;
  Text path_;
};

}  // namespace

/// The sources of one test.
class TestTable::Record final : public TestRecord {
 public:
  void add(const Text& source, std::shared_ptr<const FileTest> test) {
    by_source_.emplace(source, std::move(test));
  }
  std::shared_ptr<const FileTest> alone(const Text& path) const override {
    const auto found = by_source_.find(path);
    return found == by_source_.end() ? nullptr : found->second;
  }

 private:
  std::unordered_map<Text, std::shared_ptr<const FileTest>, TextHash, TextEqual> by_source_;
};

void TestTable::add(const Text& test, const Text& source, OrderKey rank) {
  std::shared_ptr<Record>& record = by_test_[test];
  if (!record) record = records_.emplace_back(std::make_shared<Record>());
  record->add(source, std::make_shared<RankedTest>(std::move(rank), test));
}

void TestTable::walk(const std::function<void(const TestRecord&)>& visit) const {
  for (const auto& record : records_) visit(*record);
}

}  // namespace tarnwick
