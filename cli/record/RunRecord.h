#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/suite/Finding.h"
#include "cli/suite/FormatSelection.h"

/// Which shares of a suite a record covers: `indices` of `count`, from 1. A whole run is 1 of 1.
struct Shards {
  std::vector<std::uint32_t> indices = {1};
  std::uint32_t count = 1;
};

/// A pattern that a suite's file added.
struct RunPattern {
  std::string name;
  std::string why;
  std::string place;  ///< in the file: "orvdiff.toml:9:1"
};

/// The suite's file that a run worked by.
struct RunConfig {
  std::string file;  ///< absolute; empty: there was none
  std::string hash;  ///< of its bytes
  std::vector<RunPattern> patterns;
};

/// What a run can tell about a difference that the suite's file accepts.
struct KnownUse {
  std::string what;      ///< the entry, for people; the same in every run with that file
  bool occurs = false;   ///< a pair that it names does not pass
  bool applies = false;  ///< it names a pair that passes, or any pair
};

/// What to do about an entry that occurs nowhere in a whole suite; empty if nothing.
std::string remarkOn(const KnownUse& use);

/// What a record says of the run as a whole.
struct RunRecord {
  std::string program;                   ///< version of orvdiff
  std::vector<std::string> commandLine;  ///< without what is this run's alone: shard, record, -j
  FormatOptions formats;
  RunConfig config;
  std::string workingFolder;  ///< absolute
  std::string host;
  std::string start;  ///< UTC, "2026-11-23T06:12:00Z"
  std::string end;    ///< empty while the run goes on, or when it was cut off
  Shards shards;
  std::string suite;  ///< hash of what the run was to verify, the same for all shards of one suite
  std::uint64_t reports = 0;                    ///< that this run was to verify
  std::uint64_t pairs = 0;                      ///< records in pairs.jsonl
  std::map<std::string, std::uint64_t> totals;  ///< pairs by verdict word
  std::vector<std::string> unverified;  ///< reports without a master in any format that was run
  std::vector<FindingTotal> findings;   ///< what else it has to account for
  std::vector<std::string> notes;       ///< what else kept the run from verifying everything
  std::vector<std::string> remarks;     ///< what is worth knowing, but no trouble
  std::vector<KnownUse> known;          ///< of a shard: no shard alone can tell what is not needed
  bool mayBeEmpty = false;              ///< having nothing to verify is no trouble
  int status = 0;                       ///< that the run ended with
  bool complete = false;                ///< false: interrupted, or still running
};

/// As the text of run.json.
std::string toJson(const RunRecord& run);

/// The record of that text. Raises `std::runtime_error`, saying what is wrong: also for a record
/// that a newer orvdiff wrote in a form that this one does not know.
RunRecord runFromJson(const std::string& text);
