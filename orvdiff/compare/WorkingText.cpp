#include "orvdiff/compare/WorkingText.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>

#include "orvdiff/compare/pattern/LinearMatcher.h"
#include "orvdiff/compare/pattern/Substitution.h"
#include "orvdiff/platform/VELAssert.h"

namespace orvdiff {
namespace {

/// Appends pieces to memory that has room for all of them.
class Appender {
 public:
  explicit Appender(char* memory) : m_begin(memory), m_end(memory) {}

  void append(std::string_view piece) {
    std::memcpy(m_end, piece.data(), piece.size());
    m_end += piece.size();
  }

  std::size_t size() const { return static_cast<std::size_t>(m_end - m_begin); }

 private:
  char* m_begin;
  char* m_end;
};

/// Adds the removal of the carriage return at `position`.
void addReturn(std::size_t position, pattern::Edits& edits) {
  if (!edits.empty() && edits.back().end == position) {
    ++edits.back().end;
  } else {
    edits.push_back({position, position + 1, 0});
  }
}

}  // namespace

WorkingText::WorkingText(OrvTextBuffer& buffer)
    : m_text(buffer), m_length(std::strlen(buffer.get())) {
  m_sizes.textLength = m_length;
}

bool WorkingText::cannotFail(const OrvPatternList& patterns) {
  return std::all_of(patterns.begin(), patterns.end(), [](const auto* pattern) {
    return pattern != nullptr && pattern->substitution() != nullptr;
  });
}

bool WorkingText::removeCarriageReturns(pattern::Edits* edits) {
  char* const text = m_text.get();
  const char* const end = text + m_length;
  const auto nextReturn = [end](char* from) {
    void* const found = std::memchr(from, '\r', static_cast<std::size_t>(end - from));
    return found != nullptr ? static_cast<char*>(found) : nullptr;
  };
  char* target = nextReturn(text);
  for (char* source = target; source != nullptr;) {
    char* const piece = source + 1;
    if (edits != nullptr) {
      addReturn(static_cast<std::size_t>(source - text), *edits);
    }
    source = nextReturn(piece);
    const auto count = static_cast<std::size_t>((source != nullptr ? source : end) - piece);
    std::memmove(target, piece, count);
    target += count;
  }
  if (target != nullptr) {
    *target = '\0';
    m_length = static_cast<std::size_t>(target - text);
    m_sizes.matched += m_sizes.textLength - m_length;
  }
  return target != nullptr;
}

bool WorkingText::apply(const OrvDiffNormalizationPattern& pattern, pattern::Edits* edits) {
  if (const orvdiff::pattern::Substitution* const substitution = pattern.substitution()) {
    bool hasMatched = false;
    velGuardAllocation(VEL_HERE, [&] {
      hasMatched = run(*substitution, edits);
      return true;
    });
    return hasMatched;
  }
  return runIcu(pattern, edits);
}

bool WorkingText::runIcu(const OrvDiffNormalizationPattern& pattern, pattern::Edits* edits) {
  OrvTextBuffer former = velNewArray<char>(VEL_HERE, m_length + 1);
  std::memcpy(former.get(), m_text.get(), m_length + 1);
  pattern.normalizeText(m_text);
  const bool isChanged = std::strcmp(former.get(), m_text.get()) != 0;
  if (edits != nullptr) {
    velGuardAllocation(VEL_HERE, [&] {
      *edits = pattern.findIcuEdits(former.get(), m_text.get());
      return true;
    });
  }
  m_length = std::strlen(m_text.get());
  if (isChanged) {
    countMatch(former.get());  // ICU does not tell its matches: no more than the whole text
  }
  m_scratch.reset();  // too small if the new text is longer
  return isChanged;
}

void WorkingText::countMatch(std::string_view match) {
  m_sizes.matched += match.size();
  if (match.size() > m_longestUsualMatch) {
    ++m_sizes.longMatches;
    m_sizes.longMatchHash = m_sizes.longMatchHash * 31 + std::hash<std::string_view>()(match);
  }
}

bool WorkingText::run(const pattern::Substitution& substitution, pattern::Edits* edits) {
  const std::string_view text(m_text.get(), m_length);
  pattern::LinearMatcher matcher(*substitution.program, text);
  pattern::LinearMatcher::Match match = {};
  if (!matcher.find(0, match)) {
    return false;
  }
  if (m_scratch == nullptr) {
    m_scratch = velNewArray<char>(VEL_HERE, m_length + 1);
  }
  const std::string_view replacement = substitution.replacement;
  Appender result(m_scratch.get());
  std::size_t copied = 0;
  do {
    result.append(text.substr(copied, match.begin - copied));
    result.append(replacement);
    copied = match.end;
    const std::string_view matched = text.substr(match.begin, match.end - match.begin);
    countMatch(matched);
    if (edits != nullptr && matched != replacement) {
      edits->push_back({match.begin, match.end, replacement.size()});
    }
  } while (matcher.find(copied, match));
  result.append(text.substr(copied));
  m_length = result.size();
  m_scratch[m_length] = '\0';
  m_text.swap(m_scratch);
  return true;
}

}  // namespace orvdiff
