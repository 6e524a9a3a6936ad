#pragma once

#include <string>

/// Where a suite keeps its files.
struct SuiteLayout {
  std::string masterFolder = "Masters";         ///< name of the folders that hold masters
  std::string outputRoot = "../webcontent/bi";  ///< below it are the output folders of all formats
};

/// The layout of the suite that this process works on. Like the working folder, which `outputRoot`
/// is relative to, it is the same for all of the program.
const SuiteLayout& suiteLayout();

/// Call it before anything looks for reports or formats.
void setSuiteLayout(SuiteLayout layout);
