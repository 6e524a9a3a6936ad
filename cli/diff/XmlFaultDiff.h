#pragma once

#include "cli/diff/PairDiff.h"

/// Where an output is not a valid document, and why: the message of the parser, with the line of
/// the document, in which the character is marked, and those before it.
Difference xmlFaultDifference(const DiffRequest& request);
