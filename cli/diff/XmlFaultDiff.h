#pragma once

#include "cli/diff/PairDiff.h"

/// Where an output is not a valid document, and why: the message of the parser, with the lines of
/// the document and a mark below the column.
Difference xmlFaultDifference(const DiffRequest& request);
