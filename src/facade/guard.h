#pragma once
// The only place where exceptions are caught: nothing is thrown across the public boundary.

#include <cstdint>
#include <exception>

namespace zantrel {
class Component;
}

namespace zantrel::facade {

/// Writes the exception being handled to the exception log of a component, under the member's name.
void reportException(Component& component, const char* name) noexcept;

/// Makes the activity log tell why a call never reached the component. `numBytes` is logged when it
/// is not 0.
void reportRefusedCall(Component& component, const char* name, const char* reason,
                       std::uint64_t numBytes);

/// Appends to the activity log, which stays as it was otherwise, why a property was not set.
void reportRefusedValue(Component& component, const char* name, const char* reason);

inline constexpr char kMovedFrom[] = "This object was moved from and has no component.";
inline constexpr char kArgumentMovedFrom[] = "An object given to the method was moved from.";
inline constexpr char kTooLarge[] = "The input is larger than the library can hold in memory.";

/// Runs a body; false when it threw.
template <class Body>
bool guarded(Component& component, const char* name, const Body& body) noexcept {
  try {
    body();
    return true;
  } catch (...) {
    reportException(component, name);
    return false;
  }
}

/// Runs a body and gives what it threw, if anything.
template <class Body>
std::exception_ptr thrownBy(const Body& body) noexcept {
  try {
    body();
    return nullptr;
  } catch (...) {
    return std::current_exception();
  }
}

}  // namespace zantrel::facade
