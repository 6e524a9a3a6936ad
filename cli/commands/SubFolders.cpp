#include "cli/commands/SubFolders.h"

#include <set>
#include <string>

#include "cli/suite/MasterPlace.h"
#include "cli/suite/MasterRules.h"

bool addSubFolders(FormatOptions& options, const std::vector<SelectedFormat>& formats,
                   const FoundReports& found) {
  std::set<std::string> all(options.subFolders.begin(), options.subFolders.end());
  const bool isRepeated = all.size() < options.subFolders.size();
  if (options.allSubFolders) {
    std::vector<std::string> masterFolders;
    for (const auto& [id, place] : findMasterPlaces(found)) {
      masterFolders.push_back(place.pathOf(""));
    }
    all.insert("");
    all.merge(findSubFolders(masterFolders, MasterRules(formats, options)));
  }
  if (all.size() == options.subFolders.size() && !isRepeated) {
    return false;
  }
  options.subFolders.assign(all.begin(), all.end());
  return true;
}
