#include "cli/baseline/JournalPlace.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

#include "cli/baseline/Journal.h"
#include "cli/suite/FolderReader.h"
#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kName = ".orvdiff";

fs::path commonFolder(const std::vector<std::string>& locations) {
  fs::path common;
  for (const std::string& location : locations) {
    std::error_code error;
    fs::path folder = fs::canonical(location, error);
    const bool isFolder = !error && fs::is_directory(folder, error);
    if (error) {
      throw CommandError(location + ": " + error.message());
    }
    folder = isFolder ? folder : folder.parent_path();
    if (common.empty()) {
      common = folder;
    }
    const auto end =
        std::mismatch(common.begin(), common.end(), folder.begin(), folder.end()).first;
    fs::path shared;
    std::for_each(common.begin(), end, [&shared](const fs::path& level) { shared /= level; });
    common = shared;
  }
  return common;
}

bool isTop(const fs::path& folder) {
  std::error_code unknown;
  return Journal::isThere((folder / kName).string()) || fs::exists(folder / ".git", unknown);
}

/// The folder directly in the server's folder that `folder` is, or is in; else `folder` itself.
fs::path withinServer(const fs::path& folder) {
  std::error_code unknown;
  const fs::path server = fs::weakly_canonical("..", unknown);
  if (!server.has_relative_path()) {
    return folder;  // the working folder is that of no server
  }
  fs::path top = folder;
  while (top.has_relative_path() && top.parent_path() != server) {
    top = top.parent_path();
  }
  return top.has_relative_path() ? top : folder;
}

std::string topOf(const std::vector<std::string>& locations) {
  const fs::path folder = commonFolder(locations);
  for (fs::path top = folder; top.has_relative_path(); top = top.parent_path()) {
    if (isTop(top)) {
      return top;
    }
  }
  return withinServer(folder);
}

}  // namespace

JournalPlace placeOfJournal(const std::vector<std::string>& locations, const std::string& given) {
  JournalPlace place = {topOf(locations), {}};
  if (given.empty()) {
    place.folder = place.top + '/' + kName;
  } else if (given != kNoJournal) {
    place.folder = given;
  }
  return place;
}

std::string findJournal(const std::string& given, const std::string& work) {
  if (!given.empty()) {
    return Journal::isThere(given) ? given : throw CommandError("there is no journal in " + given);
  }
  std::error_code unknown;
  const fs::path start = work.empty() ? fs::current_path(unknown) : fs::path(work);
  for (fs::path folder = start; folder.has_relative_path(); folder = folder.parent_path()) {
    if (Journal::isThere(folder / kName)) {
      return folder / kName;
    }
  }
  std::set<std::string> beside;
  const std::string above = work.empty() ? ".." : work + "/..";
  readEntries(above, [&](std::string_view name, EntryKind kind) {
    const std::string folder = above + '/' + std::string(name) + '/' + kName;
    if (kind == EntryKind::Folder && Journal::isThere(folder)) {
      beside.insert(folder);
    }
  });
  if (beside.size() == 1) {
    return *beside.begin();
  }
  throw CommandError(beside.empty()
                         ? "there is no journal in the working folder, above it or beside it; name "
                           "it with --journal, or the working folder with -C"
                         : "there are several journals, such as " + *beside.begin() + " and " +
                               *beside.rbegin() + "; name one with --journal");
}
