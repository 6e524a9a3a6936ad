#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "orvdiff/orvdiff_export.h"

// Exported for the orvdiff program, which shows what differs; not part of the public interface, so
// this header is not installed.

/// How far two reports may be apart from run to run, either way.
constexpr std::int32_t kVmdVirtualObjectsAllowance = 20;
constexpr std::int32_t kVmdPageOutsAllowance = 2;

/// The part of a VMD report that is compared. The report holds the host's statistics of virtual
/// object mapping and paging.
struct OrvVmdStatistics {
  std::string mappingMode;
  std::uint32_t virtualObjectsCumulative = 0;
  std::uint32_t pageOuts = 0;
  std::uint32_t referencedObjects = 0;
  std::size_t malformedLine = 0;  ///< counted from 1; 0: every required line is well-formed

  /// Reads the statistics of a report. False if a required line is malformed: `malformedLine` is
  /// the first such. A report that ends early, or a null `text`, leaves the remaining fields
  /// unchanged.
  ORVDIFF_API bool parse(const char* text);
};

/// Whether mapping mode and referenced objects are equal, and virtual objects and page-outs differ
/// by no more than they do from run to run.
bool areWithinAllowances(const OrvVmdStatistics& master, const OrvVmdStatistics& actual);
