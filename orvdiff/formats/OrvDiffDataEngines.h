#pragma once

#include <string>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/engine/OrvFixedLayoutEngine.h"
#include "orvdiff/orvdiff_export.h"

/// The engines of data outputs. All except VMD's compare files on disk: they report an output that
/// exists only in memory as missing. `subFolder` is not copied and must outlive the engine; null or
/// empty means none.

/// Base of a data engine.
using OrvDiffDataFormatEngine = OrvFixedLayoutEngine<OrvDiffFileEngine>;

/// A spreadsheet of one sheet, as HTML: normalised text.
class ORVDIFF_API OrvDiffSingleXlsFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffSingleXlsFileEngine(const char* subFolder);
  ~OrvDiffSingleXlsFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
  const OrvPatternList* getCleansingPatterns() const override;

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

/// CSI: text without its carriage returns.
class ORVDIFF_API OrvDiffCsiFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffCsiFileEngine(const char* subFolder);
  ~OrvDiffCsiFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
  const OrvPatternList* getCleansingPatterns() const override;
};

/// DI trees: text without its carriage returns.
class ORVDIFF_API OrvDiffDiTreeFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffDiTreeFileEngine(const char* subFolder);
  ~OrvDiffDiTreeFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
  const OrvPatternList* getCleansingPatterns() const override;
};

/// Virtual-object statistics, in memory or on disk, with allowances for counts that vary from run
/// to run. A report that cannot be interpreted is a difference.
class ORVDIFF_API OrvDiffVmdFileEngine : public OrvDiffDataFormatEngine {
 public:
  explicit OrvDiffVmdFileEngine(const char* subFolder);
  ~OrvDiffVmdFileEngine() override;
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
};
