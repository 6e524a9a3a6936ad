#pragma once

#include <cstdint>
#include <string>

/// The part of a VMD report that is compared. The report holds the host's statistics of virtual
/// object mapping and paging.
struct VmdStatistics {
  std::string mappingMode;
  std::uint32_t virtualObjectsCumulative = 0;
  std::uint32_t pageOuts = 0;
  std::uint32_t referencedObjects = 0;
};

/// Reads the statistics of a report. False if a required line is malformed. A report that ends
/// early, or a null `text`, leaves the remaining fields unchanged.
bool parseVmdStatistics(VmdStatistics& statistics, const char* text);

/// Whether mapping mode and referenced objects are equal, and virtual objects and page-outs differ
/// by no more than they do from run to run.
bool areWithinAllowances(const VmdStatistics& master, const VmdStatistics& actual);
