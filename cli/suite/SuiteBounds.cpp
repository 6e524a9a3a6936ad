#include "cli/suite/SuiteBounds.h"

#include <algorithm>

#include "cli/suite/FolderReader.h"
#include "cli/suite/ReportFinder.h"
#include "cli/suite/SuiteLayout.h"

namespace {

using Ids = std::vector<FolderId>;

constexpr int kLevels = 2;

bool isThere(const std::string& folder) {
  return folderId(folder) != FolderId{};
}

/// Whether a folder in `folder`, other than `known` ones, has masters at most `levels` down.
bool hasMastersBelow(const std::string& folder, const Ids& known, int levels) {
  std::vector<std::string> inner;
  readEntries(folder, [&](std::string_view name, EntryKind kind) {  // unreadable: none to be seen
    if (kind == EntryKind::Folder && name != suiteLayout().masterFolder) {
      inner.push_back(folder + '/' + std::string(name));
    }
  });
  return std::any_of(inner.begin(), inner.end(), [&](const std::string& candidate) {
    return std::find(known.begin(), known.end(), folderId(candidate)) == known.end() &&
           (isThere(candidate + '/' + suiteLayout().masterFolder) ||
            (levels > 1 && hasMastersBelow(candidate, known, levels - 1)));
  });
}

/// Whether another location contains this one, so that what is beside it is searched too.
bool isInside(const std::string& location, const Ids& known) {
  constexpr int kMostLevels = 64;
  std::string above = location;
  for (int level = 0; level < kMostLevels; ++level) {
    above += "/..";
    if (std::find(known.begin(), known.end(), folderId(above)) != known.end()) {
      return true;
    }
  }
  return false;
}

bool hasMastersBeside(const std::string& location, const Ids& known) {
  const std::string parent = location + "/..";
  return folderId(parent) != folderId("..") && !isInside(location, known) &&
         (isThere(parent + '/' + suiteLayout().masterFolder) ||
          hasMastersBelow(parent, known, kLevels));
}

}  // namespace

bool areWholeSuite(const std::vector<std::string>& locations) {
  Ids known;
  for (const std::string& location : locations) {
    known.push_back(folderId(location));
  }
  return std::all_of(locations.begin(), locations.end(), [&known](const std::string& location) {
    return isThere(location) && !hasMastersBeside(location, known);
  });
}
