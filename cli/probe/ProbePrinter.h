#pragma once

#include <iosfwd>
#include <string>

#include "cli/probe/ProposalCheck.h"
#include "cli/probe/Proposals.h"
#include "cli/probe/RunTexts.h"
#include "cli/probe/Variation.h"
#include "cli/terminal/Terminal.h"

/// Everything that a probe has found out.
struct ProbeFindings {
  const RunTexts& texts;
  const Variations& variations;
  const Proposals& proposals;
  const ProposalCheck& check;
  const std::string& format;
};

/// Whether the runs agree with the proposals, no file is missing in any of them or was compared
/// only up to a NUL byte, and all changes that were planted are found.
bool isExplained(const ProbeFindings& findings);

/// Tells on `out` what varies, what is proposed and what is left, and what it comes to; with
/// `Verbosity::Quiet` only that.
void printFindings(const ProbeFindings& findings, Verbosity verbosity, const Palette& palette,
                   std::ostream& out);
