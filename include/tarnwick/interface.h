// What every abstract class of the library has in common.
#pragma once

namespace tarnwick {

/// Base of the classes that a host implements or is handed: destroyed through a pointer to the base, and
/// never copied, since a copy through a base would lose what the implementation added.
class Interface {
 public:
  Interface(const Interface&) = delete;
  Interface& operator=(const Interface&) = delete;
  virtual ~Interface() = default;

 protected:
  Interface() = default;
};

}  // namespace tarnwick
