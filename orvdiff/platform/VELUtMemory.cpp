#include "orvdiff/platform/VELUtMemory.h"

#include <malloc.h>
#include <unistd.h>

#include <fstream>

namespace orvdiff::host {

namespace {

/// 0 if the process does not use the C library's heap.
std::uint64_t heapInUse() {
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 33)
  const struct mallinfo2 info = mallinfo2();
  return std::uint64_t{info.uordblks} + std::uint64_t{info.hblkhd};  // chunks, mapped blocks
#else
  return 0;
#endif
}

std::uint64_t residentSetSize() {
  std::ifstream file("/proc/self/statm");
  std::uint64_t totalPages = 0;
  std::uint64_t residentPages = 0;
  file >> totalPages >> residentPages;
  return residentPages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

std::uint64_t VELUtMemory::getMemoryConsumption() {
  const std::uint64_t heap = heapInUse();
  return heap != 0 ? heap : residentSetSize();
}

}  // namespace orvdiff::host
