#include "cli/content/EqualLines.h"

#include <algorithm>
#include <cstring>

std::size_t equalLines(std::string_view master, std::string_view output, char stop) {
  constexpr std::size_t kBlock = 256;
  const std::size_t most = std::min(master.size(), output.size());
  std::size_t equal = 0;
  while (equal + kBlock <= most &&
         std::memcmp(master.data() + equal, output.data() + equal, kBlock) == 0 &&
         std::memchr(master.data() + equal, stop, kBlock) == nullptr) {
    equal += kBlock;
  }
  return master.substr(0, equal).rfind('\n') + 1;
}
