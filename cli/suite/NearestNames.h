#pragma once

#include <string>
#include <vector>

/// Names that a missing one may have been mistaken for.
struct NearestNames {
  std::vector<std::string> names;  ///< nearest first; few
  bool differsOnlyInCase = false;  ///< the first one
  bool areAllSeen = true;          ///< the folder was listed to its end
};

/// The names in `folder` (empty: the working folder) that are most like `name`. A folder that
/// cannot be listed has none. The work is bounded, whatever the folder's size.
NearestNames findNearestNames(const std::string& folder, const std::string& name);
