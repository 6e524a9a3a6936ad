#include "cli/commands/WorkFolder.h"

#include <filesystem>
#include <system_error>

#include "cli/report/SummaryFile.h"
#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

/// `location`, relative to `from`, as a path from the folder `to`: the short one if it leads to the
/// same file, which links can prevent.
std::string locationFrom(const fs::path& to, const fs::path& from, const std::string& location) {
  if (location.empty() || fs::path(location).is_absolute()) {
    return location;
  }
  const fs::path whole = from / location;
  const fs::path direct = whole.lexically_normal().lexically_relative(to);
  std::error_code notThere;
  return fs::equivalent(to / direct, whole, notThere) ? direct : whole;
}

}  // namespace

void enterWorkFolder(const std::string& workFolder, std::vector<std::string>& locations,
                     const std::vector<std::string*>& files) {
  if (workFolder.empty()) {
    return;
  }
  std::error_code error;
  const fs::path from = fs::current_path(error);
  fs::path to;
  if (!error) {
    to = fs::canonical(workFolder, error);
  }
  if (!error) {
    fs::current_path(to, error);
  }
  if (error) {
    throw CommandError("--work " + workFolder + ": " + error.message());
  }
  for (std::string& location : locations) {
    location = locationFrom(to, from, location);
  }
  for (std::string* const file : files) {
    if (!file->empty() && !SummaryFile::isStandardOutput(*file)) {
      *file = from / *file;
    }
  }
}

void requireLocations(const std::vector<std::string>& locations, const std::string& startFolder) {
  std::error_code error;
  for (const std::string& location : locations) {
    const fs::path path(location);
    if (path.empty() || path.is_absolute() || startFolder.empty() ||
        fs::symlink_status(path, error).type() != fs::file_type::not_found ||
        !fs::exists(startFolder / path, error)) {
      continue;  // if there is anything wrong with it, the search for reports says so
    }
    std::string problem = location + " does not exist in ";
    problem += fs::current_path(error).string();
    problem += ", the folder of -C, but does in " + startFolder;
    throw CommandError(problem + "; use --work instead of -C to leave locations as they are");
  }
}
