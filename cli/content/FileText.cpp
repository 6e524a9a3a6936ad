#include "cli/content/FileText.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

#include "orvdiff/compare/OrvFileHandle.h"

bool readFile(const std::string& path, std::string& bytes) {
  constexpr std::size_t kLeast = 4096;
  const OrvFileHandle file(path.c_str(), "r");
  struct stat status = {};
  if (file == nullptr || fstat(fileno(file), &status) != 0) {
    return false;
  }
  std::setvbuf(file, nullptr, _IONBF, 0);  // it is read at once
  bytes.resize(std::max(kLeast, static_cast<std::size_t>(status.st_size) + 1));
  std::size_t length = 0;
  while (const std::size_t count =
             std::fread(bytes.data() + length, 1, bytes.size() - length, file)) {
    length += count;
    if (length == bytes.size()) {
      bytes.resize(2 * length);  // it has grown
    }
  }
  bytes.resize(length);
  return std::ferror(file) == 0;
}
