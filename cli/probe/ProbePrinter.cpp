#include "cli/probe/ProbePrinter.h"

#include <algorithm>
#include <limits>
#include <map>
#include <ostream>

#include "cli/terminal/Excerpt.h"
#include "cli/terminal/Printable.h"

namespace {

constexpr std::size_t kColumns = 70;
constexpr std::size_t kUsuallyShown = 10;

/// An expression as it is written in a file: its backslashes are not escaped once more.
std::string shownExpression(const std::string& expression) {
  std::string shown;
  const std::string escaped = printable(expression);
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    i += escaped.compare(i, 2, "\\\\") == 0 ? 1 : 0;
    shown += escaped[i];
  }
  return shown;
}

class FindingsPrinter {
 public:
  FindingsPrinter(const ProbeFindings& findings, Verbosity verbosity, const Palette& palette,
                  std::ostream& out)
      : m_found(findings),
        m_palette(palette),
        m_out(out),
        m_most(verbosity == Verbosity::Verbose ? std::numeric_limits<std::size_t>::max()
                                               : kUsuallyShown) {}

  void printAll() {
    printSummary();
    printKinds();
    for (const Proposal& proposal : m_found.proposals.patterns) {
      print(proposal);
    }
    printUnexplained();
    printMissed();
    printStrays();
  }

  void printConclusion() {
    for (const std::string& file : m_found.texts.cutFiles()) {
      m_out << printable(file) << " contains a NUL byte; only the text before it was compared\n";
    }
    const std::size_t patterns = m_found.proposals.patterns.size();
    const std::size_t left = m_found.check.unexplained.size();
    if (m_found.texts.fileCount() == 0) {
      m_out << "No file is in all runs.\n";
    } else if (m_found.variations.differingFiles == 0) {
      m_out << "The runs agree; no pattern is needed.\n";
    } else if (left == 0) {
      m_out << "With " << (patterns == 1 ? "this pattern" : "these " + countOf(patterns, "pattern"))
            << " the runs agree.\n";
    } else {
      m_out << (patterns == 0 ? "No pattern is proposed" : "With " + countOf(patterns, "pattern"))
            << (patterns == 0 ? "; " : ", ") << countOf(left, "difference") << " at "
            << countOf(m_found.check.unexplainedPlaces, "place") << " in "
            << countOf(m_found.check.differingFiles, "file") << (left == 1 ? " remains" : " remain")
            << " unexplained.\n";
    }
    if (patterns > 0 && m_found.check.planted > 0) {
      m_out << "Of " << countOf(m_found.check.planted, "change")
            << " planted in visible numbers and words, "
            << m_found.check.planted - m_found.check.missed.size() << " are still found.\n";
    }
  }

 private:
  void printSummary() {
    const RunFolders& folders = m_found.texts.folders();
    m_out << countOf(m_found.texts.fileCount(), m_found.format + " file") << " in "
          << countOf(folders.folders.size(), "run") << "; " << m_found.variations.differingFiles
          << (m_found.variations.differingFiles == 1 ? " differs" : " differ");
    if (folders.others > 0) {
      m_out << " (" << countOf(folders.others, "file") << " with other endings not looked at)";
    }
    m_out << ".\n";
  }

  /// What varies, whether there is a pattern for it or not.
  void printKinds() {
    std::map<ValueKind, std::size_t> places;
    for (const Variation& variation : m_found.variations.all) {
      places[variation.kind] += variation.places;
    }
    const char* separator = "What varies: ";
    for (const auto& [kind, count] : places) {
      m_out << separator << nameOf(kind) << " (" << countOf(count, "place") << ')';
      separator = ", ";
    }
    m_out << (places.empty() ? "" : "\n");
  }

  void print(const Proposal& proposal) {
    m_out << '\n'
          << m_palette.paint(Color::Green, proposal.name) << ": " << nameOf(proposal.kind) << ", "
          << countOf(proposal.places, "place") << " in " << countOf(proposal.files, "file") << '\n';
    for (const auto& [before, after] : proposal.examples) {
      m_out << "    " << shortened(before, kColumns) << '\n';
    }
    m_out << "    expression  " << shownExpression(proposal.expression) << '\n';
    const Reach& reach = proposal.reach;
    if (reach.others == 0) {
      m_out << "    reach       nothing else\n";
      return;
    }
    m_out << "    reach       "
          << m_palette.paint(Color::Yellow, countOf(reach.others, "other place") + " in " +
                                                countOf(reach.files, "file"))
          << '\n';
    for (const OtherMatch& match : reach.matches) {
      m_out << "        " << printable(m_found.texts.folders().files[match.file]) << "  "
            << sampleOf(match) << '\n';
    }
  }

  std::string sampleOf(const OtherMatch& match) const {
    constexpr std::size_t kAround = 16;
    const std::size_t cut = match.before.size() - std::min(match.before.size(), kAround);
    return shortened(textAfter(match.before, startOfCharacter(match.before.c_str(), cut),
                               match.before.size()),
                     kAround) +
           m_palette.paint(Color::Yellow, shortened(match.text, kColumns)) +
           shortened(match.after, kAround);
  }

  void printUnexplained() {
    const std::vector<Unexplained>& all = m_found.check.unexplained;
    if (all.empty()) {
      return;
    }
    m_out << '\n' << m_palette.paint(Color::Red, "Not explained:") << '\n';
    for (std::size_t i = 0; i < std::min(all.size(), m_most); ++i) {
      const Unexplained& one = all[i];
      m_out << "    " << printable(one.where) << "  " << countOf(one.places, "place") << " in "
            << countOf(one.files, "file") << "\n      - " << shown(one.textA) << "\n      + "
            << shown(one.textB) << runOf(one) << "\n        " << one.declined.reason << '\n';
      if (!one.declined.expression.empty()) {
        m_out << "        if it is not, this would hide it: "
              << shownExpression(one.declined.expression) << '\n';
      }
    }
    if (all.size() > m_most) {
      m_out << "    ... and " << all.size() - m_most << " more (-v shows all)\n";
    }
  }

  /// Where the other text is from, if that is not clear.
  std::string runOf(const Unexplained& one) const {
    const std::vector<std::string>& folders = m_found.texts.folders().folders;
    return folders.size() > 2 ? "  (in " + printable(folders[one.run]) + ')' : "";
  }

  static std::string shown(const std::string& text) {
    return text.empty() ? "(nothing)" : shortened(text, kColumns);
  }

  void printMissed() {
    const std::vector<MissedChange>& all = m_found.check.missed;
    if (all.empty()) {
      return;
    }
    m_out << '\n' << m_palette.paint(Color::Red, "Planted changes that the patterns hide:") << '\n';
    for (std::size_t i = 0; i < std::min(all.size(), m_most); ++i) {
      m_out << "    " << printable(all[i].where) << "  " << all[i].from << " -> " << all[i].to
            << " in " << shortened(all[i].context, kColumns) << '\n';
    }
  }

  void printStrays() {
    const RunFolders& folders = m_found.texts.folders();
    if (folders.strays.empty()) {
      return;
    }
    m_out << '\n'
          << m_palette.paint(Color::Red,
                             countOf(folders.strays.size(), "file") + " not in all runs:")
          << '\n';
    for (std::size_t i = 0; i < std::min(folders.strays.size(), m_most); ++i) {
      m_out << "    " << printable(folders.strays[i].first) << " is only in ";
      const char* separator = "";
      for (const std::size_t run : folders.strays[i].second) {
        m_out << separator << printable(folders.folders[run]);
        separator = ", ";
      }
      m_out << '\n';
    }
    if (folders.strays.size() > m_most) {
      m_out << "    ... and " << folders.strays.size() - m_most << " more (-v shows all)\n";
    }
  }

  const ProbeFindings& m_found;
  const Palette& m_palette;
  std::ostream& m_out;
  const std::size_t m_most;  ///< entries of a list
};

}  // namespace

bool isExplained(const ProbeFindings& findings) {
  return findings.texts.fileCount() > 0 && findings.texts.folders().strays.empty() &&
         findings.texts.cutFiles().empty() && findings.check.unexplained.empty() &&
         findings.check.missed.empty();
}

void printFindings(const ProbeFindings& findings, Verbosity verbosity, const Palette& palette,
                   std::ostream& out) {
  FindingsPrinter printer(findings, verbosity, palette, out);
  if (verbosity != Verbosity::Quiet) {
    printer.printAll();
    out << '\n';
  }
  printer.printConclusion();
}
