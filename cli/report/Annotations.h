#pragma once

#include "cli/report/ReportRenderer.h"
#include "cli/report/Topics.h"

/// The ten most telling lines of a run, printed in the syntax by which a build server shows them
/// beside the code. One class for each server.
class Annotations : public ReportRenderer {
 public:
  void add(const PairRecord& pair, const FileReader& read) override;
  ReportDocument finish(const ReportSummary& summary) override;

 protected:
  struct Line {
    std::string file;        ///< a topic's first file, printable; empty: unknown
    std::uint64_t line = 0;  ///< 0: unknown
    std::string message;     ///< printable
  };

  /// All that is printed for `lines`, of which there is at least one.
  virtual std::string print(const std::vector<Line>& lines) const = 0;

 private:
  Topics m_topics;
};

/// Workflow commands: GitHub shows them at the job, and at the lines of a pull request's files.
class GitHubAnnotations : public Annotations {
 protected:
  std::string print(const std::vector<Line>& lines) const override;
};

/// GitLab has no such commands. The lines make a section of the job's log, open and in red.
class GitLabAnnotations : public Annotations {
 protected:
  std::string print(const std::vector<Line>& lines) const override;
};
