#include "orvdiff/registry/OrvDiffResult.h"

#include "orvdiff/registry/OrvDiffListener.h"

OrvDiffResult::OrvDiffResult(const std::string& masterName, const std::string& actualName)
    : m_masterName(masterName), m_actualName(actualName) {}

OrvDiffResult::~OrvDiffResult() = default;

OrvDiffResultPass::OrvDiffResultPass(const std::string& masterName, const std::string& actualName)
    : OrvDiffResult(masterName, actualName) {}

OrvDiffResultPass::~OrvDiffResultPass() = default;

void OrvDiffResultPass::notifyListener(OrvDiffListener& listener) const {
  listener.comparisonNotification(*this);
}

bool OrvDiffResultPass::isPassed() const {
  return true;
}

OrvDiffResultPassUpToNul::OrvDiffResultPassUpToNul(const std::string& masterName,
                                                   const std::string& actualName,
                                                   const std::string& cutFile)
    : OrvDiffResultPass(masterName, actualName), m_cutFile(cutFile) {}

OrvDiffResultPassUpToNul::~OrvDiffResultPassUpToNul() = default;

OrvDiffResultFail::OrvDiffResultFail(const std::string& masterName, const std::string& actualName)
    : OrvDiffResult(masterName, actualName) {}

OrvDiffResultFail::~OrvDiffResultFail() = default;

void OrvDiffResultFail::notifyListener(OrvDiffListener& listener) const {
  listener.comparisonNotification(*this);
}

bool OrvDiffResultFail::isPassed() const {
  return false;
}

OrvDiffResultFailDiff::OrvDiffResultFailDiff(const std::string& masterName,
                                             const std::string& actualName)
    : OrvDiffResultFail(masterName, actualName) {}

OrvDiffResultFailDiff::~OrvDiffResultFailDiff() = default;

void OrvDiffResultFailDiff::notifyListener(OrvDiffListener& listener) const {
  listener.comparisonNotification(*this);
}

OrvDiffResultFailDiffNormalized::OrvDiffResultFailDiffNormalized(const std::string& masterName,
                                                                 const std::string& actualName,
                                                                 char* normalizedMaster,
                                                                 char* normalizedActual,
                                                                 std::uint64_t diffPosition)
    : OrvDiffResultFailDiff(masterName, actualName),
      m_normalizedMaster(normalizedMaster),
      m_normalizedActual(normalizedActual),
      m_diffPosition(diffPosition) {}

OrvDiffResultFailDiffNormalized::~OrvDiffResultFailDiffNormalized() = default;

void OrvDiffResultFailDiffNormalized::notifyListener(OrvDiffListener& listener) const {
  listener.comparisonNotification(*this);
}

OrvDiffResultFailFileMissing::OrvDiffResultFailFileMissing(const std::string& masterName,
                                                           const std::string& actualName,
                                                           const std::string& missingFile)
    : OrvDiffResultFail(masterName, actualName), m_missingFile(missingFile) {}

OrvDiffResultFailFileMissing::~OrvDiffResultFailFileMissing() = default;

void OrvDiffResultFailFileMissing::notifyListener(OrvDiffListener& listener) const {
  listener.comparisonNotification(*this);
}
