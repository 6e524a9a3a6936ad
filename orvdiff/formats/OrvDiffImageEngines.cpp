#include "orvdiff/formats/OrvDiffImageEngines.h"

OrvDiffPngFileEngine::OrvDiffPngFileEngine(const char* subFolder) : OrvDiffFileEngine(subFolder) {}

OrvDiffPngFileEngine::~OrvDiffPngFileEngine() = default;

OrvDiffResult* OrvDiffPngFileEngine::performDiff(const std::string& masterName,
                                                 const std::string& actualName,
                                                 std::strstream* inMemoryOutput) {
  return areFilesIdentical(masterName, actualName, inMemoryOutput);
}

OrvDiffHtmlPngFileEngine::OrvDiffHtmlPngFileEngine(const char* subFolder)
    : OrvDiffPngFormatEngine(subFolder, {"v5DebugHTML", "/", "*.png"}) {}

OrvDiffHtmlPngFileEngine::~OrvDiffHtmlPngFileEngine() = default;

OrvDiffLayoutDataXmlPngFileEngine::OrvDiffLayoutDataXmlPngFileEngine(const char* subFolder)
    : OrvDiffPngFormatEngine(subFolder, {"v5DebugDataXML", "/DataXML/", "*.png"}) {}

OrvDiffLayoutDataXmlPngFileEngine::~OrvDiffLayoutDataXmlPngFileEngine() = default;

OrvDiffPagedLayoutDataXmlPngFileEngine::OrvDiffPagedLayoutDataXmlPngFileEngine(
    const char* subFolder)
    : OrvDiffPngFormatEngine(subFolder, {"v5DebugPagedDataXML", "/PagedDataXML/", "*.png"}) {}

OrvDiffPagedLayoutDataXmlPngFileEngine::~OrvDiffPagedLayoutDataXmlPngFileEngine() = default;

OrvDiffRawXmlPngFileEngine::OrvDiffRawXmlPngFileEngine(const char* subFolder)
    : OrvDiffPngFormatEngine(subFolder, {"v5DebugRawXml", "/", "*.png"}) {}

OrvDiffRawXmlPngFileEngine::~OrvDiffRawXmlPngFileEngine() = default;

OrvDiffXhtmlPngFileEngine::OrvDiffXhtmlPngFileEngine(const char* subFolder)
    : OrvDiffPngFormatEngine(subFolder, {"v5DebugXHTML", "/", "*.png"}) {}

OrvDiffXhtmlPngFileEngine::~OrvDiffXhtmlPngFileEngine() = default;
