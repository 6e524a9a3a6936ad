#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "orvdiff/compare/OrvByteBuffer.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/compare/OrvFileHandle.h"
#include "orvdiff/compare/OrvTextBuffer.h"
#include "orvdiff/orvdiff_export.h"

class OrvDiffResult;

/// The comparison toolbox: reads files, normalises and compares texts, and creates results.
///
/// Stateless. Returned results and buffers are new and owned by the caller. A missing file or a
/// difference is a result. Null arguments, files that cannot be read to their end, and files of
/// 2 GiB or more, unless they are equal, raise `VELAssertError`. A file that cannot be opened
/// because the process has run out of memory or descriptors is not missing: that raises a
/// `VELStdExceptionError` that names the file. Only the one verifying thread may call operations
/// that use catalogue patterns.
class ORVDIFF_API OrvDiffLib {
 public:
  OrvDiffLib();
  virtual ~OrvDiffLib();

  /// Length of an open file in bytes, 0 if it cannot be sought. Keeps the stream's position; raises
  /// `VELAssertError` if it cannot be restored.
  static int getFileLength(FILE* fp);

  /// The file from the stream's position to its end, as a NUL-terminated text.
  static OrvTextBuffer slurpFile(OrvFileHandle& handle);

  /// Reads the whole file as `length` bytes without a terminator. Returns false, and leaves
  /// `buffer` and `length` unchanged, if it cannot be opened or read or is longer than its size
  /// says.
  static bool readFileIntoBuffer(const char* fileName, OrvByteBuffer& buffer, unsigned int& length);

  /// A file-missing result for the first handle that is not open, the master's first, or null if
  /// both are open.
  static OrvDiffResult* checkOpenFiles(const std::string& masterName, const std::string& actualName,
                                       OrvFileHandle& master, OrvFileHandle& actual);

  /// A copy of a NUL-terminated text.
  static OrvTextBuffer strdupnew(const char* in);

  /// Normalises both texts: removes every carriage return, even if the list is empty, then applies
  /// each pattern to both, in list order.
  static void cleanse(OrvTextBuffer& masterBuffer, OrvTextBuffer& currentBuffer,
                      const OrvPatternList& patterns);

  /// Index of the first byte at which two texts differ, or `std::string::npos` if they are equal.
  static std::size_t compareStrings(const char* masterBuffer, const char* currentBuffer);

  /// Creates the result for the `position` that `compareStrings` returned: a pass, a plain
  /// difference or, if `normalized`, a difference that takes both buffers and leaves them empty.
  static OrvDiffResult* createComparisonResult(const std::string& masterName,
                                               const std::string& actualName,
                                               OrvTextBuffer& masterBuffer,
                                               OrvTextBuffer& actualBuffer, std::size_t position,
                                               bool normalized);

  /// Normalises and compares two texts. With `writeCleansed`, saves the normalised texts beside
  /// both files (names + ".cleansed"); a failure to save them is not reported. A difference is a
  /// normalised one exactly if `patterns` is not empty.
  static OrvDiffResult* textBufferComparison(const std::string& masterName,
                                             const std::string& actualName,
                                             OrvTextBuffer& masterBuffer,
                                             OrvTextBuffer& currentBuffer,
                                             const OrvPatternList& patterns, bool writeCleansed);

  /// The same for two files. `actualText`, unless null, is the actual output held in memory; the
  /// actual file then need not exist. A text ends at its first NUL: if a file contains one, a pass
  /// is an `OrvDiffResultPassUpToNul`, unless the two files are equal to their ends.
  static OrvDiffResult* textFileComparison(const std::string& masterName,
                                           const std::string& actualName,
                                           const OrvPatternList& patterns, bool writeCleansed,
                                           const char* actualText);

  /// Writes the NUL-terminated UTF-8 text `str` to the file `fname` in `encoding`, without
  /// terminator or byte-order mark, replacing a former file. An empty text writes nothing. Raises
  /// `VELAssertError` if the file cannot be opened. If writing fails later (disk full), the file is
  /// removed and nothing is reported.
  static void writeEncodedStringToFile(const char* fname, const char* encoding, const char* str);

  /// Compares two VMD statistics reports, with allowances for the counts that vary from run to run.
  /// A report that cannot be interpreted is a difference.
  static OrvDiffResult* vmdCompare(const std::string& masterName, const std::string& actualName,
                                   const char* masterText, const char* actualText);

  /// The same for two files. `actualText`, unless null, is the actual output held in memory; the
  /// actual file then need not exist. A NUL counts as in `textFileComparison`.
  static OrvDiffResult* vmdFileComparison(const std::string& masterName,
                                          const std::string& actualName, const char* actualText);
};
