#pragma once

#include <iosfwd>
#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Records outcomes as a test summary, an XML-like document, on a stream of the caller's.
///
/// `open` once, any number of notifications, `close` once; then it may be opened again, for a new
/// document. Every misuse (a notification on a closed log included) raises `VELAssertError` and
/// changes nothing. Errors of the stream are left in the stream's own state. One entry is several
/// insertions: a log shared between threads needs the caller's lock.
class ORVDIFF_API OrvDiffStreamLog : public OrvDiffListener {
 public:
  OrvDiffStreamLog();
  /// Forgets the stream. A log destroyed while open leaves its document without its end.
  ~OrvDiffStreamLog() override;

  /// Writes the document's start to `stream`, which stays the caller's and must outlive the log's
  /// use of it.
  void open(std::ostream* stream);

  /// Writes the document's end and forgets the stream.
  void close();

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFail& result) override;
  void comparisonNotification(const OrvDiffResultPass& result) override;

 private:
  void writeLogEntry(const char* entryKind, const std::string& masterName,
                     const std::string& actualName);

  std::ostream* m_stream = nullptr;
};
