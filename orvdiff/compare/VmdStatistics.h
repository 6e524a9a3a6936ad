#pragma once

#include <cstdint>
#include <string>

/// What is compared of a VMD report, the host's statistics of virtual object mapping and paging.
struct VmdStatistics {
  std::string mappingMode;
  std::uint32_t virtualObjectsCumulative = 0;
  std::uint32_t pageOuts = 0;
  std::uint32_t referencedObjects = 0;
};

/// Reads the statistics of a report. False when a line that must say something does not; fields of
/// lines that the report does not reach, and of a null `text`, keep their values.
bool parseVmdStatistics(VmdStatistics& statistics, const char* text);

/// Whether two reports tell of the same behaviour: equal mapping mode and referenced objects,
/// virtual objects and page-outs within what varies from run to run.
bool agree(const VmdStatistics& master, const VmdStatistics& actual);
