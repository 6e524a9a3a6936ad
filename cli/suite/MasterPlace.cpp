#include "cli/suite/MasterPlace.h"

#include <algorithm>
#include <map>
#include <utility>

#include "cli/suite/FolderReader.h"
#include "cli/suite/PairOwners.h"
#include "cli/suite/SuiteLayout.h"

namespace {

std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

}  // namespace

std::string mastersBeside(const std::string& folder) {
  const bool hasTwoSlashes = folder.size() > 1 && folder[folder.size() - 2] == '/';
  return folder.substr(0, folder.size() - (hasTwoSlashes ? 1 : 0)) + suiteLayout().masterFolder;
}

std::string MasterPlace::pathOf(const std::string& folder, std::string_view name) const {
  std::string path = mastersBeside(homes.front().folder);
  for (const std::string_view level : {std::string_view(folder), name}) {
    if (!level.empty()) {
      path += '/';
      path += level;
    }
  }
  return path;
}

std::optional<std::uint32_t> MasterPlace::ownerOf(std::string_view name) const {
  const StemIndex::Stem* owner = nullptr;
  for (const ReportHome& home : homes) {
    const StemIndex::Stem* const longest = home.stems.longest(name);
    if (longest != nullptr && (owner == nullptr || longest->text.size() > owner->text.size())) {
      owner = longest;
    }
  }
  return owner != nullptr ? std::optional(owner->report) : std::nullopt;
}

std::vector<MasterPlace> findMasterPlaces(const FoundReports& found) {
  struct Reports {
    std::vector<StemIndex::Stem> stems;
    bool isSearched = false;
  };
  std::map<std::string, Reports> homes;
  for (const std::string& folder : found.masterFolders) {
    homes[folderOf(folder)].isSearched = true;
  }
  std::uint32_t number = 0;
  for (const auto* const paths : {&found.reports, &found.neighbours}) {
    for (const std::string& path : *paths) {
      std::string folder = folderOf(path);
      homes[folder].stems.push_back({std::string(stemOf(path).substr(folder.size())), number++});
    }
  }
  std::vector<MasterPlace> places;
  std::map<FolderId, std::size_t> numbers;
  for (auto& [folder, reports] : homes) {
    const FolderId id = folderId(mastersBeside(folder));
    if (id != FolderId{}) {
      const std::size_t place = numbers.try_emplace(id, places.size()).first->second;
      places.resize(std::max(places.size(), place + 1));
      places[place].homes.push_back({folder, StemIndex(std::move(reports.stems))});
      places[place].isSearched = places[place].isSearched || reports.isSearched;
    }
  }
  return places;
}
