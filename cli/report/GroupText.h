#pragma once

#include <string>

#include "cli/record/PairRecord.h"
#include "cli/report/ChangeGroups.h"

// What a person reads of a group of equal changes. All texts are printable.

/// What the pairs of a group have in common, before the change itself: "same change: ".
const char* wordsFor(const ChangeGroup& group);

/// The change in one line: "`15.20` → `16.20`".
std::string textOf(const ChangeGroup& group);

/// "master -> output", as the run knows them; not printable yet.
std::string pairNameOf(const PairRecord& pair);

bool hasGroup(const DiffHunk& hunk, const std::string& id);

/// Whether the pair has more changes than a difference lists, so that some are in no group.
bool hasUnlistedChanges(const PairRecord& pair);
