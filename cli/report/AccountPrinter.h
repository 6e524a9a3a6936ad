#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/suite/Finding.h"

/// What a total says, and what to do about it, in one line: "2 outputs have no master, for example
/// ...: ...". Empty for a kind that is told pair by pair, or elsewhere.
std::string accountLine(const FindingTotal& total);

/// The same without the example, for every kind that has words: a heading for a list.
std::string accountHeading(const FindingTotal& total);

/// Prints a line for each total that has one, on `std::cout`.
void printAccount(const std::vector<FindingTotal>& totals);

/// How many findings the lines stand for.
std::uint64_t countAccounted(const std::vector<FindingTotal>& totals);
