#pragma once

#include <functional>
#include <string>
#include <utility>

#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/registry/OrvDiffResult.h"

/// A file engine that compares as the test says.
class TestEngine : public OrvDiffFileEngine {
 public:
  using Compare =
      std::function<OrvDiffResult*(const std::string&, const std::string&, std::strstream*)>;

  explicit TestEngine(const char* subFolder, Compare compare = nullptr)
      : OrvDiffFileEngine(subFolder), m_compare(std::move(compare)) {}

  std::string getOutputDirectoryTypeName() const override { return "type"; }
  std::string getMasterFileGlobExpression(const std::string& location) const override {
    return OrvDiffFileEngine::getMasterFileGlobExpression(location);
  }
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override {
    return m_compare(masterName, actualName, inMemoryOutput);
  }
  using OrvDiffFileEngine::areFilesIdentical;
  using OrvDiffFileEngine::getActualFile;

 private:
  Compare m_compare;
};
