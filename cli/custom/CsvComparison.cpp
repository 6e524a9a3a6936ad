#include "cli/custom/CsvComparison.h"

#include <algorithm>
#include <string>
#include <vector>

#include "cli/content/CsvCells.h"
#include "cli/content/CsvTable.h"
#include "cli/content/EqualLines.h"
#include "cli/custom/CsvColumns.h"
#include "cli/custom/CsvKeys.h"
#include "cli/terminal/Counts.h"

namespace {

using Verdict = ContentOutcome::Verdict;

/// The values of the first row.
std::vector<std::string> firstRow(std::string_view text, char separator) {
  const CsvGrammar grammar = {separator, true};
  std::vector<std::string> cells;
  std::string buffer;
  for (std::size_t begin = 0;; ++begin) {
    const std::size_t end = grammar.endOfCell(text, begin);
    if (end == std::string_view::npos) {
      return cells;  // a quote is not closed
    }
    cells.emplace_back(grammar.valueOf(text.substr(begin, end - begin), buffer));
    if (end == text.size() || text[end] != separator) {
      return cells;
    }
    begin = end;
  }
}

/// How cells may differ, and where they did.
class CellJudge {
 public:
  explicit CellJudge(const CsvColumns& columns)
      : m_columns(columns), m_usedIgnoring(columns.size()), m_usedTolerance(columns.size() + 1) {}

  /// Whether two different values of a column are as good as equal.
  bool allows(std::size_t column, std::string_view master, std::string_view output) {
    const CsvColumn& rule = m_columns.at(column);
    if (rule.isIgnored) {
      m_usedIgnoring[column] = true;
      return true;
    }
    if (rule.tolerance.isNone() || !rule.tolerance.allows(master, output)) {
      return false;
    }
    m_usedTolerance[std::min(column, m_columns.size())] = true;
    return true;
  }

  std::vector<std::string> rules() const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      if (m_usedIgnoring[i]) {
        names.push_back("ignored column " + m_columns.at(i).name);
      }
      if (m_usedTolerance[i]) {
        names.push_back("tolerance in column " + m_columns.at(i).name);
      }
    }
    if (m_usedTolerance.back()) {
      names.emplace_back("tolerance");
    }
    return names;
  }

 private:
  const CsvColumns& m_columns;
  std::vector<bool> m_usedIgnoring;
  std::vector<bool> m_usedTolerance;  ///< the last one: in columns without a name
};

/// One of the two texts, from the row that is compared next.
struct Side {
  std::string_view text;
  std::size_t row = 0;   ///< where the next row starts
  std::size_t cell = 0;  ///< where the next cell starts
  std::size_t end = 0;   ///< where it ends
  std::string buffer;

  bool hasRow() const { return row < text.size(); }
  std::string_view raw() const { return text.substr(cell, end - cell); }
};

/// Compares rows in their order.
class RowWalk {
 public:
  RowWalk(std::string_view master, std::string_view output, char separator, CellJudge& judge)
      : m_grammar{separator, true}, m_judge(judge) {
    m_master.text = master;
    m_output.text = output;
  }

  ContentOutcome run(bool hasHeader) {
    bool isHeader = hasHeader;
    while (m_master.hasRow() && m_output.hasRow()) {
      ContentOutcome outcome = compareRow(isHeader);
      if (outcome.verdict != Verdict::Equal) {
        return outcome;
      }
      isHeader = false;
      skipEqualRows();
    }
    return m_master.hasRow() || m_output.hasRow() ? ContentOutcome::differs() : ContentOutcome();
  }

  bool sawSpelling() const { return m_sawSpelling; }

 private:
  /// Moves both sides past rows that are equal byte for byte. Only rows without quotes: they end at
  /// their line ends.
  void skipEqualRows() {
    const std::size_t rows =
        equalLines(m_master.text.substr(m_master.row), m_output.text.substr(m_output.row), '"');
    m_master.row += rows;
    m_output.row += rows;
  }

  ContentOutcome compareRow(bool isHeader) {
    m_master.cell = m_master.row;
    m_output.cell = m_output.row;
    for (std::size_t column = 0;; ++column) {
      for (Side* const side : {&m_master, &m_output}) {
        side->end = m_grammar.endOfCell(side->text, side->cell);
        if (side->end == std::string_view::npos) {
          return openQuote(*side);
        }
      }
      if (m_master.raw() != m_output.raw() && !isEqualCell(column, isHeader)) {
        return ContentOutcome::differs();
      }
      const bool goesOn = isAtSeparator(m_master);
      if (goesOn != isAtSeparator(m_output)) {
        return ContentOutcome::differs();
      }
      if (!goesOn) {
        break;
      }
      m_master.cell = m_master.end + 1;
      m_output.cell = m_output.end + 1;
    }
    m_sawSpelling = m_sawSpelling || lineEndOf(m_master) != lineEndOf(m_output);
    endRow(m_master);
    endRow(m_output);
    return {};
  }

  bool isEqualCell(std::size_t column, bool isHeader) {
    const std::string_view master = m_grammar.valueOf(m_master.raw(), m_master.buffer);
    const std::string_view output = m_grammar.valueOf(m_output.raw(), m_output.buffer);
    if (master == output) {
      m_sawSpelling = true;
      return true;
    }
    return !isHeader && m_judge.allows(column, master, output);
  }

  bool isAtSeparator(const Side& side) const {
    return side.end < side.text.size() && side.text[side.end] == m_grammar.separator;
  }

  static char lineEndOf(const Side& side) {
    return side.end < side.text.size() ? side.text[side.end] : '\0';
  }

  static void endRow(Side& side) {
    side.row = side.end < side.text.size() ? CsvGrammar::nextLine(side.text, side.end) : side.end;
  }

  ContentOutcome openQuote(const Side& side) const {
    const auto line =
        1 + std::count(side.text.begin(),
                       side.text.begin() + static_cast<std::ptrdiff_t>(side.cell), '\n');
    return {&side == &m_master ? Verdict::BadMaster : Verdict::BadOutput,
            {},
            "has a quote that is not closed, in line " +
                withThousands(static_cast<std::uint64_t>(line))};
  }

  const CsvGrammar m_grammar;
  CellJudge& m_judge;
  Side m_master;
  Side m_output;
  bool m_sawSpelling = false;
};

class CsvPair {
 public:
  CsvPair(std::string_view master, std::string_view output, const CsvRules& rules)
      : m_masterBytes(master),
        m_outputBytes(output),
        m_master(CsvGrammar::withoutByteOrderMark(master)),
        m_output(CsvGrammar::withoutByteOrderMark(output)),
        m_rules(rules),
        m_columns(rules, headerOf(m_master)),
        m_judge(m_columns) {}

  ContentOutcome compare() {
    if (!m_columns.problem().empty()) {
      return {Verdict::BadMaster, {}, m_columns.problem()};
    }
    if (m_masterBytes == m_outputBytes) {
      return {};
    }
    ContentOutcome outcome = m_rules.keys.empty() ? compareInOrder() : compareByKeys();
    if (outcome.verdict == Verdict::Differs && outcome.problem.empty()) {
      outcome.problem = CsvColumns(m_rules, headerOf(m_output)).problem();
    }
    if (outcome.verdict == Verdict::Equal) {
      outcome.rules = m_judge.rules();
      if (m_isReordered) {
        outcome.rules.emplace_back("rows in another order");
      }
      if (m_sawSpelling || outcome.rules.empty()) {
        outcome.rules.emplace_back("other quotes, line ends or byte-order mark");
      }
    }
    return outcome;
  }

 private:
  std::vector<std::string> headerOf(std::string_view text) const {
    if (!CsvColumns::needHeader(m_rules)) {
      return {};
    }
    return firstRow(text, m_rules.separator);
  }

  ContentOutcome compareInOrder() {
    RowWalk walk(m_master, m_output, m_rules.separator, m_judge);
    ContentOutcome outcome = walk.run(m_rules.hasHeader);
    m_sawSpelling = m_sawSpelling || walk.sawSpelling();
    return outcome;
  }

  ContentOutcome compareByKeys() {
    const CsvTable master(m_master, m_rules.separator);
    const CsvTable output(m_output, m_rules.separator);
    for (const auto* const table : {&master, &output}) {
      const Verdict verdict = table == &master ? Verdict::BadMaster : Verdict::BadOutput;
      if (table->hasOpenQuote()) {
        return {verdict, {}, "has a quote that is not closed"};
      }
      if (!table->isWhole()) {
        return {verdict, {}, "has too many rows, or too long ones, to compare them by keys"};
      }
    }
    if (master.size() == 0 || output.size() == 0 || master.cells(0) != output.cells(0)) {
      return ContentOutcome::differs();
    }
    const KeyedRows rows = pairByKeys(master, output, m_columns);
    if (!rows.masterProblem.empty()) {
      return {Verdict::BadMaster, {}, rows.masterProblem};
    }
    if (!rows.outputProblem.empty()) {
      return ContentOutcome::differs(rows.outputProblem);
    }
    if (!rows.onlyInMaster.empty() || !rows.onlyInOutput.empty()) {
      return ContentOutcome::differs();
    }
    m_isReordered = rows.isReordered;
    const bool allAllowed =
        std::all_of(rows.pairs.begin(), rows.pairs.end(), [&](const auto& pair) {
          return master.rawRow(pair.first) == output.rawRow(pair.second) ||
                 allows(master.cells(pair.first), output.cells(pair.second));
        });
    return allAllowed ? ContentOutcome() : ContentOutcome::differs();
  }

  bool allows(const std::vector<std::string>& master, const std::vector<std::string>& output) {
    if (master.size() != output.size()) {
      return false;
    }
    for (std::size_t i = 0; i < master.size(); ++i) {
      if (master[i] != output[i] && !m_judge.allows(i, master[i], output[i])) {
        return false;
      }
    }
    m_sawSpelling = m_sawSpelling || master == output;
    return true;
  }

  const std::string_view m_masterBytes;
  const std::string_view m_outputBytes;
  const std::string_view m_master;  ///< without its byte-order mark
  const std::string_view m_output;
  const CsvRules& m_rules;
  const CsvColumns m_columns;
  CellJudge m_judge;
  bool m_isReordered = false;
  bool m_sawSpelling =
      m_masterBytes.size() - m_master.size() != m_outputBytes.size() - m_output.size();
};

}  // namespace

ContentOutcome compareCsv(std::string_view master, std::string_view output, const CsvRules& rules) {
  return CsvPair(master, output, rules).compare();
}
