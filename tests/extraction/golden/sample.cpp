// Copyright 2020 Foo. All rights reserved.
#include <vector>
#include "a/b.h"

#define MAX_SIZE 10 /* the max */
#define SQR(x) ((x) * (x))

/// Docs of ns.
namespace outer::inner {

/**
 * A class.
 * @tparam T type
 */
template <typename T>
class Foo : public Base<T>, private ns::Other {
 public:
  /// Makes one.
  explicit Foo(int a,
               int b = 3);
  ~Foo() override;
  bool operator==(const Foo& o) const { return helper(o); }
  static Foo* make();
  operator bool() const;
  virtual const std::string& name() const = 0;
 private:
  int x_;  ///< the x
  std::vector<int> v_, w_;
  void secret();
};

namespace {
int hidden() { return 1; }
}

template <typename T>
Foo<T>::Foo(int a, int b) : x_(a) { std::max(a, b); }

const std::string& Other::nested::name() const { auto l = [](int q) { return q; }; return l(3); }
Foo::operator bool() const { return true; }
static const int kLimit = 5;
int broken( {
enum class Color { RED, GREEN = 2 };
using Alias = Foo<int>;
struct Pt { int x, y; double norm() const; };
}
