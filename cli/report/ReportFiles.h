#pragma once

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/report/ChangeGroups.h"
#include "cli/report/ReportKinds.h"
#include "cli/system/OutputPlace.h"

/// The reports that a user asked for: gives them the pairs of a run, and writes each to its file,
/// in full or not at all.
class ReportFiles {
 public:
  static constexpr const char* kStandardOutput = "-";

  /// Opens the files. Raises `CommandError` when one cannot be written, is asked for twice, or lies
  /// in one of the folders `records`: a record holds what a run wrote and nothing else.
  ReportFiles(const std::vector<ReportRequest>& requests, const std::vector<std::string>& records);

  bool isEmpty() const { return m_reports.empty(); }

  /// The files themselves, as far as there are.
  std::vector<const OutputPlace*> places() const;

  /// Removes what earlier runs left under these names, so that nobody takes it for this run's.
  void clear();

  /// Call it for every pair, in the order of the run.
  void add(const PairRecord& pair, const FileReader& read);

  /// Writes the reports of `run`, whose pairs are counted here. Returns why any could not be
  /// written, a sentence each; the others are written all the same.
  std::vector<std::string> finish(RunRecord run);

 private:
  struct Report {
    explicit Report(const ReportRequest& request);
    void write(const ReportDocument& document) const;

    const ReportRequest request;
    std::optional<OutputPlace> place;  ///< none for standard output
    std::unique_ptr<ReportRenderer> renderer;
  };

  std::deque<Report> m_reports;
  std::vector<std::string> m_records;
  ChangeGroups m_groups;
  std::uint64_t m_pairs = 0;
  std::map<std::string, std::uint64_t> m_totals;
};
