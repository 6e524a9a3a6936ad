#pragma once

#include <iosfwd>
#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/registry/OrvDiffListener.h"

/// Records outcomes as a test summary, an XML-like document, on the caller's stream.
///
/// `open` once, any number of notifications, `close` once; after that it may be opened again for a
/// new document. Misuse (including a notification while closed) raises `VELAssertError` and changes
/// nothing. Stream errors stay in the stream's own state. For the process's one verifying thread:
/// an entry is several insertions.
class ORVDIFF_API OrvDiffStreamLog : public OrvDiffListener {
 public:
  OrvDiffStreamLog();
  /// Destroying an open log leaves its document without an end tag.
  ~OrvDiffStreamLog() override;

  /// Writes the start tag to `stream`, which the caller owns and keeps alive until `close`.
  void open(std::ostream* stream);

  /// Writes the end tag; `stream` is not used any more.
  void close();

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultFail& result) override;
  void comparisonNotification(const OrvDiffResultPass& result) override;

 private:
  void writeLogEntry(const char* entryKind, const std::string& masterName,
                     const std::string& actualName);

  std::ostream* m_stream = nullptr;
};
