#include "cli/system/Cores.h"

#include <sched.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>

namespace {

std::size_t boundCores() {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  const bool isKnown = sched_getaffinity(0, sizeof cores, &cores) == 0;
  return isKnown ? static_cast<std::size_t>(std::max(1, CPU_COUNT(&cores))) : 1;
}

/// The path of this process's control group (version 2), such as "/user.slice"; empty if unknown.
std::string controlGroup() {
  std::ifstream file("/proc/self/cgroup");
  for (std::string line; std::getline(file, line);) {
    constexpr const char* kVersion2 = "0::";
    if (line.rfind(kVersion2, 0) == 0) {
      return line.substr(3);
    }
  }
  return {};
}

/// The cores that one group grants: "max 100000" grants all, "150000 100000" one and a half.
double grantedBy(const std::string& group) {
  std::ifstream file("/sys/fs/cgroup" + group + "/cpu.max");
  double quota = 0;
  double period = 0;
  return file >> quota >> period && period > 0 ? quota / period : HUGE_VAL;
}

/// The least that the process's group and those above it grant.
double grantedCores() {
  std::string group = controlGroup();
  double granted = grantedBy(group);
  while (!group.empty()) {
    group.erase(group.rfind('/') == std::string::npos ? 0 : group.rfind('/'));
    granted = std::min(granted, grantedBy(group));
  }
  return granted;
}

}  // namespace

std::size_t availableCores() {
  const double granted = std::ceil(grantedCores());
  const std::size_t bound = boundCores();
  return granted >= static_cast<double>(bound)
             ? bound
             : std::max<std::size_t>(1, static_cast<std::size_t>(granted));
}
