#include "orvdiff/logs/OrvDiffFileLog.h"

#include "orvdiff/registry/OrvDiffResult.h"

OrvDiffFileLog::OrvDiffFileLog(const char* fileName) : m_file(fileName) {
  m_streamLog.open(&m_file);
}

OrvDiffFileLog::~OrvDiffFileLog() {
  try {
    m_streamLog.close();
  } catch (...) {  // NOLINT(bugprone-empty-catch): a destructor cannot report it
  }
}

void OrvDiffFileLog::comparisonNotification(const OrvDiffResultFailFileMissing& result) {
  result.notifyListener(m_streamLog);
}

void OrvDiffFileLog::comparisonNotification(const OrvDiffResultFailDiff& result) {
  result.notifyListener(m_streamLog);
}

void OrvDiffFileLog::comparisonNotification(const OrvDiffResultPass& result) {
  result.notifyListener(m_streamLog);
}
