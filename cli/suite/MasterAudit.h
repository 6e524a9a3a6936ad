#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cli/suite/Finding.h"
#include "cli/suite/MasterRules.h"
#include "cli/suite/ReportFinder.h"

/// Looks into the masters themselves, one at a time: whether they are fit to be compared with,
/// whether another report has the same, and which normalisations have anything to do.
class MasterAudit {
 public:
  /// All arguments must outlive the object.
  MasterAudit(const FoundReports& found, const FindingSink& sink);

  /// Looks at a master. One that several formats compare comes once for each of them, in a row.
  void visit(const MasterRule& rule, const std::string& master, std::uint32_t report);

  /// Tells what can only be told at the end: normalisations without work and, unless only some
  /// formats are selected, reports without masters.
  void finish(bool isOfSomeFormats);

  std::uint64_t masters() const { return m_masters; }

 private:
  /// The normalisations of a format, and which of them have changed a master.
  struct Rules {
    std::vector<bool> isUsed;
    const OrvPatternList* patterns = nullptr;
  };

  void inspect(const MasterRule& rule, const std::string& master);
  void findSame(const std::string& master);
  void tryRules(const MasterRule& rule);

  const FoundReports& m_found;
  const FindingSink& m_sink;
  std::uint64_t m_masters = 0;
  std::string m_path;   ///< of the last master
  std::string m_stem;   ///< path of its report without the extension
  std::string m_bytes;  ///< its content; empty if it could not be read, or is not to be
  struct First {
    std::string path;
    std::string stem;
  };
  std::unordered_map<std::string, First> m_firstByHash;
  std::map<std::string_view, Rules> m_rules;  ///< by format
  std::set<std::string> m_stems;              ///< of reports that have masters
};
