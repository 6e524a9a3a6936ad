#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cli/custom/OwnPattern.h"
#include "orvdiff/formats/OrvDiffFormats.h"

/// Where the files of a format with configurable folders are.
struct FormatPlaces {
  std::string outputDirectory;
  std::string masterSubFolder;
  std::string fileNameSuffix;
};

/// The layout-data schema and its namespace; empty: as configured.
struct LayoutDataOptions {
  std::string schema;
  std::string namespaceUri;
};

/// Which formats to verify and where their files are. Must outlive the engines created from it,
/// which borrow its strings.
struct FormatOptions {
  std::vector<std::string> names;              ///< empty: all that need no arguments
  std::map<std::string, FormatPlaces> places;  ///< by format name; an entry selects the format
  /// Each is verified by itself; an empty name stands for the files in no sub-folder. Never empty
  /// once the options are complete.
  std::vector<std::string> subFolders = {""};
  bool allSubFolders = false;  ///< every sub-folder that the suite has, besides `subFolders`
  std::string folderSuffix;
  LayoutDataOptions layoutData;
  std::vector<OwnPattern> patterns;  ///< that the suite's file adds to formats
};

/// A format to verify in one sub-folder, and its engine.
struct SelectedFormat {
  const OrvDiffFormat* format;
  std::shared_ptr<OrvDiffFileEngine> engine;
  bool runsScript;  ///< the engine compares by running a script
  std::string subFolder;
  std::string outputRoot;    ///< the format's output folder, all sub-folders included
  std::string outputFolder;  ///< where the outputs are that the engine reads
};

/// The format called `name`. Otherwise raises `CommandError`, which suggests similar names.
const OrvDiffFormat& formatNamed(const std::string& name);

// Engines live until the process ends: Xerces allocates while it destroys a parser, and aborts the
// program if that fails, even after the verdict is printed.

/// An engine for comparing single pairs, wherever their files are.
std::shared_ptr<OrvDiffFileEngine> createPairEngine(const OrvDiffFormat& format,
                                                    const LayoutDataOptions& layoutData = {},
                                                    const std::vector<OwnPattern>& patterns = {});

/// The formats that `options` asks for, each once in every sub-folder, in the order of
/// `OrvDiffFormats::all`. The engines borrow strings from `options`. Raises `CommandError` for an
/// unknown name, and for a format that lacks a required argument.
std::vector<SelectedFormat> selectFormats(const FormatOptions& options);
