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

DiffLine lineOf(DiffLine::Kind kind, const std::string& text) {
  DiffLine line;
  line.kind = kind;
  line.spans = {
      {kind == DiffLine::Kind::Removed ? DiffSpan::Kind::Changed : DiffSpan::Kind::Same, text, {}}};
  return line;
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
  const std::string where = folder.empty() ? "the working folder" : folder;
  hunk.place = nearest.names.empty()       ? "nothing in " + where + " has a name like it"
               : nearest.differsOnlyInCase ? "differs only in case from a name in " + where
                                           : "the nearest names in " + where;
  hunk.lines = {lineOf(DiffLine::Kind::Removed, name)};
  for (const std::string& other : nearest.names) {
    hunk.lines.push_back(lineOf(DiffLine::Kind::Context, other));
  }
  const std::string wholeFolder = std::filesystem::path(file).parent_path().string();
  builder.add(std::move(hunk), wholeFolder.empty() ? where : wholeFolder, {}, wholeFolder);
  return builder.take();
}
