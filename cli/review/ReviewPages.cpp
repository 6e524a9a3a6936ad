#include "cli/review/ReviewPages.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "cli/report/DifferencePrinter.h"
#include "cli/report/GroupText.h"
#include "cli/report/PlainText.h"
#include "cli/report/SideBySide.h"
#include "cli/terminal/Printable.h"

namespace {

using Fix = Decision::Fix;

const char* wordFor(std::optional<Fix> fix) {
  return !fix ? "" : *fix == Fix::Accept ? "accept" : *fix == Fix::Fault ? "fault" : "skip";
}

Color colorOf(std::optional<Fix> fix) {
  return !fix                  ? Color::Dim
         : *fix == Fix::Accept ? Color::Green
         : *fix == Fix::Fault  ? Color::Red
                               : Color::Yellow;
}

/// Leaves the hunks that show one of the item's changes.
void leaveOnly(const ReviewItem& item, Difference& difference) {
  const auto isForeign = [&item](const DiffHunk& hunk) {
    return std::none_of(item.changes.begin(), item.changes.end(),
                        [&hunk](const ChangeGroup& change) { return hasGroup(hunk, change.id); });
  };
  auto& hunks = difference.hunks;
  hunks.erase(std::remove_if(hunks.begin(), hunks.end(), isForeign), hunks.end());
  difference.hunkCount = hunks.size();
}

}  // namespace

std::string_view wordFor(HunkView view) {
  return view == HunkView::Unified      ? "unified"
         : view == HunkView::SideBySide ? "side by side"
                                        : "normalised";
}

/// Rows of a page, in the making.
class ReviewPages::Rows {
 public:
  explicit Rows(std::size_t width) : m_width(width) {}

  std::size_t width() const { return m_width; }
  void add(const std::string& printableText, std::size_t indent = 0) {
    for (const std::string& row : wrapped(printableText, m_width - std::min(m_width - 1, indent))) {
      m_rows.push_back(std::string(indent, ' ') + row);
    }
  }
  void addRow(std::string row) { m_rows.push_back(std::move(row)); }
  void addLines(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      m_rows.push_back(line);
    }
  }
  std::vector<std::string> take() { return std::move(m_rows); }

 private:
  const std::size_t m_width;
  std::vector<std::string> m_rows;
};

std::string ReviewPages::progress() const {
  const std::size_t all = m_material.pairs().size();
  return std::to_string(all - m_decisions.pairsWith(std::nullopt).size()) + " of " +
         countOf(all, "pair") + " decided";
}

void ReviewPages::addChanges(const ReviewItem& item, Rows& rows) const {
  constexpr std::size_t kMost = 10;
  const std::size_t count = item.pairs.size();
  if (item.changes.empty()) {
    rows.add((count > 1 ? countOf(count, "pair") + ", " : "") + item.headline);
    return;
  }
  const char* const words = count > 1 || item.changes.front().kind == "missing"
                                ? wordsFor(item.changes.front())
                                : "only here: ";
  for (std::size_t i = 0; i < std::min(kMost, item.changes.size()); ++i) {
    const ChangeGroup& change = item.changes[i];
    rows.add((i == 0 ? countOf(count, "pair") + ", " + words : "  and ") + textOf(change) +
             " (group " + change.id + ')');
  }
  if (item.changes.size() > kMost) {
    rows.add("  ... and " + countOf(item.changes.size() - kMost, "more change"));
  }
}

void ReviewPages::addObstacles(const ReviewItem& item, Rows& rows) const {
  std::vector<std::string> reasons;
  std::size_t count = 0;
  for (const std::size_t pair : item.pairs) {
    const auto& obstacle = m_material.pairs()[pair].obstacle;
    count += obstacle ? 1 : 0;
    if (obstacle && std::find(reasons.begin(), reasons.end(), *obstacle) == reasons.end()) {
      reasons.push_back(*obstacle);
    }
  }
  if (count > 0) {
    const std::string who = count == item.pairs.size() ? "" : std::to_string(count) + " of them ";
    rows.add(who + (who.empty() ? "Cannot" : "cannot") + " be accepted: " +
             printable(reasons.front()) + (reasons.size() > 1 ? ", or for another reason" : ""));
  }
}

void ReviewPages::addHunks(const Difference& difference, HunkView view, Rows& rows) const {
  const bool showsMasks = view != HunkView::Normalized;
  for (const std::string& note : difference.notes) {
    rows.add(printable(note));
  }
  std::ostringstream text;
  if (view == HunkView::SideBySide) {
    const SideBySide printer(rows.width(), showsMasks, m_palette);
    for (const DiffHunk& hunk : difference.hunks) {
      text << (&hunk != difference.hunks.data() ? m_palette.paint(Color::Dim, "--") + '\n' : "");
      printer.print(hunk, text);
    }
  } else {
    Difference hunks;
    hunks.hunks = difference.hunks;
    hunks.hunkCount = hunks.hunks.size();
    DifferencePrinter({0, rows.width(), showsMasks, 0}, m_palette).print(hunks, text);
  }
  rows.addLines(text.str());
  if (difference.hunkCount > difference.hunks.size()) {
    rows.add(countOf(difference.hunkCount - difference.hunks.size(), "more difference") +
             " not in the record (verify --max-diffs 0 keeps all); o opens the files");
  }
  if (difference.isCoarse) {
    rows.add("too large or too different to be compared in every detail");
  }
}

void ReviewPages::addPairs(std::size_t item, Rows& rows) const {
  constexpr std::size_t kWordColumns = 8;
  for (const std::size_t number : m_material.items()[item].pairs) {
    const ReviewPair& pair = m_material.pairs()[number];
    const auto fix = m_decisions.of(number);
    std::string word = fix ? wordFor(fix) : m_decisions.hasAccepted(number, item) ? "(seen)" : "";
    word.resize(kWordColumns, ' ');
    const std::string& note = m_decisions.noteOf(number);
    rows.addRow(m_palette.paint(colorOf(fix), word) + printable(nameOf(pair.record)) +
                (note.empty() ? "" : ": " + printable(note)));
  }
}

/// An item can be accepted before all of its pairs can.
void ReviewPages::addOtherItems(std::size_t item, Rows& rows) const {
  const auto& pairs = m_material.items()[item].pairs;
  const auto others = std::count_if(pairs.begin(), pairs.end(), [this](std::size_t pair) {
    return m_material.pairs()[pair].items.size() > 1;
  });
  if (others > 0 && pairs.size() > 1) {
    rows.add(std::to_string(others) + " of them " + (others == 1 ? "is" : "are") +
             " in other groups, too; a pair is accepted once all of its groups are");
  } else if (others > 0) {
    std::string numbers;
    for (const std::size_t other : m_material.pairs()[pairs.front()].items) {
      numbers += other == item ? "" : (numbers.empty() ? "" : ", ") + std::to_string(other + 1);
    }
    rows.add("It is in group" + std::string(numbers.find(',') != std::string::npos ? "s " : " ") +
             numbers + ", too, and accepted once all of its groups are");
  }
}

Page ReviewPages::ofItem(std::size_t item, HunkView view, std::size_t width) const {
  const ReviewItem& shown = m_material.items()[item];
  Rows rows(width);
  addChanges(shown, rows);
  addObstacles(shown, rows);
  addOtherItems(item, rows);
  PairRecord example = m_material.read(shown.example);
  rows.addRow("");
  rows.add((shown.pairs.size() > 1 ? "for example " : "") + printable(pairNameOf(example)));
  if (example.difference) {
    if (!shown.changes.empty()) {
      leaveOnly(shown, *example.difference);
    }
    if (!shown.hasPlace) {
      rows.add("The record keeps no place that shows it; o opens the files.");
    }
    addHunks(*example.difference, view, rows);
  }
  rows.addRow("");
  if (shown.pairs.size() > 1 || m_decisions.of(shown.example)) {
    addPairs(item, rows);
  }
  return {"Group " + std::to_string(item + 1) + " of " + std::to_string(m_material.items().size()),
          progress(), rows.take()};
}

Page ReviewPages::ofPair(std::size_t item, std::size_t index, HunkView view,
                         std::size_t width) const {
  const ReviewItem& shown = m_material.items()[item];
  const std::size_t number = shown.pairs[index];
  const PairRecord pair = m_material.read(number);
  Rows rows(width);
  rows.add(std::string(::wordFor(pair.verdict)) + ": " +
           printable(pair.master.empty() ? pair.report : pairNameOf(pair)));
  if (!pair.message.empty()) {
    rows.add(printable(pair.message));
  }
  if (const auto& obstacle = m_material.pairs()[number].obstacle) {
    rows.add("Cannot be accepted: " + printable(*obstacle));
  }
  if (!m_decisions.noteOf(number).empty()) {
    rows.add("note: " + printable(m_decisions.noteOf(number)));
  }
  rows.addRow("");
  if (pair.difference) {
    addHunks(*pair.difference, view, rows);
  }
  std::istringstream lines(pair.printed);
  for (std::string line; std::getline(lines, line);) {
    rows.add(printable(line));
  }
  const std::string word = wordFor(m_decisions.of(number));
  return {"Group " + std::to_string(item + 1) + ", pair " + std::to_string(index + 1) + " of " +
              std::to_string(shown.pairs.size()) + (word.empty() ? "" : ": " + word),
          progress(), rows.take()};
}

void ReviewPages::addDecided(Fix fix, const char* heading, Rows& rows) const {
  const std::vector<std::size_t> pairs = m_decisions.pairsWith(fix);
  if (pairs.empty()) {
    return;
  }
  rows.addRow("");
  rows.add(countOf(pairs.size(), heading) + ':');
  for (const std::size_t number : pairs) {
    const PairRecord& pair = m_material.pairs()[number].record;
    const std::string& note = m_decisions.noteOf(number);
    rows.add(printable(nameOf(pair)) + (note.empty() ? "" : ": " + printable(note)), 2);
  }
}

Page ReviewPages::ofSummary(const std::vector<std::size_t>& pairs, const ChangeReport& check,
                            std::size_t width) const {
  using Kind = ChangeOutcome::Kind;
  Rows rows(width);
  const std::size_t toAccept = check.count(Kind::Done);
  const std::size_t already = check.count(Kind::AlreadySo);
  const std::size_t open = m_decisions.pairsWith(std::nullopt).size();
  if (toAccept > 0 || already == 0) {
    rows.add(countOf(toAccept, "master") + " to accept");
  }
  if (already > 0) {
    rows.add(countOf(already, "master") + " accepted already");
  }
  if (open > 0) {
    rows.add(countOf(open, "pair") + " not decided");
  }
  if (toAccept + already < pairs.size()) {
    rows.addRow("");
    rows.add(countOf(pairs.size() - toAccept - already, "pair") + " that cannot be accepted now:");
    for (const ChangeOutcome& outcome : check.outcomes) {
      if (outcome.kind != Kind::Done && outcome.kind != Kind::AlreadySo) {
        rows.add(printable(outcome.master + ": " + outcome.why), 2);
      }
    }
  }
  addDecided(Fix::Fault, "fault", rows);
  addDecided(Fix::Skip, "skipped pair", rows);
  return {"Summary", progress(), rows.take()};
}

std::string ReviewPages::ofDecision(Fix fix, std::size_t item, const std::string& pair) const {
  std::size_t count = 0;
  std::size_t waiting = 0;
  for (const std::size_t number : m_material.items()[item].pairs) {
    count += m_decisions.of(number) == fix ? 1 : 0;
    waiting += !m_decisions.of(number) && m_decisions.hasAccepted(number, item) ? 1 : 0;
  }
  const std::string what = pair.empty() ? countOf(count, "pair") : pair;
  switch (fix) {
    case Fix::Accept:
      return waiting == 0 || !pair.empty()
                 ? "accepted: " + what
                 : "accepted: " + what + ", and " + std::to_string(waiting) +
                       " more once their other changes are";
    case Fix::Fault:
      return "marked as a fault: " + what;
    default:
      return "skipped: " + what;
  }
}

Page textPage(const std::string& title, const std::string& lines, std::size_t width) {
  std::istringstream text(lines);
  Page page = {title, "", {}};
  for (std::string line; std::getline(text, line);) {
    for (std::string& row : wrapped(line, width)) {
      page.rows.push_back(std::move(row));
    }
  }
  return page;
}

Page helpPage() {
  return {"Keys",
          "",
          {"a         accept: the output becomes the master, once you confirm at the end",
           "r         a real fault: the master stays; you can write a note",
           "s         skip: leave it for another day",
           "u         undo the last decision",
           "",
           "p         go through the pairs of the group one by one",
           "g, Esc    back to the group",
           "b, Left   back to the group or pair before",
           "n, Right  on to the next group or pair, or to the next one found by /",
           "/         search groups, names and changes",
           "q         to the summary, where you confirm; from there: leave",
           "",
           "d         show differences unified, side by side, or normalised",
           "e         explain what the rules mask in the two files",
           "o         open both files in $ORVDIFF_VIEWER; without it, pictures",
           "          in the system's viewer",
           "Up, Down, PgUp, PgDn, Space, Home, End, j, k: scroll",
           "",
           "Decisions are kept as you make them. Leave when you like: the next review",
           "of the same record goes on where you stopped."}};
}
