#include "orvdiff/logs/OrvDiffStreamLog.h"

#include <ostream>

#include "orvdiff/platform/OrvHelper.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELByteBuffer.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

VELByteBuffer encode(const std::string& name) {
  VELByteBuffer buffer(256, 256);
  OrvHelper::xmlEncode(name.data(), name.size(), buffer);
  return buffer;
}

}  // namespace

OrvDiffStreamLog::OrvDiffStreamLog() = default;

OrvDiffStreamLog::~OrvDiffStreamLog() = default;

void OrvDiffStreamLog::open(std::ostream* stream) {
  VEL_ASSERT(stream);
  VEL_ASSERT_NAMED(!m_stream, "Log is already opened.");
  m_stream = stream;
  *m_stream << "<TestSummary>" << std::endl;
}

void OrvDiffStreamLog::close() {
  VEL_ASSERT_NAMED(m_stream, "Stream was not opened.");
  *m_stream << "</TestSummary>" << std::endl;
  m_stream = nullptr;
}

void OrvDiffStreamLog::comparisonNotification(const OrvDiffResultFail& result) {
  writeLogEntry("TestCaseFailureDiff", result.getMasterName(), result.getActualName());
}

void OrvDiffStreamLog::comparisonNotification(const OrvDiffResultPass& result) {
  writeLogEntry("TestCasePassDiff", result.getMasterName(), result.getActualName());
}

void OrvDiffStreamLog::writeLogEntry(const char* entryKind, const std::string& masterName,
                                     const std::string& actualName) {
  VEL_ASSERT_NAMED(m_stream, "Stream was not opened.");
  // Encode before writing: running out of memory must not leave half an entry.
  const VELByteBuffer master = encode(masterName);
  const VELByteBuffer current = encode(actualName);
  *m_stream << '<' << entryKind << '>'
            << "<ReturnCode>1</ReturnCode><Command/><ResultsFile/><StepNumber>0</StepNumber>"
            << "<MasterFile>" << master.str() << "</MasterFile>"
            << "<CurrentFile>" << current.str() << "</CurrentFile>"
            << "</" << entryKind << '>' << std::endl;
}
