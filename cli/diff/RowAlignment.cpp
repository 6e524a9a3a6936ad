#include "cli/diff/RowAlignment.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "cli/diff/GapAlignment.h"

namespace {

using Hashes = std::vector<std::uint64_t>;
using Ids = std::vector<std::uint32_t>;

/// `named` is the number of columns that have a name; the others are compared place by place.
Hashes hashesOf(const CsvTable& table, const std::vector<std::size_t>& columns, std::size_t named) {
  Hashes hashes(table.size());
  for (std::size_t row = 0; row < hashes.size(); ++row) {
    hashes[row] = table.hash(row, columns, named);
  }
  return hashes;
}

/// Small numbers for the hashes from `begin` to `end`: the same for the same hash.
Ids idsOf(const Hashes& hashes, std::size_t begin, std::size_t end,
          std::unordered_map<std::uint64_t, std::uint32_t>& known) {
  Ids ids;
  ids.reserve(end - begin);
  for (std::size_t i = begin; i < end; ++i) {
    ids.push_back(
        known.try_emplace(hashes[i], static_cast<std::uint32_t>(known.size())).first->second);
  }
  return ids;
}

class RowAligner {
 public:
  RowAligner(const CsvTable& master, const CsvTable& output, const TableColumns& columns);
  RowAlignment align();

 private:
  void findGaps();
  void findMoves();
  void pairInGap(const SequenceEdit& gap);
  void pairByKey(Ids& master, Ids& output);
  void pairAcrossGaps();
  void collectRest();
  std::uint32_t cellsInCommon(std::uint32_t masterRow, std::uint32_t outputRow) const;
  void use(std::uint32_t masterRow, std::uint32_t outputRow, std::vector<RowPair>& where);
  Ids unusedIn(const std::vector<bool>& used, std::uint32_t begin, std::uint32_t end) const;

  const CsvTable& m_master;
  const CsvTable& m_output;
  std::vector<ColumnPair> m_columnPairs;
  std::uint64_t m_costOfOne = 0;  ///< steps to compare two rows cell by cell
  Hashes m_masterHashes;
  Hashes m_outputHashes;
  std::vector<bool> m_masterUsed;  ///< rows that have found their place; true outside of gaps
  std::vector<bool> m_outputUsed;
  WorkBudget m_budget;
  RowAlignment m_result;
};

RowAligner::RowAligner(const CsvTable& master, const CsvTable& output, const TableColumns& columns)
    : m_master(master),
      m_output(output),
      m_masterUsed(master.size(), true),
      m_outputUsed(output.size(), true) {
  std::vector<std::size_t> masterOrder;
  std::vector<std::size_t> outputOrder;
  for (const ColumnPair& pair : columns.pairs) {
    masterOrder.push_back(pair.master);
    outputOrder.push_back(pair.output);
  }
  m_masterHashes =
      hashesOf(master, masterOrder, columns.isMatched() ? columns.masterNames.size() : 0);
  m_outputHashes =
      hashesOf(output, outputOrder, columns.isMatched() ? columns.outputNames.size() : 0);
  m_columnPairs =
      columns.pairsUpTo(std::max(columns.masterNames.size(), columns.outputNames.size()));
  m_costOfOne = 20 * (m_columnPairs.size() + 1);
}

RowAlignment RowAligner::align() {
  findGaps();
  findMoves();
  for (const SequenceEdit& gap : m_result.gaps) {
    pairInGap(gap);
  }
  pairAcrossGaps();
  collectRest();
  return std::move(m_result);
}

/// Aligns equal rows. What both tables start and end with costs no memory.
void RowAligner::findGaps() {
  const std::size_t most = std::min(m_masterHashes.size(), m_outputHashes.size());
  const auto* const master = m_masterHashes.data();
  const auto start = static_cast<std::size_t>(
      std::mismatch(master, master + most, m_outputHashes.data()).first - master);
  std::size_t rest = 0;
  while (rest < most - start && m_masterHashes[m_masterHashes.size() - rest - 1] ==
                                    m_outputHashes[m_outputHashes.size() - rest - 1]) {
    ++rest;
  }
  std::unordered_map<std::uint64_t, std::uint32_t> known;
  const Ids masterIds = idsOf(m_masterHashes, start, m_masterHashes.size() - rest, known);
  const Ids outputIds = idsOf(m_outputHashes, start, m_outputHashes.size() - rest, known);
  SequenceDiff diff = diffSequences(masterIds, outputIds, m_budget);
  const auto offset = static_cast<std::uint32_t>(start);
  for (SequenceEdit& edit : diff.edits) {
    edit = {edit.beginA + offset, edit.endA + offset, edit.beginB + offset, edit.endB + offset};
    std::fill(m_masterUsed.begin() + edit.beginA, m_masterUsed.begin() + edit.endA, false);
    std::fill(m_outputUsed.begin() + edit.beginB, m_outputUsed.begin() + edit.endB, false);
  }
  m_result.isCoarse = diff.isCoarse;
  m_result.gaps = std::move(diff.edits);
}

Ids RowAligner::unusedIn(const std::vector<bool>& used, std::uint32_t begin,
                         std::uint32_t end) const {
  Ids rows;
  for (std::uint32_t row = begin; row < end; ++row) {
    if (!used[row]) {
      rows.push_back(row);
    }
  }
  return rows;
}

void RowAligner::use(std::uint32_t masterRow, std::uint32_t outputRow,
                     std::vector<RowPair>& where) {
  m_masterUsed[masterRow] = true;
  m_outputUsed[outputRow] = true;
  where.push_back({masterRow, outputRow});
}

/// Finds equal rows among those that are left, first with first, second with second.
void RowAligner::findMoves() {
  const Ids master = unusedIn(m_masterUsed, 0, static_cast<std::uint32_t>(m_masterUsed.size()));
  const Ids output = unusedIn(m_outputUsed, 0, static_cast<std::uint32_t>(m_outputUsed.size()));
  std::unordered_multimap<std::uint64_t, std::uint32_t> inOutput;
  for (auto row = output.rbegin(); row != output.rend(); ++row) {
    inOutput.emplace(m_outputHashes[*row], *row);
  }
  for (const std::uint32_t row : master) {
    const auto match = inOutput.find(m_masterHashes[row]);
    if (match != inOutput.end()) {
      use(row, match->second, m_result.moves);
      inOutput.erase(match);
    }
  }
  m_result.isOnlyMoved = m_result.moves.size() == master.size() && inOutput.empty();
}

std::uint32_t RowAligner::cellsInCommon(std::uint32_t masterRow, std::uint32_t outputRow) const {
  const std::vector<std::string> master = m_master.cells(masterRow);
  const std::vector<std::string> output = m_output.cells(outputRow);
  std::uint32_t common = 0;
  for (const ColumnPair& column : m_columnPairs) {
    if (column.master < master.size() && column.output < output.size() &&
        master[column.master] == output[column.output] && !master[column.master].empty()) {
      ++common;
    }
  }
  return common;
}

void RowAligner::pairInGap(const SequenceEdit& gap) {
  constexpr std::uint64_t kMostComparisons = 20'000;  // of two rows
  constexpr std::size_t kFewColumns = 2;  // with more, some cell of a row that changed is the same
  Ids master = unusedIn(m_masterUsed, gap.beginA, gap.endA);
  Ids output = unusedIn(m_outputUsed, gap.beginB, gap.endB);
  if (std::uint64_t{master.size()} * output.size() > kMostComparisons) {
    pairByKey(master, output);
  }
  const auto similarity = [this](std::uint32_t a, std::uint32_t b) { return cellsInCommon(a, b); };
  for (const auto& [inMaster, inOutput] :
       pairUnequal(master, output, similarity, m_costOfOne, m_budget)) {
    if (m_columnPairs.size() <= kFewColumns || cellsInCommon(inMaster, inOutput) > 0) {
      use(inMaster, inOutput, m_result.pairs);
    }
  }
}

/// The rows of `rows` by what they have in `column`; rows that share their value are left out.
std::unordered_map<std::string, std::uint32_t> byValue(const CsvTable& table, const Ids& rows,
                                                       std::size_t column) {
  constexpr std::uint32_t kSeveral = ~std::uint32_t{0};
  std::unordered_map<std::string, std::uint32_t> found;
  for (const std::uint32_t row : rows) {
    std::vector<std::string> cells = table.cells(row);
    if (column < cells.size() && !cells[column].empty()) {
      const auto [entry, isNew] = found.try_emplace(std::move(cells[column]), row);
      entry->second = isNew ? row : kSeveral;
    }
  }
  for (auto entry = found.begin(); entry != found.end();) {
    entry = entry->second == kSeveral ? found.erase(entry) : std::next(entry);
  }
  return found;
}

/// Pairs rows with the same key: the value in that column which tells most rows apart and occurs in
/// both tables. Takes them out of the lists.
void RowAligner::pairByKey(Ids& master, Ids& output) {
  constexpr std::size_t kMostRows = 500'000;
  constexpr std::size_t kMostKeys = 8;  // columns to try
  if (std::max(master.size(), output.size()) > kMostRows) {
    m_result.isCoarse = true;
    return;
  }
  std::vector<RowPair> best;
  for (std::size_t i = 0; i < std::min(kMostKeys, m_columnPairs.size()); ++i) {
    if (!m_budget.spend(20 * m_columnPairs.size() * (master.size() + output.size()))) {
      break;
    }
    const auto inMaster = byValue(m_master, master, m_columnPairs[i].master);
    const auto inOutput = byValue(m_output, output, m_columnPairs[i].output);
    std::vector<RowPair> pairs;
    for (const auto& [value, row] : inMaster) {
      const auto match = inOutput.find(value);
      if (match != inOutput.end()) {
        pairs.push_back({row, match->second});
      }
    }
    if (pairs.size() > best.size()) {
      best = std::move(pairs);
    }
  }
  if (2 * best.size() < std::min(master.size(), output.size())) {
    return;  // no key, but values that happen to be the same
  }
  for (const RowPair& pair : best) {
    use(pair.master, pair.output, m_result.pairs);
  }
  master = unusedIn(m_masterUsed, master.front(), master.back() + 1);
  output = unusedIn(m_outputUsed, output.front(), output.back() + 1);
}

/// Pairs rows that have moved and changed: more than half of their cells are the same.
void RowAligner::pairAcrossGaps() {
  constexpr std::uint64_t kMostComparisons = 100'000;
  const Ids master = unusedIn(m_masterUsed, 0, static_cast<std::uint32_t>(m_masterUsed.size()));
  const Ids output = unusedIn(m_outputUsed, 0, static_cast<std::uint32_t>(m_outputUsed.size()));
  const std::uint64_t comparisons = std::uint64_t{master.size()} * output.size();
  if (comparisons > kMostComparisons || !m_budget.spend(comparisons * m_costOfOne)) {
    return;
  }
  for (const std::uint32_t row : master) {
    std::uint32_t most = 0;
    std::uint32_t bestRow = 0;
    for (const std::uint32_t other : output) {
      const std::uint32_t common = m_outputUsed[other] ? 0 : cellsInCommon(row, other);
      if (common > most) {
        most = common;
        bestRow = other;
      }
    }
    if (std::size_t{2} * most > m_columnPairs.size()) {
      use(row, bestRow, m_result.pairs);
    }
  }
}

void RowAligner::collectRest() {
  const auto collect = [](const std::vector<bool>& used, std::uint32_t begin, std::uint32_t end,
                          auto& blocks) {
    for (std::uint32_t row = begin; row < end; ++row) {
      if (used[row]) {
        continue;
      }
      if (row > begin && !used[row - 1]) {
        blocks.back().second = row + 1;
      } else {
        blocks.emplace_back(row, row + 1);
      }
    }
  };
  for (const SequenceEdit& gap : m_result.gaps) {
    collect(m_masterUsed, gap.beginA, gap.endA, m_result.removed);
    collect(m_outputUsed, gap.beginB, gap.endB, m_result.added);
  }
}

}  // namespace

RowAlignment alignRows(const CsvTable& master, const CsvTable& output,
                       const TableColumns& columns) {
  return RowAligner(master, output, columns).align();
}
