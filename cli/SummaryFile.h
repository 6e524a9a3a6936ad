#pragma once

#include <ext/stdio_filebuf.h>

#include <ostream>
#include <string>

#include "orvdiff/logs/OrvDiffStreamLog.h"

/// The test summary of a run, in a file that is opened before the run starts.
class SummaryFile {
 public:
  /// Creates or truncates the file; raises `Trouble` when that is not possible. "-" is standard
  /// output: whatever else the program, the library and the scripts it starts print there goes to
  /// standard error from then on, so that the summary stays a document.
  explicit SummaryFile(std::string path);

  OrvDiffListener& listener() { return m_log; }

  /// Writes the document's end and closes the file. Raises `Trouble` when not all of it could be
  /// written; a file is then removed, so that no half of it passes for the whole. A document that
  /// is never finished lacks its end.
  void finish();

 private:
  std::string m_path;
  __gnu_cxx::stdio_filebuf<char> m_buffer;
  std::ostream m_stream;
  OrvDiffStreamLog m_log;
};
