#pragma once

#include <string>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/engine/OrvLaidOutEngine.h"
#include "orvdiff/orvdiff_export.h"

/// The engines of data outputs. All but VMD's compare files on disk: an output that is held only in
/// memory counts as missing there. `subFolder` is the file engine's: not copied, null or empty for
/// none.

/// What a data engine derives from.
using OrvDiffDataFormatEngine = OrvLaidOutEngine<OrvDiffFileEngine>;

/// A spreadsheet of one sheet, as HTML: normalised text.
class ORVDIFF_API OrvDiffSingleXlsFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffSingleXlsFileEngine(const char* subFolder);
  ~OrvDiffSingleXlsFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

  /// The patterns that texts are normalised by.
  const OrvPatternList& getCleansingPatterns() const { return m_cleansingPatterns.list(); }

 private:
  OrvSharedPatternList m_cleansingPatterns;
};

/// Comma-separated values: byte for byte, line ends included.
class ORVDIFF_API OrvDiffCsvFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffCsvFileEngine(const char* subFolder);
  ~OrvDiffCsvFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
};

/// JSON: byte for byte; the order of keys counts.
class ORVDIFF_API OrvDiffJsonFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffJsonFileEngine(const char* subFolder);
  ~OrvDiffJsonFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
};

/// CSI: text, carriage returns aside.
class ORVDIFF_API OrvDiffCsiFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffCsiFileEngine(const char* subFolder);
  ~OrvDiffCsiFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
};

/// DI trees: text, carriage returns aside.
class ORVDIFF_API OrvDiffDiTreeFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffDiTreeFileEngine(const char* subFolder);
  ~OrvDiffDiTreeFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
};

/// Virtual-object statistics, in memory or on disk: counts that vary from run to run have
/// allowances. A report that cannot be interpreted is a difference.
class ORVDIFF_API OrvDiffVmdFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffVmdFileEngine(const char* subFolder);
  ~OrvDiffVmdFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
};
