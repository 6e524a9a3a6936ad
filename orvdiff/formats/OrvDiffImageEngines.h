#pragma once

#include <string>

#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/engine/OrvFixedLayoutEngine.h"
#include "orvdiff/orvdiff_export.h"

/// Base of the engines for the pictures that accompany an output: a picture passes only if its
/// bytes equal the master's. Pictures share the output folder of the texts they belong to.
class ORVDIFF_API OrvDiffPngFileEngine : public OrvDiffFileEngine {
 public:
  explicit OrvDiffPngFileEngine(const char* subFolder);
  ~OrvDiffPngFileEngine() override;

  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;
};

/// Base of an engine for the pictures of one format.
using OrvDiffPngFormatEngine = OrvFixedLayoutEngine<OrvDiffPngFileEngine>;

/// Pictures of HTML outputs.
class ORVDIFF_API OrvDiffHtmlPngFileEngine : public OrvDiffPngFormatEngine {
 public:
  explicit OrvDiffHtmlPngFileEngine(const char* subFolder);
  ~OrvDiffHtmlPngFileEngine() override;
};

/// Pictures of layout-data outputs.
class ORVDIFF_API OrvDiffLayoutDataXmlPngFileEngine : public OrvDiffPngFormatEngine {
 public:
  explicit OrvDiffLayoutDataXmlPngFileEngine(const char* subFolder);
  ~OrvDiffLayoutDataXmlPngFileEngine() override;
};

/// Pictures of paged layout-data outputs.
class ORVDIFF_API OrvDiffPagedLayoutDataXmlPngFileEngine : public OrvDiffPngFormatEngine {
 public:
  explicit OrvDiffPagedLayoutDataXmlPngFileEngine(const char* subFolder);
  ~OrvDiffPagedLayoutDataXmlPngFileEngine() override;
};

/// Pictures of raw XML outputs.
class ORVDIFF_API OrvDiffRawXmlPngFileEngine : public OrvDiffPngFormatEngine {
 public:
  explicit OrvDiffRawXmlPngFileEngine(const char* subFolder);
  ~OrvDiffRawXmlPngFileEngine() override;
};

/// Pictures of XHTML outputs.
class ORVDIFF_API OrvDiffXhtmlPngFileEngine : public OrvDiffPngFormatEngine {
 public:
  explicit OrvDiffXhtmlPngFileEngine(const char* subFolder);
  ~OrvDiffXhtmlPngFileEngine() override;
};
