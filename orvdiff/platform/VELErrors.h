#pragma once

#include <exception>
#include <string>
#include <vector>

#include "orvdiff/orvdiff_export.h"

namespace orvdiff::host {

/// A place that an error passed on its way to the caller.
struct VELBackTraceEntry {
  std::string unit;  ///< source unit: the file name without folder and extension
  int line;          ///< line in that unit
  std::string tag;   ///< "VEL_THROW" where the error arose, "VEL_RETHROW" where it was passed on
};

/// Base of every error that the library raises itself. The family stands in for the host's own
/// (docs/host-classes.md).
///
/// Comparison outcomes are results, never errors: an error means that a call broke its contract or
/// that the machine failed (memory, disk). Errors may be copied and may be read from
/// any thread; `addBackTraceEntry` is for the thread that handles the error.
class ORVDIFF_API VELThrowable : public std::exception {
 public:
  /// Starts the back trace with one entry (`unit`, `line`, "VEL_THROW").
  VELThrowable(std::string text, const std::string& unit, int line);
  ~VELThrowable() override;

  /// The whole error on one line: text, then every back-trace entry as "unit:line, tag".
  const char* what() const noexcept override;

  /// What went wrong; for an assertion, its source text.
  const std::string& getText() const { return m_text; }
  /// The source unit where the error arose, for example "OrvDiffLib".
  const std::string& getSourceUnit() const { return m_backTrace.front().unit; }
  /// The line where the error arose.
  int getLine() const { return m_backTrace.front().line; }
  /// The tag under which the error was thrown: "VEL_THROW".
  const std::string& getTag() const { return m_backTrace.front().tag; }
  /// Where the error arose, then every place that passed it on, oldest first; never empty.
  const std::vector<VELBackTraceEntry>& getBackTrace() const { return m_backTrace; }

  /// Records that the error passed through `unit` at `line`.
  void addBackTraceEntry(const std::string& unit, int line, const std::string& tag);

 private:
  void describe();

  std::string m_text;
  std::vector<VELBackTraceEntry> m_backTrace;
  std::string m_what;
};

/// A broken precondition. `getText()` is the assertion as written, for example
/// "VEL_ASSERT(listener);".
class ORVDIFF_API VELAssertError : public VELThrowable {
 public:
  using VELThrowable::VELThrowable;
  ~VELAssertError() override;
};

/// An allocation failed.
class ORVDIFF_API VELOutOfMemoryError : public VELThrowable {
 public:
  /// Starts the back trace with one entry (`unit`, `line`, "VEL_THROW").
  VELOutOfMemoryError(const std::string& unit, int line);
  ~VELOutOfMemoryError() override;
};

/// A standard exception other than `std::bad_alloc`, thrown while something was created, or an
/// error of the operating system. Its `what()` text is the text of this error.
class ORVDIFF_API VELStdExceptionError : public VELThrowable {
 public:
  /// Takes over the text of `wrapped`, and starts the back trace with one entry (`unit`, `line`,
  /// "VEL_THROW").
  VELStdExceptionError(const std::exception& wrapped, const std::string& unit, int line);
  ~VELStdExceptionError() override;
};

}  // namespace orvdiff::host

using orvdiff::host::VELAssertError;
using orvdiff::host::VELBackTraceEntry;
using orvdiff::host::VELOutOfMemoryError;
using orvdiff::host::VELStdExceptionError;
using orvdiff::host::VELThrowable;
