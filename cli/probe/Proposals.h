#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/probe/Anchor.h"
#include "cli/probe/Reach.h"
#include "cli/probe/RunTexts.h"
#include "cli/probe/Variation.h"

/// A pattern that would make runs agree.
struct Proposal {
  std::string name;
  std::string expression;
  std::string replacement;
  std::string why;
  std::vector<std::pair<std::string, std::string>> examples;  ///< texts before and after
  std::string stays;                                          ///< a text that it must not change
  ValueKind kind;
  Anchor anchor;
  std::size_t places = 0;  ///< that it explains
  std::size_t files = 0;   ///< in which they are
  Reach reach;
};

/// Why there is no proposal for something that varies.
struct Declined {
  std::string reason;
  std::string expression;  ///< of a pattern that would hide it all the same; may be empty
};

struct Proposals {
  std::vector<Proposal> patterns;            ///< by number of places, most first
  std::map<std::string, Declined> declined;  ///< by `declinedKey`
};

std::string declinedKey(const std::string& valueA, const std::string& valueB);

/// Proposes patterns for what varies. What looks like data, such as a number in a table, gets none.
Proposals propose(const Variations& variations, RunTexts& texts);

/// The patterns, to be applied in this order, behind those of the format.
class ProposedPatterns {
 public:
  explicit ProposedPatterns(const std::vector<Proposal>& proposals);

  const OrvPatternList& list() const { return m_list; }

 private:
  std::vector<std::unique_ptr<OrvDiffNormalizationPattern>> m_patterns;
  OrvPatternList m_list;
};
