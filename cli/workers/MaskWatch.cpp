#include "cli/workers/MaskWatch.h"

#include <cstdint>
#include <exception>

#include "cli/terminal/ErrorCause.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/OrvOriginMap.h"

namespace {

/// Null if it cannot be opened.
OrvTextBuffer readText(const std::string& name) {
  OrvFileHandle file(name.c_str(), "r");
  return file != nullptr ? OrvDiffLib::slurpFile(file) : nullptr;
}

}  // namespace

MaskWatch::MaskWatch(const MaskLimits& limits) : m_next(current()), m_limits(limits) {
  setCurrent(this);
}

MaskWatch::~MaskWatch() {
  setCurrent(m_next);
}

void MaskWatch::addMaskTo(PairRecord& record, const OrvDiffFileEngine& engine) const {
  const OrvPatternList* const patterns = engine.getCleansingPatterns();
  if (!m_mayBeOutsized || patterns == nullptr) {
    return;
  }
  try {
    const OrvTextBuffer master = readText(record.master);
    const OrvTextBuffer output = readText(record.output);
    if (master != nullptr && output != nullptr) {
      record.mask = findOutsizedMask(master.get(), output.get(), *patterns, m_limits);
    }
  } catch (const std::exception& error) {  // the verdict stands, but not in silence
    record.printed += "not checked for outsized masks: " + causeOf(error, Verbosity::Normal) + '\n';
  }
}

void MaskWatch::sawEqualBlock(std::string_view block) {
  if (m_next != nullptr) {
    m_next->sawEqualBlock(block);
  }
}

void MaskWatch::sawEqualFiles() {
  if (m_next != nullptr) {
    m_next->sawEqualFiles();
  }
}

void MaskWatch::sawFiles(std::string_view master, std::string_view actual) {
  if (m_next != nullptr) {
    m_next->sawFiles(master, actual);
  }
}

void MaskWatch::sawChangeBy(const OrvDiffNormalizationPattern* pattern) {
  m_rules.push_back(OrvOriginMap::nameOf(pattern));
  if (m_next != nullptr) {
    m_next->sawChangeBy(pattern);
  }
}

void MaskWatch::sawHelpOf(std::string_view name) {
  m_rules.emplace_back(name);
  if (m_next != nullptr) {
    m_next->sawHelpOf(name);
  }
}

void MaskWatch::sawNormalized(std::string_view master, std::string_view actual) {
  if (m_next != nullptr) {
    m_next->sawNormalized(master, actual);
  }
}

std::size_t MaskWatch::longestUsualMatch(std::size_t textLength) const {
  if (m_limits.match <= 0 || textLength <= kLongestSmallFile) {
    return SIZE_MAX;
  }
  return static_cast<std::size_t>(m_limits.match / 100 * static_cast<double>(textLength));
}

/// Equal long matches hide the same; matches of several masks that were composed are not compared.
void MaskWatch::sawMatches(const MatchSizes& master, const MatchSizes& actual) {
  const bool sameLongMatches =
      master.longMatches == actual.longMatches && master.longMatchHash == actual.longMatchHash;
  m_mayBeOutsized = !sameLongMatches || isMuch(master) || isMuch(actual);
}

bool MaskWatch::isMuch(const MatchSizes& sizes) const {
  return m_limits.sum > 0 && sizes.textLength > kLongestSmallFile &&
         static_cast<double>(sizes.matched) >
             m_limits.sum / 100 * static_cast<double>(sizes.textLength);
}
