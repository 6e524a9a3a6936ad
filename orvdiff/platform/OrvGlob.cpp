#include "orvdiff/platform/OrvGlob.h"

#include <dirent.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include "orvdiff/platform/VELFmDir.h"

namespace {

/// Whether `name` matches `pattern`, where "*" is any run of characters. Linear: a mismatch goes
/// back to the last star only.
bool matches(std::string_view pattern, std::string_view name) {
  std::size_t p = 0;
  std::size_t n = 0;
  std::size_t star = std::string_view::npos;
  std::size_t resume = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = n;
    } else if (p < pattern.size() && pattern[p] == name[n]) {
      ++p;
      ++n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

std::vector<std::string> listFolder(const std::string& folder) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(folder.empty() ? "." : folder.c_str()),
                                                 closedir);
  while (const dirent* const entry = open ? readdir(open.get()) : nullptr) {
    const std::string_view name(entry->d_name);
    if (name != "." && name != "..") {
      names.emplace_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

void OrvGlob::globFiles(const char* pattern, std::list<std::string>& files) {
  std::string folder;
  std::string namePattern;
  VELFmDir::splitPath(pattern, &folder, &namePattern);
  for (const std::string& name : listFolder(folder)) {
    if (matches(namePattern, name)) {
      files.push_back(folder);
      VELFmDir::joinPath(files.back(), name.c_str());
    }
  }
}
