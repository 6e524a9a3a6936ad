#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/compare/OrvFileHandle.h"
#include "orvdiff/compare/OrvTextBuffer.h"
#include "orvdiff/orvdiff_export.h"

class OrvDiffResult;

/// The comparison toolbox: reading files, normalising and comparing texts, wrapping outcomes.
///
/// Stateless. Results and buffers that are returned are new and belong to the caller. A missing
/// file or a difference is a result; `VELAssertError` is for null arguments and for files that
/// cannot be read to their end. Files of 2 GiB and more, unless they are equal, are refused the
/// same way. A file that cannot be opened because no memory or descriptors are left is not missing:
/// that is a `VELStdExceptionError`, which names the file. Operations that use catalogue patterns
/// are for the one thread that verifies.
class ORVDIFF_API OrvDiffLib {
 public:
  OrvDiffLib();
  virtual ~OrvDiffLib();

  /// Length of an open file in bytes, 0 when it cannot be sought. The stream stays where it is;
  /// `VELAssertError` when it does not go back there.
  static int getFileLength(FILE* fp);

  /// The whole file, from where the handle's stream stands, as a NUL-terminated text.
  static OrvTextBuffer slurpFile(OrvFileHandle& handle);

  /// The whole file as `length` bytes without terminator. False when it cannot be opened or read,
  /// or holds more than its size says; `buffer` and `length` are then left alone.
  static bool readFileIntoBuffer(const char* fileName, OrvTextBuffer& buffer, unsigned int& length);

  /// A file-missing result for the first handle that is not open (the master's counts first), or
  /// null when both are.
  static OrvDiffResult* checkOpenFiles(const std::string& masterName, const std::string& actualName,
                                       OrvFileHandle& master, OrvFileHandle& actual);

  /// A copy of a NUL-terminated text.
  static OrvTextBuffer strdupnew(const char* in);

  /// Normalises both texts: carriage returns go, whatever the list holds, then each pattern is
  /// applied to both, in list order.
  static void cleanse(OrvTextBuffer& masterBuffer, OrvTextBuffer& currentBuffer,
                      const OrvPatternList& patterns);

  /// Index of the first byte at which two texts differ, or `std::string::npos` when they are equal.
  static std::size_t compareStrings(const char* masterBuffer, const char* currentBuffer);

  /// Wraps the `position` that `compareStrings` found: a pass, or, when `normalized`, a difference
  /// that takes both buffers over (they are empty afterwards), or a plain difference.
  static OrvDiffResult* createComparisonResult(const std::string& masterName,
                                               const std::string& actualName,
                                               OrvTextBuffer& masterBuffer,
                                               OrvTextBuffer& actualBuffer, std::size_t position,
                                               bool normalized);

  /// Normalises and compares two texts. With `writeCleansed`, what was compared is saved beside
  /// both files (names + ".cleansed"), silently if that fails. A difference is a normalised one
  /// exactly when `patterns` is not empty.
  static OrvDiffResult* textBufferComparison(const std::string& masterName,
                                             const std::string& actualName,
                                             OrvTextBuffer& masterBuffer,
                                             OrvTextBuffer& currentBuffer,
                                             const OrvPatternList& patterns, bool writeCleansed);

  /// The same for two files. `actualText`, unless null, is the actual output held in memory; the
  /// actual file then need not exist. A pass is an `OrvDiffResultPassUpToNul` when a file goes on
  /// behind a NUL, unless both files are the same to the end.
  static OrvDiffResult* textFileComparison(const std::string& masterName,
                                           const std::string& actualName,
                                           const OrvPatternList& patterns, bool writeCleansed,
                                           const char* actualText);

  /// Writes the NUL-terminated UTF-8 text `str` to the file `fname` in `encoding`, without
  /// terminator or byte-order mark, replacing what was there. An empty text writes nothing at all.
  /// Raises `VELAssertError` when the file cannot be opened. When it cannot take all of the text (a
  /// full disk), it is removed without a word.
  static void writeEncodedStringToFile(const char* fname, const char* encoding, const char* str);

  /// Compares two VMD statistics reports, with allowances for the counts that vary from run to run.
  /// A report that cannot be interpreted is a difference.
  static OrvDiffResult* vmdCompare(const std::string& masterName, const std::string& actualName,
                                   const char* masterText, const char* actualText);

  /// The same for two files, of which the actual one need not exist when `actualText`, the output
  /// held in memory, is given. What a NUL keeps from being compared counts as in
  /// `textFileComparison`.
  static OrvDiffResult* vmdFileComparison(const std::string& masterName,
                                          const std::string& actualName, const char* actualText);
};
