#include <cstring>
#include <iostream>

#include "cli/Commands.h"
#include "cli/FormatSelection.h"
#include "cli/MissingReason.h"
#include "cli/Printable.h"
#include "cli/Trouble.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/platform/VELErrors.h"

namespace {

OrvTextBuffer readText(const std::string& fileName) {
  OrvFileHandle file(fileName.c_str(), "r");
  if (file == nullptr) {
    throw Trouble(fileName + " " + missingReason(fileName));
  }
  OrvTextBuffer text = OrvDiffLib::slurpFile(file);
  if (std::strlen(text.get()) < static_cast<std::size_t>(OrvDiffLib::getFileLength(file))) {
    std::cerr << "orvdiff: " << printable(fileName)
              << " holds a NUL byte; texts end there, and so do comparisons\n";
  }
  return text;
}

}  // namespace

ExitStatus run(const NormalizeOptions& options) {
  const OrvDiffFormat& format = formatNamed(options.format);
  const auto engine = createPairEngine(format);
  const OrvPatternList* const patterns = OrvDiffFormats::getCleansingPatterns(*engine);
  if (patterns == nullptr) {
    throw Trouble("format " + options.format + " normalises nothing; it compares by " +
                  std::string(format.comparison));
  }
  try {
    OrvTextBuffer text = readText(options.file);
    OrvTextBuffer noOther = OrvDiffLib::strdupnew("");
    OrvDiffLib::cleanse(text, noOther, *patterns);
    std::cout << text.get();
  } catch (const VELThrowable& error) {
    throw Trouble(options.file + ": " + error.what());
  }
  return kExitPassed;
}
