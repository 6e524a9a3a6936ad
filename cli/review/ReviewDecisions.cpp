#include "cli/review/ReviewDecisions.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <map>
#include <system_error>
#include <utility>

#include "cli/record/RecordFolder.h"
#include "cli/system/CommandError.h"
#include "orvdiff/platform/OrvWholeFile.h"

namespace {

using Fix = Decision::Fix;

/// Keeps a second review out of the record, unless its file system has no locks.
int lockFolder(const std::string& folder) {
  if (access(folder.c_str(), W_OK) != 0) {
    throw CommandError(folder +
                       " cannot keep decisions: " + std::generic_category().message(errno));
  }
  const int lock = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    close(lock);
    throw CommandError("someone else is reviewing " + folder + " right now");
  }
  return lock;
}

bool contains(const std::vector<std::string>& items, const std::string& item) {
  return std::find(items.begin(), items.end(), item) != items.end();
}

/// A decision on other contents says nothing about these.
bool isAbout(const Decision& decision, const PairRecord& pair) {
  const auto agrees = [](const std::string& given, const std::string& hash) {
    return given.empty() || given == hash;
  };
  return agrees(decision.masterHash, pair.masterFile.hash) &&
         agrees(decision.outputHash, pair.outputFile.hash);
}

}  // namespace

ReviewDecisions::ReviewDecisions(const ReviewMaterial& material)
    : m_material(material),
      m_path(material.source().folder() + '/' + kDecisionsFile),
      m_lock(lockFolder(material.source().folder())),
      m_pairs(material.pairs().size()),
      m_lines(material.pairs().size()) {
  try {
    load();
  } catch (...) {
    close(m_lock);
    throw;
  }
}

ReviewDecisions::~ReviewDecisions() {
  close(m_lock);
}

void ReviewDecisions::load() {
  if (access(m_path.c_str(), F_OK) != 0 && errno == ENOENT) {
    return;
  }
  std::map<std::pair<std::string, std::string>, std::vector<std::size_t>> numbers;
  for (std::size_t i = 0; i < m_pairs.size(); ++i) {
    const PairRecord& pair = m_material.pairs()[i].record;
    numbers[{pair.format, pair.master}].push_back(i);
  }
  for (const Decision& decision : readDecisions(m_path)) {
    const auto found = numbers.find({decision.format, decision.path});
    if (found == numbers.end()) {
      m_others.push_back(toJsonLine(decision) + '\n');
      continue;
    }
    for (const std::size_t number : found->second) {  // several reports may claim one master
      resume(number, decision);
    }
  }
}

void ReviewDecisions::resume(std::size_t number, const Decision& decision) {
  const ReviewPair& pair = m_material.pairs()[number];
  const bool canBe = decision.fix != Fix::Remove && !(decision.fix == Fix::Accept && pair.obstacle);
  if (!canBe || !isAbout(decision, pair.record)) {
    return;
  }
  State& state = m_pairs[number];
  state = {decision.fix, decision.group, decision.note, decision.accepted};
  if (state.fix == Fix::Skip && state.item.empty() && !state.accepted.empty()) {
    state.fix.reset();  // only some of its items were decided
  }
  if (state.fix == Fix::Accept && !state.item.empty()) {
    for (const std::size_t item : pair.items) {
      state.accepted.push_back(m_material.items()[item].id);
    }
  }
  m_lines[number] = lineOf(number);
}

std::optional<Fix> ReviewDecisions::of(std::size_t pair) const {
  return m_pairs[pair].fix;
}

bool ReviewDecisions::hasAccepted(std::size_t pair, std::size_t item) const {
  return contains(m_pairs[pair].accepted, m_material.items()[item].id);
}

bool ReviewDecisions::isOpen(std::size_t item) const {
  const auto& pairs = m_material.items()[item].pairs;
  return std::any_of(pairs.begin(), pairs.end(),
                     [&](std::size_t pair) { return !of(pair) && !hasAccepted(pair, item); });
}

std::vector<std::size_t> ReviewDecisions::pairsWith(std::optional<Fix> fix) const {
  std::vector<std::size_t> pairs;
  for (std::size_t i = 0; i < m_pairs.size(); ++i) {
    if (m_pairs[i].fix == fix) {
      pairs.push_back(i);
    }
  }
  return pairs;
}

bool ReviewDecisions::acceptsAll(const State& state, std::size_t pair) const {
  const auto& items = m_material.pairs()[pair].items;
  return std::all_of(items.begin(), items.end(), [&](std::size_t item) {
    return contains(state.accepted, m_material.items()[item].id);
  });
}

/// What becomes of a pair that was not decided by itself when one of its items is decided.
ReviewDecisions::State ReviewDecisions::decided(State state, std::size_t pair,
                                                const std::string& item, Fix fix,
                                                const std::string& note) const {
  auto& accepted = state.accepted;
  accepted.erase(std::remove(accepted.begin(), accepted.end(), item), accepted.end());
  const bool isOthers = state.fix && state.item != item;
  const bool isFault = state.fix == Fix::Fault && isOthers;
  if (fix == Fix::Accept) {
    accepted.push_back(item);
    if (!isOthers) {
      const bool isWhole = acceptsAll(state, pair);
      state.fix = isWhole ? std::optional(fix) : std::nullopt;
      state.item = isWhole ? item : "";
      state.note.clear();
    }
  } else if (!isFault && (fix == Fix::Fault || !isOthers || state.fix == Fix::Accept)) {
    state.fix = fix;
    state.item = item;
    state.note = note;
  }
  return state;
}

void ReviewDecisions::decideItem(std::size_t item, Fix fix, const std::string& note) {
  const ReviewItem& decidedItem = m_material.items()[item];
  std::vector<std::pair<std::size_t, State>> changes;
  for (const std::size_t pair : decidedItem.pairs) {
    const bool isByItself = m_pairs[pair].fix && m_pairs[pair].item.empty();
    if (!isByItself && !(fix == Fix::Accept && m_material.pairs()[pair].obstacle)) {
      changes.emplace_back(pair, decided(m_pairs[pair], pair, decidedItem.id, fix, note));
    }
  }
  change({item, std::nullopt}, changes);
}

void ReviewDecisions::decidePair(std::size_t pair, std::size_t item, Fix fix,
                                 const std::string& note) {
  change({item, pair}, {{pair, {fix, {}, note, {}}}});
}

void ReviewDecisions::change(Place place,
                             const std::vector<std::pair<std::size_t, State>>& changes) {
  Step step = {place, {}};
  for (const auto& [pair, state] : changes) {
    step.former.emplace_back(pair, m_pairs[pair]);
    m_pairs[pair] = state;
    m_lines[pair] = lineOf(pair);
  }
  m_steps.push_back(std::move(step));
  save();
}

std::optional<ReviewDecisions::Place> ReviewDecisions::undo() {
  if (m_steps.empty()) {
    return std::nullopt;
  }
  const Step step = std::move(m_steps.back());
  m_steps.pop_back();
  for (const auto& [pair, state] : step.former) {
    m_pairs[pair] = state;
    m_lines[pair] = lineOf(pair);
  }
  save();
  return step.place;
}

std::string ReviewDecisions::lineOf(std::size_t pair) const {
  const State& state = m_pairs[pair];
  if (!state.fix && state.accepted.empty()) {
    return {};
  }
  const PairRecord& record = m_material.pairs()[pair].record;
  Decision decision;
  decision.fix = state.fix.value_or(Fix::Skip);
  decision.report = record.report;
  decision.format = record.format;
  decision.path = record.master;
  decision.output = record.output;
  decision.masterHash = record.masterFile.hash;
  decision.outputHash = record.outputFile.hash;
  decision.group = state.item;
  decision.note = state.note;
  decision.accepted = state.fix == Fix::Accept ? std::vector<std::string>() : state.accepted;
  return toJsonLine(decision) + '\n';
}

void ReviewDecisions::save() const {
  std::string text;
  for (const auto& lines : {std::cref(m_others), std::cref(m_lines)}) {
    for (const std::string& line : lines.get()) {
      text += line;
    }
  }
  if (const std::error_code error = OrvWholeFile::replace(m_path, text)) {
    throw CommandError(m_path + " cannot be written: " + error.message());
  }
}
