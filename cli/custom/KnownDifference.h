#pragma once

#include <string>
#include <vector>

#include "cli/custom/OwnPattern.h"

/// A difference that a suite accepts for a while: a `[[known]]`. It names what changed by groups,
/// or by a verdict, which stands for any change.
struct KnownDifference {
  std::string pair;  ///< wildcards of masters, from the file's folder; empty: any pair
  std::vector<std::string> groups;
  std::string verdict;  ///< word of the only verdict it covers; empty: any that groups explain
  std::string why;
  std::string until;  ///< the last day, "2027-01-31"
  std::string link;   ///< for people; may be empty
  FilePlace definedAt;
};
