#include "orvdiff/platform/OrvGlob.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <vector>

#include "orvdiff/platform/OrvFolderListings.h"
#include "orvdiff/platform/VELFmDir.h"

namespace orvdiff::host {

namespace {

/// Whether `name` matches `pattern`, where "*" is any run of characters. Linear: a mismatch returns
/// to the last star only.
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

}  // namespace

void OrvGlob::globFiles(const char* pattern, std::list<std::string>& files) {
  // One for all threads: glibc ends the process when it has no memory to register the destructor of
  // a thread's own.
  static detail::OrvFolderListings listings;
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  std::string folder;
  std::string namePattern;
  VELFmDir::splitPath(pattern, &folder, &namePattern);
  const std::vector<std::string>& names = listings.list(folder);
  // Every match starts with the text before the first star, so bisection finds the first one.
  const std::string_view prefix = std::string_view(namePattern).substr(0, namePattern.find('*'));
  auto name = std::lower_bound(names.begin(), names.end(), prefix);
  for (; name != names.end() && name->compare(0, prefix.size(), prefix) == 0; ++name) {
    if (matches(namePattern, *name)) {
      std::string& file = files.emplace_back();
      file.reserve(folder.size() + 1 + name->size());
      file += folder;
      VELFmDir::joinPath(file, name->c_str());
    }
  }
}

}  // namespace orvdiff::host
