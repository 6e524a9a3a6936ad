#include "cli/suite/MasterAudit.h"

#include <sys/stat.h>
#include <xxhash.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>

#include "cli/suite/MasterChecks.h"
#include "cli/suite/MissingReason.h"
#include "cli/suite/PairOwners.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/platform/VELErrors.h"

namespace {

constexpr std::uint64_t kMostBytes = (std::uint64_t{1} << 31U) - 1;  // that can be compared

std::string hashOf(const std::string& bytes) {
  const XXH128_hash_t hash = XXH3_128bits(bytes.data(), bytes.size());
  std::string text(sizeof hash, '\0');
  std::memcpy(text.data(), &hash, sizeof hash);
  return text;
}

std::optional<std::string> readAll(const std::string& path, std::size_t size) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(size, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(size));
  return file ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace

MasterAudit::MasterAudit(const FoundReports& found, const FindingSink& sink)
    : m_found(found), m_sink(sink) {}

void MasterAudit::visit(const MasterRule& rule, const std::string& master, std::uint32_t report) {
  m_stem = stemOf(m_found.reports[report]);
  m_stems.insert(m_stem);
  if (master != m_path) {
    m_path = master;
    ++m_masters;
    inspect(rule, master);
  }
  if (!m_bytes.empty()) {
    tryRules(rule);
  }
}

void MasterAudit::inspect(const MasterRule& rule, const std::string& master) {
  m_bytes.clear();
  struct stat status = {};
  if (stat(master.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return m_sink({FindingKind::Invalid, master, missingReason(master)});
  }
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size == 0) {
    return m_sink({FindingKind::Empty, master, {}});
  }
  if (size > kMostBytes) {
    return m_sink({FindingKind::Large, master, std::to_string(size) + " bytes"});
  }
  std::optional<std::string> bytes = readAll(master, static_cast<std::size_t>(size));
  if (!bytes) {
    return m_sink({FindingKind::Unreadable, master, missingReason(master)});
  }
  m_bytes = std::move(*bytes);
  const bool isText = rule.selected->engine->getCleansingPatterns() != nullptr;
  if (const auto why = whyInvalid(master, m_bytes, rule.tail, isText)) {
    m_sink({FindingKind::Invalid, master, *why});
  }
  findSame(master);
}

void MasterAudit::findSame(const std::string& master) {
  const auto [first, isNew] = m_firstByHash.try_emplace(hashOf(m_bytes), First{master, m_stem});
  if (!isNew && first->second.stem != m_stem) {
    m_sink({FindingKind::Identical, master, first->second.path});
  }
}

/// Applies those rules of the format that have changed no master yet. Each sees the text as those
/// before it leave it, as in a comparison.
void MasterAudit::tryRules(const MasterRule& rule) {
  Rules& rules = m_rules[rule.format];
  rules.patterns = rule.selected->engine->getCleansingPatterns();
  if (rules.patterns == nullptr) {
    return;
  }
  rules.isUsed.resize(rules.patterns->size());
  if (std::find(rules.isUsed.begin(), rules.isUsed.end(), false) == rules.isUsed.end()) {
    return;
  }
  try {
    OrvTextBuffer text = OrvDiffLib::strdupnew(m_bytes.c_str());
    OrvTextBuffer nothing = OrvDiffLib::strdupnew("");
    OrvDiffLib::cleanse(text, nothing, {});
    std::size_t number = 0;
    for (const OrvDiffNormalizationPattern* const pattern : *rules.patterns) {
      const std::string before = text.get();
      OrvDiffLib::cleanse(text, nothing, {pattern});
      rules.isUsed[number] = rules.isUsed[number] || before != text.get();
      ++number;
    }
  } catch (const VELOutOfMemoryError&) {
    throw;
  } catch (const VELThrowable&) {
    return;  // a text that a rule cannot be applied to fails when it is compared
  }
}

void MasterAudit::finish(bool isOfSomeFormats) {
  for (const std::string& report : m_found.reports) {
    if (!isOfSomeFormats && m_stems.count(std::string(stemOf(report))) == 0) {
      m_sink({FindingKind::Unverified, report, {}});
    }
  }
  for (const auto& [format, rules] : m_rules) {
    std::size_t number = 0;
    for (const OrvDiffNormalizationPattern* const pattern :
         rules.patterns != nullptr ? *rules.patterns : OrvPatternList{}) {
      const char* const name = OrvDiffNormalizationPatterns::getName(*pattern);
      if (!rules.isUsed[number++]) {
        m_sink({FindingKind::Pattern, std::string(format),
                name != nullptr ? name : pattern->getExpression()});
      }
    }
  }
}
