#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "orvdiff/platform/VELErrors.h"

namespace orvdiff::host {

/// A place in the source, as errors name it.
struct VELPlace {
  const char* file;  ///< as `__FILE__` gives it, or a bare unit name
  int line;

  /// The file name without folder and extension.
  std::string unit() const;
};

#define VEL_HERE (VELPlace{__FILE__, __LINE__})

/// Raises a `VELAssertError` with `text` at `place`.
[[noreturn]] void velRaiseAssertion(const char* text, const VELPlace& place);

/// Raises `VELAssertError` when `expression` is false. The error's text is the macro call exactly
/// as it is written, semicolon included.
#define VEL_ASSERT(expression)                                     \
  do {                                                             \
    if (!(expression)) {                                           \
      velRaiseAssertion("VEL_ASSERT(" #expression ");", VEL_HERE); \
    }                                                              \
  } while (false)

/// `VEL_ASSERT` for a check with a documented unit and line; `place` is a `VELPlace`.
#define VEL_ASSERT_AT(expression, place)                          \
  do {                                                            \
    if (!(expression)) {                                          \
      velRaiseAssertion("VEL_ASSERT(" #expression ");", (place)); \
    }                                                             \
  } while (false)

/// `VEL_ASSERT` that says in words what is wrong; `message` is a string literal.
#define VEL_ASSERT_NAMED(expression, message)                                          \
  do {                                                                                 \
    if (!(expression)) {                                                               \
      velRaiseAssertion("VEL_ASSERT_NAMED(" #expression ", " #message ");", VEL_HERE); \
    }                                                                                  \
  } while (false)

/// Runs `allocate`, which creates something and returns a raw or smart pointer to it, and turns its
/// failures into the library's own errors: a null result or `std::bad_alloc` becomes
/// `VELOutOfMemoryError`, another standard exception `VELStdExceptionError`; an error of the
/// `VELThrowable` family gets a back-trace entry and is passed on.
template <typename Allocate>
auto velGuardAllocation(const VELPlace& place, Allocate allocate) -> decltype(allocate()) {
  try {
    auto created = allocate();
    if (!created) {
      throw std::bad_alloc();
    }
    return created;
  } catch (VELThrowable& error) {
    error.addBackTraceEntry(place.unit(), place.line, "VEL_RETHROW");
    throw;
  } catch (const std::bad_alloc&) {
    throw VELOutOfMemoryError(place.unit(), place.line);
  } catch (const std::exception& error) {
    throw VELStdExceptionError(error, place.unit(), place.line);
  }
}

/// A new `T`, owned by the caller, created under `velGuardAllocation`.
template <typename T, typename... Arguments>
T* velNew(const VELPlace& place, Arguments&&... arguments) {
  return velGuardAllocation(place, [&] { return new T(std::forward<Arguments>(arguments)...); });
}

/// `count` new elements under `velGuardAllocation`; not initialised, because every caller fills
/// them right away.
template <typename T>
std::unique_ptr<T[]> velNewArray(const VELPlace& place, std::size_t count) {
  return velGuardAllocation(place, [&] { return std::unique_ptr<T[]>(new T[count]); });
}

}  // namespace orvdiff::host

using orvdiff::host::velGuardAllocation;
using orvdiff::host::velNew;
using orvdiff::host::velNewArray;
using orvdiff::host::VELPlace;
using orvdiff::host::velRaiseAssertion;
