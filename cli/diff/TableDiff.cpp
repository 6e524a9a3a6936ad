#include "cli/diff/TableDiff.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "cli/content/CsvTable.h"
#include "cli/content/TableColumns.h"
#include "cli/diff/DifferenceBuilder.h"
#include "cli/diff/GapAlignment.h"
#include "cli/diff/RowAlignment.h"

namespace {

constexpr std::size_t kMostRowsOfHunk = 8;
constexpr std::size_t kMostSingleMoves = 10;  // more are called another order

class TableComparison {
 public:
  TableComparison(std::string_view master, std::string_view output, DifferenceBuilder& builder)
      : m_builder(builder), m_master(master), m_output(output) {}

  void run();

 private:
  void noteSpelling();
  void addColumns();
  void addRows(const RowAlignment& rows);
  void addPair(const RowPair& pair);
  void addMove(const RowPair& move, bool isOneOfMany);
  void addCell(const std::string& place, const DiffValue* master, const DiffValue* output);
  void addBlock(const CsvTable& table, std::uint32_t begin, std::uint32_t end, bool isMaster);
  std::string columnName(const ColumnPair& column, std::uint32_t row) const;

  DifferenceBuilder& m_builder;
  CsvTable m_master;
  CsvTable m_output;
  TableColumns m_columns;
};

std::string nameOf(char separator) {
  return separator == '\t' ? "tabs" : std::string("\"") + separator + '"';
}

std::string rowNumber(std::uint32_t row) {
  return std::to_string(row + 1);
}

std::string placeOf(const RowPair& pair) {
  const std::string place = "row " + rowNumber(pair.master);
  return pair.master == pair.output ? place
                                    : place + " (" + rowNumber(pair.output) + " in the output)";
}

void TableComparison::run() {
  if (!m_master.isWhole() || !m_output.isWhole()) {
    m_builder.note("more than " + withThousands(CsvTable::kMostRows) +
                   " rows, or a row longer than " + withThousands(CsvTable::kLongestRow) +
                   " bytes; compared as text");
    m_builder.setCoarse();
    return;
  }
  m_columns = matchColumns(m_master, m_output);
  noteSpelling();
  addColumns();
  const RowAlignment rows = alignRows(m_master, m_output, m_columns);
  if (rows.isCoarse) {
    m_builder.setCoarse();
  }
  addRows(rows);
  if (m_builder.hunkCount() == 0) {
    m_builder.note(
        "the same cells; only quotes, separators, line ends or a byte-order mark differ");
  }
}

void TableComparison::noteSpelling() {
  if (m_master.separator() != m_output.separator() && m_master.size() > 0 && m_output.size() > 0) {
    m_builder.note("cells are separated by " + nameOf(m_output.separator()) +
                   ", in the master by " + nameOf(m_master.separator()));
  }
  for (const auto* const table : {&m_master, &m_output}) {
    if (table->hasOpenQuote()) {
      m_builder.note(std::string("the ") + (table == &m_master ? "master" : "output") +
                     " has a quote that is not closed; its quotes were taken as they are");
    }
  }
}

void TableComparison::addColumns() {
  for (const std::size_t column : m_columns.onlyInMaster) {
    m_builder.addRemoval("column " + std::to_string(column + 1) + ", only in the master",
                         {m_columns.masterNames[column], 1});
  }
  for (const std::size_t column : m_columns.onlyInOutput) {
    m_builder.addAddition("column " + std::to_string(column + 1) + ", only in the output",
                          {m_columns.outputNames[column], 1});
  }
  if (m_columns.isReordered) {
    std::string master;
    std::string output;
    for (const std::string& name : m_columns.masterNames) {
      master += (master.empty() ? "" : ", ") + name;
    }
    for (const std::string& name : m_columns.outputNames) {
      output += (output.empty() ? "" : ", ") + name;
    }
    m_builder.note("columns are in another order");
    m_builder.addChange("order of columns", {master, 1}, {output, 1});
  }
}

/// Goes through both tables from the top and adds what differs in the order in which it is met.
void TableComparison::addRows(const RowAlignment& rows) {
  if (rows.moves.size() > 1) {
    m_builder.note(withThousands(rows.moves.size()) + " rows are in another place" +
                   (rows.isOnlyMoved ? "; the rows are the same, in another order" : ""));
  }
  struct Step {
    std::uint32_t order;
    enum { Pair, Move, Removed, Added } kind;
    RowPair rows;  // for a block: where it begins and ends
  };
  std::vector<Step> steps;
  for (const RowPair& pair : rows.pairs) {
    steps.push_back({pair.output, Step::Pair, pair});
  }
  for (const RowPair& move : rows.moves) {
    steps.push_back({placeInB(rows.gaps, move.master), Step::Move, move});
  }
  for (const auto& [begin, end] : rows.removed) {
    steps.push_back({placeInB(rows.gaps, begin), Step::Removed, {begin, end}});
  }
  for (const auto& [begin, end] : rows.added) {
    steps.push_back({begin, Step::Added, {begin, end}});
  }
  std::stable_sort(steps.begin(), steps.end(),
                   [](const Step& a, const Step& b) { return a.order < b.order; });
  for (const Step& step : steps) {
    switch (step.kind) {
      case Step::Pair:
        addPair(step.rows);
        break;
      case Step::Move:
        addMove(step.rows, rows.moves.size() > kMostSingleMoves);
        break;
      case Step::Removed:
        addBlock(m_master, step.rows.master, step.rows.output, true);
        break;
      case Step::Added:
        addBlock(m_output, step.rows.master, step.rows.output, false);
        break;
    }
  }
}

/// The header's name, except in the header itself.
std::string TableComparison::columnName(const ColumnPair& column, std::uint32_t row) const {
  return m_columns.hasHeader && row > 0 && column.master < m_columns.masterNames.size()
             ? m_columns.masterNames[column.master]
             : "column " + std::to_string(column.master + 1);
}

void TableComparison::addPair(const RowPair& pair) {
  const std::vector<std::string> master = m_master.cells(pair.master);
  const std::vector<std::string> output = m_output.cells(pair.output);
  for (const ColumnPair& column : m_columns.pairsUpTo(std::max(master.size(), output.size()))) {
    const bool inMaster = column.master < master.size();
    const bool inOutput = column.output < output.size();
    if ((!inMaster && !inOutput) ||
        (inMaster && inOutput && master[column.master] == output[column.output])) {
      continue;
    }
    const std::string place = m_builder.keepsNext()
                                  ? placeOf(pair) + ", " + columnName(column, pair.master)
                                  : std::string();
    DiffValue removed;
    DiffValue added;
    if (inMaster) {
      removed = {master[column.master], m_master.lineOf(pair.master)};
    }
    if (inOutput) {
      added = {output[column.output], m_output.lineOf(pair.output)};
    }
    addCell(place, inMaster ? &removed : nullptr, inOutput ? &added : nullptr);
  }
}

void TableComparison::addCell(const std::string& place, const DiffValue* master,
                              const DiffValue* output) {
  if (master == nullptr) {
    m_builder.addAddition(place + " (no such cell in the master)", *output);
  } else if (output == nullptr) {
    m_builder.addRemoval(place + " (no such cell in the output)", *master);
  } else {
    m_builder.addChange(place, *master, *output);
  }
}

DiffLine wholeRow(const CsvTable& table, std::uint32_t row, DiffLine::Kind kind,
                  DiffSpan::Kind spanKind) {
  constexpr std::size_t kMostBytes = 400;
  DiffLine line;
  line.kind = kind;
  const std::string_view raw = table.rawRow(row);
  line.isCutAfter = raw.size() > kMostBytes;
  line.spans = {{spanKind, std::string(raw.substr(0, kMostBytes)), {}}};
  (kind == DiffLine::Kind::Removed ? line.masterLine : line.outputLine) = table.lineOf(row);
  return line;
}

/// Many moves are one change: another order.
void TableComparison::addMove(const RowPair& move, bool isOneOfMany) {
  const std::string_view row = m_master.rawRow(move.master);
  DiffHunk hunk;
  if (m_builder.keepsNext()) {
    hunk.place = "row " + rowNumber(move.master) + " moved to row " + rowNumber(move.output);
    hunk.lines = {wholeRow(m_master, move.master, DiffLine::Kind::Removed, DiffSpan::Kind::Same),
                  wholeRow(m_output, move.output, DiffLine::Kind::Added, DiffSpan::Kind::Same)};
  }
  if (isOneOfMany) {
    m_builder.add(std::move(hunk), {}, "rows in another order");
  } else {
    m_builder.add(std::move(hunk), row, row);
  }
}

/// Adds rows that are only in one of the tables.
void TableComparison::addBlock(const CsvTable& table, std::uint32_t begin, std::uint32_t end,
                               bool isMaster) {
  DiffHunk hunk;
  if (m_builder.keepsNext()) {
    hunk.place = (end - begin == 1 ? "row " + rowNumber(begin)
                                   : "rows " + rowNumber(begin) + " to " + rowNumber(end - 1)) +
                 (isMaster ? ", only in the master" : ", only in the output");
    const std::uint32_t shown = std::min<std::uint32_t>(end, begin + kMostRowsOfHunk);
    for (std::uint32_t row = begin; row < shown; ++row) {
      hunk.lines.push_back(wholeRow(table, row,
                                    isMaster ? DiffLine::Kind::Removed : DiffLine::Kind::Added,
                                    DiffSpan::Kind::Changed));
    }
    hunk.lines.back().omitted = end - shown;
  }
  const std::string_view first = table.rawRow(begin);
  const std::string_view last = table.rawRow(end - 1);
  const std::string_view block(first.data(),
                               static_cast<std::size_t>(last.data() + last.size() - first.data()));
  m_builder.add(std::move(hunk), isMaster ? block : std::string_view(),
                isMaster ? std::string_view() : block);
}

}  // namespace

Difference tableDifference(const DiffRequest& request) {
  DifferenceBuilder builder("csv", request);
  TableComparison(request.master, request.output, builder).run();
  return builder.take();
}
