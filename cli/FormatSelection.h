#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/CommandLine.h"
#include "orvdiff/formats/OrvDiffFormats.h"

/// A format that takes part in a run, with the engine that verifies it.
struct SelectedFormat {
  const OrvDiffFormat* format;
  std::unique_ptr<OrvDiffFileEngine> engine;
  bool runsScript;  ///< leaves the comparing to one
};

/// The format of this name. Raises `Trouble` that suggests similar names when there is none.
const OrvDiffFormat& formatNamed(const std::string& name);

/// An engine that compares single pairs: where files lie does not matter to it.
std::unique_ptr<OrvDiffFileEngine> createPairEngine(const OrvDiffFormat& format,
                                                    const LayoutDataOptions& layoutData = {});

/// The formats that `options` asks for, each once, in the order of the list of formats. The engines
/// refer to texts of `options`. Raises `Trouble` for unknown names, and for a format that is not
/// told what it needs.
std::vector<SelectedFormat> selectFormats(const FormatOptions& options);
