#include "cli/diff/VmdDiff.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "cli/diff/DifferenceBuilder.h"
#include "orvdiff/compare/VmdStatistics.h"

namespace {

std::string_view lineOf(std::string_view text, std::size_t number) {
  for (; number > 1; --number) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) {
      return {};
    }
    text.remove_prefix(end + 1);
  }
  return text.substr(0, text.find('\n'));
}

/// Adds a number unless it is the same in both. `allowance` is how much it may differ by.
void addNumber(DifferenceBuilder& builder, const std::string& name, std::uint32_t master,
               std::uint32_t output, std::int32_t allowance) {
  const auto difference = static_cast<std::int32_t>(output - master);  // as the comparison does
  if (difference == 0) {
    return;
  }
  const std::int64_t distance = std::abs(std::int64_t{difference});
  const std::string change = name + ": " + withThousands(static_cast<std::uint64_t>(distance)) +
                             (difference > 0 ? " more" : " fewer");
  if (distance <= allowance) {
    builder.note(change + " than in the master, within the allowance of " +
                 std::to_string(allowance));
    return;
  }
  const std::string verdict =
      allowance == 0 ? ", must be equal"
                     : ", " + withThousands(static_cast<std::uint64_t>(distance - allowance)) +
                           " over the allowance of " + std::to_string(allowance);
  builder.addChange(change + verdict, {std::to_string(master)}, {std::to_string(output)});
}

void addStatistics(DifferenceBuilder& builder, const OrvVmdStatistics& master,
                   const OrvVmdStatistics& output) {
  if (master.mappingMode != output.mappingMode) {
    builder.addChange("mapping mode", {master.mappingMode}, {output.mappingMode});
  }
  addNumber(builder, "cumulative virtual objects", master.virtualObjectsCumulative,
            output.virtualObjectsCumulative, kVmdVirtualObjectsAllowance);
  addNumber(builder, "page-outs", master.pageOuts, output.pageOuts, kVmdPageOutsAllowance);
  addNumber(builder, "objects with a reference count above 0", master.referencedObjects,
            output.referencedObjects, 0);
}

void addMalformedLine(DifferenceBuilder& builder, std::string_view master, std::string_view output,
                      const std::string& side, std::size_t line) {
  builder.note("line " + std::to_string(line) + " of the " + side +
               " is not what a VMD report has there; statistics were not compared");
  builder.addChange("line " + std::to_string(line), {lineOf(master, line), line},
                    {lineOf(output, line), line});
}

}  // namespace

Difference vmdDifference(const DiffRequest& request) {
  DifferenceBuilder builder("vmd", request);
  const std::string master(request.master);
  const std::string output(request.output);
  OrvVmdStatistics masterStatistics;
  OrvVmdStatistics outputStatistics;
  if (!masterStatistics.parse(master.c_str())) {
    addMalformedLine(builder, master, output, "master", masterStatistics.malformedLine);
  } else if (!outputStatistics.parse(output.c_str())) {
    addMalformedLine(builder, master, output, "output", outputStatistics.malformedLine);
  } else {
    addStatistics(builder, masterStatistics, outputStatistics);
  }
  return builder.take();
}
