#pragma once

// The names of what a record's folder holds.
inline constexpr const char* kRunFile = "run.json";
inline constexpr const char* kPairsFile = "pairs.jsonl";
inline constexpr const char* kEvidenceFolder = "evidence";
/// What a record says of a file whose bytes it holds.
inline constexpr const char* kEvidenceKept = "kept";
inline constexpr const char* kLockFile = ".lock";
inline constexpr const char* kDecisionsFile = "decisions.jsonl";
