#include "cli/report/ReportFiles.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include "cli/report/AccountPrinter.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/ErrorCause.h"

namespace fs = std::filesystem;

namespace {

/// Whether `file`, which need not exist, lies in `folder` or below.
bool liesIn(const std::string& file, const std::string& folder) {
  if (file == ReportFiles::kStandardOutput) {
    return false;
  }
  std::error_code unknown;
  const fs::path top = fs::weakly_canonical(fs::absolute(folder), unknown);
  if (unknown || top.empty()) {
    return false;
  }
  fs::path place = fs::weakly_canonical(fs::absolute(file), unknown);
  while (place.has_relative_path()) {
    place = place.parent_path();
    if (place == top) {
      return true;
    }
  }
  return false;
}

/// What the run did not compare, and what kept it from being whole: a sentence each.
std::vector<std::string> accountOf(const RunRecord& run) {
  std::vector<std::string> account;
  for (const FindingTotal& total : run.findings) {
    if (std::string line = accountLine(total); !line.empty()) {
      account.push_back(std::move(line));
    }
  }
  account.insert(account.end(), run.notes.begin(), run.notes.end());
  return account;
}

}  // namespace

ReportFiles::Report::Report(const ReportRequest& wanted)
    : request(wanted), renderer(wanted.kind->make()) {
  if (request.file != kStandardOutput) {
    place.emplace(request.kind->what, request.file);
  }
}

void ReportFiles::Report::write(const ReportDocument& document) const {
  if (!place) {
    // The program's end says when that fails.
    document.write([](std::string_view piece) { std::cout << piece; });
    return;
  }
  if (place->isRegularFile()) {
    place->write([&document](const auto& take) { document.write(take); });
    return;
  }
  std::ofstream device(request.file, std::ios::binary);
  document.write([&device](std::string_view piece) { device << piece; });
  device.close();
  if (!device) {
    place->refuse("not all of it could be written");
  }
}

ReportFiles::ReportFiles(const std::vector<ReportRequest>& requests,
                         const std::vector<std::string>& records) {
  for (const std::string& record : records) {
    m_records.push_back(fs::absolute(record).lexically_normal().string());
  }
  for (const ReportRequest& request : requests) {
    for (const std::string& record : records) {
      if (liesIn(request.file, record)) {
        throw CommandError(std::string("the ") + request.kind->what + ' ' + request.file +
                           " cannot be written into the record " + record +
                           "; name a file outside of it");
      }
    }
    m_reports.emplace_back(request);
  }
  const std::vector<const OutputPlace*> files = places();
  OutputPlace::requireDistinct(files);
  if (files.size() + 1 < m_reports.size()) {
    throw CommandError("only one report can go to standard output");
  }
}

std::vector<const OutputPlace*> ReportFiles::places() const {
  std::vector<const OutputPlace*> places;
  for (const Report& report : m_reports) {
    if (report.place) {
      places.push_back(&*report.place);
    }
  }
  return places;
}

void ReportFiles::clear() {
  for (Report& report : m_reports) {
    if (report.place && report.place->isRegularFile()) {
      report.place->clear();
    }
  }
}

void ReportFiles::add(const PairRecord& pair, const FileReader& read) {
  m_groups.add(pair);
  ++m_pairs;
  ++m_totals[std::string(wordFor(pair.verdict))];
  for (Report& report : m_reports) {
    report.renderer->add(pair, read);
  }
}

std::vector<std::string> ReportFiles::finish(RunRecord run) {
  run.pairs = m_pairs;
  run.totals = m_totals;
  std::vector<std::string> account = accountOf(run);
  const ReportSummary summary = {std::move(run), m_groups.rarestFirst(), std::move(account),
                                 m_records};
  std::vector<std::string> problems;
  for (Report& report : m_reports) {
    try {
      report.write(report.renderer->finish(summary));
    } catch (const std::exception& error) {
      problems.push_back(causeOf(error, Verbosity::Normal));
    }
  }
  return problems;
}
