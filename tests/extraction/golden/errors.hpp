// Macros that the grammar does not know, and errors in the middle of types.
namespace acme {

/// A widget.
class ACME_EXPORT Widget : public Base<int> {
 public:
  void run(int count);
};

struct ACME_ALIGN(8) ACME_API Point final { int x; };
class URL final : Base {};
class ACME_EXPORT Forward;

class Broken {
 public:
  void before();
  void bad(int x;
  void after();
};

/// Cut in two by its conditions.
class Cut {
 public:
#if ACME_ONE
  void one() {
#else
  void two() {
#endif
    go("}", '}');  // }
  }
  int after() const;
};

class Last {
  void last();
};

}  // namespace acme
