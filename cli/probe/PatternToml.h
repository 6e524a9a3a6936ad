#pragma once

#include <string>
#include <vector>

#include "cli/probe/Proposals.h"

/// The proposals as `[[pattern]]` tables of an orvdiff.toml, for the format called `format`.
std::string tomlOf(const std::vector<Proposal>& proposals, const std::string& format);

/// What `appendPatterns` did.
struct AppendedPatterns {
  std::size_t added = 0;
  std::size_t known = 0;  ///< the file had the same expression for the same format already
};

/// Appends the proposals to the file called `name`, creating it if there is none, in full or not at
/// all; what is in it stays as it is. A proposal whose name is taken gets another one. Raises
/// `CommandError` if the file is not a sound suite's file, before or after, or cannot be written.
AppendedPatterns appendPatterns(std::vector<Proposal> proposals, const std::string& format,
                                const std::string& name);
