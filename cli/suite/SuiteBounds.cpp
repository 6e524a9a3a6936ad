#include "cli/suite/SuiteBounds.h"

#include <algorithm>

#include "cli/suite/FolderReader.h"
#include "cli/suite/ReportFinder.h"

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
    if (kind == EntryKind::Folder && name != kMasterFolder) {
      inner.push_back(folder + '/' + std::string(name));
    }
  });
  return std::any_of(inner.begin(), inner.end(), [&](const std::string& candidate) {
    return std::find(known.begin(), known.end(), folderId(candidate)) == known.end() &&
           (isThere(candidate + '/' + kMasterFolder) ||
            (levels > 1 && hasMastersBelow(candidate, known, levels - 1)));
  });
}

}  // namespace

bool areWholeSuite(const std::vector<std::string>& locations) {
  Ids known;
  for (const std::string& location : locations) {
    known.push_back(folderId(location));
  }
  const FolderId server = folderId("..");
  return std::none_of(locations.begin(), locations.end(), [&](const std::string& location) {
    const std::string parent = location + "/..";
    return !isThere(location) ||
           (folderId(parent) != server &&
            (isThere(parent + '/' + kMasterFolder) || hasMastersBelow(parent, known, kLevels)));
  });
}
