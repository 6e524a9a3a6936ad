#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "orvdiff/formats/OrvDiffFormats.h"

/// Where the files of a format that needs to be told lie.
struct FormatPlaces {
  std::string outputDirectory;
  std::string masterSubFolder;
  std::string fileNameSuffix;
};

/// Where the layout-data schema lies and for which namespace it is; empty: as configured.
struct LayoutDataOptions {
  std::string schema;
  std::string namespaceUri;
};

/// Which formats to verify and where their files lie. Engines refer to these texts, so this must
/// outlive them.
struct FormatOptions {
  std::vector<std::string> names;              ///< empty: all that need not be told anything
  std::map<std::string, FormatPlaces> places;  ///< by format name; being here selects the format
  std::string subFolder;
  std::string folderSuffix;
  LayoutDataOptions layoutData;
};

/// A format that takes part in a run, with the engine that verifies it.
struct SelectedFormat {
  const OrvDiffFormat* format;
  std::unique_ptr<OrvDiffFileEngine> engine;
  bool runsScript;  ///< leaves the comparing to one
};

/// The format of this name. Raises `CommandError` that suggests similar names when there is none.
const OrvDiffFormat& formatNamed(const std::string& name);

/// An engine that compares single pairs: where files lie does not matter to it.
std::unique_ptr<OrvDiffFileEngine> createPairEngine(const OrvDiffFormat& format,
                                                    const LayoutDataOptions& layoutData = {});

/// The formats that `options` asks for, each once, in the order of the list of formats. The engines
/// refer to texts of `options`. Raises `CommandError` for unknown names, and for a format that is
/// not told what it needs.
std::vector<SelectedFormat> selectFormats(const FormatOptions& options);
