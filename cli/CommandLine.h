#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/ExitStatus.h"
#include "cli/Terminal.h"
#include "orvdiff/harness/MOXTestHarness.h"

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

enum class Verbosity { Quiet, Normal, Verbose };

struct VerifyOptions {
  std::vector<std::string> locations;
  FormatOptions formats;
  std::string summaryFile;  ///< empty: none
  std::string harnessLog;   ///< empty: none
  int harnessLogLevel = MOXLogLevel::Normal;
  bool saveNormalized = false;
  bool listOnly = false;
  bool allowNone = false;
  Verbosity verbosity = Verbosity::Normal;
  ColorChoice color = ColorChoice::Auto;
};

struct FormatsOptions {};

struct NormalizeOptions {
  std::string format;
  std::string file;
  Verbosity verbosity = Verbosity::Normal;
};

/// One pair to compare.
struct PairOptions {
  std::string master;
  std::string actual;
  Verbosity verbosity = Verbosity::Normal;
  ColorChoice color = ColorChoice::Auto;
};

struct CompareOptions : PairOptions {
  std::string format;
  LayoutDataOptions layoutData;
};

struct NumdiffOptions : PairOptions {};

using Command =
    std::variant<FormatsOptions, NormalizeOptions, CompareOptions, NumdiffOptions, VerifyOptions>;

/// What the user asked for.
struct CommandLine {
  std::string workingFolder;  ///< to change to before anything else; empty: stay
  Verbosity verbosity = Verbosity::Normal;
  Command command;
};

/// Reads the command line into `result`. When there is nothing left to do (help, version, a mistake
/// in usage), says what there is to say and returns the status to end with.
std::optional<ExitStatus> parseCommandLine(int argc, char** argv, CommandLine& result);
