#include "cli/report/Topics.h"

#include <algorithm>

#include "cli/report/PlainText.h"

namespace {

constexpr std::size_t kMostOfHunk = 1500;  // bytes
constexpr std::size_t kMostTopics = 4000;  // kept with their hunks: a few megabytes

Topic topicOf(const PairRecord& pair) {
  Topic topic;
  topic.headline = headline(pair);
  topic.pairs = 1;
  topic.name = nameOf(pair);
  topic.path = pair.masterPath;
  return topic;
}

/// The line of the master at which a hunk changes something, or the last one before that.
std::uint64_t lineOf(const DiffHunk& hunk) {
  std::uint64_t last = 0;
  for (const DiffLine& line : hunk.lines) {
    last = line.masterLine != 0 ? line.masterLine : last;
    if (line.kind != DiffLine::Kind::Context && last != 0) {
      break;
    }
  }
  return last;
}

}  // namespace

void Topics::addChanges(const PairRecord& pair) {
  for (const DiffHunk& hunk : pair.difference->hunks) {
    for (const std::string& group : hunk.groups) {
      if (m_ofGroups.size() >= kMostTopics) {
        return;
      }
      const auto [found, isNew] = m_ofGroups.try_emplace(group);
      if (isNew) {
        LimitedText lines(kMostOfHunk);
        addHunk(hunk, true, lines);
        found->second = topicOf(pair);
        found->second.line = lineOf(hunk);
        found->second.hunk = lines.text();
      }
    }
  }
}

void Topics::add(const PairRecord& pair) {
  if (!isFailure(pair.verdict)) {
    return;
  }
  if (pair.difference && !pair.difference->changes.empty()) {
    addChanges(pair);
    return;
  }
  const std::string key =
      m_others.size() < kMostTopics ? headline(pair) : "others that did not pass";
  const auto [found, isNew] = m_indexOf.try_emplace(key, m_others.size());
  if (!isNew) {
    ++m_others[found->second].pairs;
    return;
  }
  Topic topic = topicOf(pair);
  LimitedText lines(kMostOfHunk);
  std::unordered_set<std::string> shown;
  addDifference(pair, shown, lines);
  addLines(pair.printed, lines);
  topic.headline = key;
  topic.hunk = lines.text();
  m_others.push_back(std::move(topic));
}

std::vector<Topic> Topics::mostTelling(const std::vector<ChangeGroup>& groups,
                                       std::size_t most) const {
  std::vector<Topic> topics = m_others;
  for (const ChangeGroup& group : groups) {
    const auto found = m_ofGroups.find(group.id);
    Topic topic = found != m_ofGroups.end() ? found->second : Topic();
    topic.headline = changeWords(group.removed, group.added);
    topic.pairs = group.pairs.size();
    topics.push_back(std::move(topic));
  }
  std::stable_sort(topics.begin(), topics.end(),
                   [](const Topic& a, const Topic& b) { return a.pairs < b.pairs; });
  if (topics.size() > most) {
    topics.erase(topics.begin() + static_cast<std::ptrdiff_t>(most) - 1, topics.end() - 1);
  }
  return topics;
}

std::size_t Topics::count(const std::vector<ChangeGroup>& groups) const {
  return m_others.size() + groups.size();
}
