#include "cli/diff/MissingDiff.h"

#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "cli/diff/DifferenceBuilder.h"
#include "cli/suite/NearestNames.h"

namespace {

bool isThere(const std::string& path) {
  struct stat status = {};
  return stat(path.empty() ? "." : path.c_str(), &status) == 0;
}

std::string wordsFor(const std::string& folder) {
  return folder.empty() ? "the working folder" : folder;
}

/// What may stand there instead.
std::string describe(const NearestNames& nearest, const std::string& where) {
  if (nearest.names.empty()) {
    return "no name in " + where + " is like it";
  }
  if (nearest.differsOnlyInCase) {
    return nearest.names.front() + " in " + where + " differs only in case";
  }
  std::string names;
  for (const std::string& name : nearest.names) {
    names += (names.empty() ? "" : ", ") + name;
  }
  return "similar names in " + where + ": " + names;
}

}  // namespace

Difference missingDifference(const DiffRequest& request) {
  DifferenceBuilder builder("missing", request);
  const PairRecord& record = request.record;
  const std::string& file = isThere(record.master) ? record.output : record.master;
  if (isThere(file)) {
    return builder.take();  // it cannot be read; the record says why
  }
  std::filesystem::path missing(file);
  while (missing.has_parent_path() && !isThere(missing.parent_path().string())) {
    missing = missing.parent_path();
  }
  const std::string folder = missing.parent_path().string();
  const std::string name = missing.filename().string();
  if (missing != std::filesystem::path(file)) {
    builder.note("the folder " + missing.string() + " does not exist");
  }
  const NearestNames nearest = findNearestNames(folder, name);
  if (!nearest.areAllSeen) {
    builder.note("the folder has too many names to look at all of them");
  }
  DiffHunk hunk;
  hunk.place = describe(nearest, wordsFor(folder));
  const std::string wholeFolder = std::filesystem::path(file).parent_path().string();
  builder.add(std::move(hunk), wordsFor(wholeFolder), {}, wholeFolder);
  return builder.take();
}
