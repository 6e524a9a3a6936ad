#pragma once

#include <ext/stdio_filebuf.h>

#include <ostream>
#include <sstream>
#include <string>

#include "cli/system/OutputPlace.h"
#include "orvdiff/logs/OrvDiffStreamLog.h"

/// The test summary of a run. A file gets it when it is finished, in one go; a pipe or a device
/// gets it as it grows.
class SummaryFile {
 public:
  /// Whether a summary of this name goes to standard output: "-", or another name for the pipe or
  /// file that standard output is.
  static bool isStandardOutput(const std::string& name);

  /// Null for standard output: whatever else the program, the library and the scripts it starts
  /// print there goes to standard error from then on, so that the summary stays a document. Else
  /// removes the file that is there; `place` must outlive the summary. Raises `CommandError` when
  /// there is no writing to it.
  explicit SummaryFile(OutputPlace* place);

  OrvDiffListener& listener() { return m_log; }

  /// Writes the document's end and with it the file. Raises `CommandError` when not all of it could
  /// be written: there is no file then.
  void finish();

  /// For a run that was stopped: writes the document without its end, so that nobody takes it for
  /// the whole.
  void leaveUnfinished();

 private:
  void deliver();

  OutputPlace* const m_place;
  std::stringbuf m_document;
  __gnu_cxx::stdio_filebuf<char> m_direct;  ///< used where `m_document` is not
  std::ostream m_stream;
  OrvDiffStreamLog m_log;
};
