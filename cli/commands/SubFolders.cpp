#include "cli/commands/SubFolders.h"

#include <filesystem>
#include <set>
#include <string>

#include "cli/suite/MasterPlace.h"
#include "cli/suite/MasterRules.h"
#include "cli/system/CommandError.h"

namespace {

/// The name without what makes no difference: "./fr/" is "fr".
std::string plain(const std::string& subFolder) {
  const std::filesystem::path relative = std::filesystem::path(subFolder).relative_path();
  if (const auto normal = relative.lexically_normal(); !normal.empty() && *normal.begin() == "..") {
    throw CommandError("--sub-folder " + subFolder + " is not below the folders of the masters");
  }
  const std::string path = std::filesystem::path('/' + subFolder).lexically_normal();
  const std::size_t end = path.find_last_not_of('/');
  const std::size_t start = path.find_first_not_of('/');
  return start == std::string::npos ? "" : path.substr(start, end + 1 - start);
}

}  // namespace

bool addSubFolders(FormatOptions& options, const std::vector<SelectedFormat>& formats,
                   const FoundReports& found) {
  std::set<std::string> all;
  for (const std::string& subFolder : options.subFolders) {
    all.insert(plain(subFolder));
  }
  if (options.allSubFolders) {
    std::vector<std::string> masterFolders;
    for (const MasterPlace& place : findMasterPlaces(found)) {
      masterFolders.push_back(place.pathOf(""));
    }
    all.insert("");
    all.merge(findSubFolders(masterFolders, MasterRules(formats, options)));
  }
  const std::vector<std::string> complete(all.begin(), all.end());
  if (complete == options.subFolders) {
    return false;
  }
  options.subFolders = complete;
  return true;
}
