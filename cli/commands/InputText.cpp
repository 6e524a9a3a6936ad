#include "cli/commands/InputText.h"

#include <cstdio>
#include <cstring>

#include "cli/system/CommandError.h"
#include "cli/terminal/ErrorCause.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/platform/VELErrors.h"

InputText readText(const std::string& fileName, OrvFileHandle& file, Verbosity verbosity) {
  try {
    OrvTextBuffer text = OrvDiffLib::slurpFile(file);
    const bool isCut = std::strlen(text.get()) < static_cast<std::size_t>(std::ftell(file));
    return {std::move(text), isCut};
  } catch (const VELThrowable& error) {
    throw CommandError(fileName + ": " + causeOf(error, verbosity));
  }
}
