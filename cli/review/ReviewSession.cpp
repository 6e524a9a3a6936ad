#include "cli/review/ReviewSession.h"

#include <algorithm>
#include <utility>

#include "cli/review/Viewer.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/Printable.h"

namespace {

using Fix = Decision::Fix;
using Kind = ChangeOutcome::Kind;

constexpr const char* kItemKeys =
    "a:accept r:fault s:skip p:pairs u:undo d:view e:masks o:open q:end ?:help";
constexpr const char* kPairKeys =
    "a:accept r:fault s:skip g:group u:undo d:view e:masks o:open q:end ?:help";

}  // namespace

struct ReviewSession::Command {
  const char* key;
  Key::Kind kind;  ///< another key for it; `Other`: there is none
  void (ReviewSession::*run)();
};

const ReviewSession::Command ReviewSession::kCommands[] = {
    {"a", Key::Kind::Other, &ReviewSession::accept},
    {"r", Key::Kind::Other, &ReviewSession::askForFault},
    {"s", Key::Kind::Other, &ReviewSession::skip},
    {"u", Key::Kind::Other, &ReviewSession::undo},
    {"p", Key::Kind::Other, &ReviewSession::enterPairs},
    {"g", Key::Kind::Escape, &ReviewSession::leavePairs},
    {"b", Key::Kind::Left, &ReviewSession::goBack},
    {"n", Key::Kind::Right, &ReviewSession::goOn},
    {"q", Key::Kind::Other, &ReviewSession::toSummary},
    {"d", Key::Kind::Other, &ReviewSession::cycleView},
    {"e", Key::Kind::Other, &ReviewSession::explain},
    {"o", Key::Kind::Other, &ReviewSession::openFiles},
    {"/", Key::Kind::Other, &ReviewSession::askForText},
    {"?", Key::Kind::Other, &ReviewSession::help},
};

ReviewSession::ReviewSession(const ReviewMaterial& material, ReviewDecisions& decisions,
                             ReviewMasters& masters, const Palette& palette, Explainer explain,
                             bool isEager)
    : m_material(material),
      m_decisions(decisions),
      m_masters(masters),
      m_explain(std::move(explain)),
      m_isEager(isEager),
      m_pages(material, decisions, palette),
      m_files(material.source()),
      m_pager(m_screen, palette),
      m_walk(material, decisions) {}

ReviewSession::End ReviewSession::run() {
  if (!m_walk.goToOpen()) {
    toSummary();
  }
  while (!m_end) {
    draw();
    Key key;
    switch (m_screen.wait(key)) {
      case Screen::Event::Key:
        press(key);
        break;
      case Screen::Event::Redraw:
        break;
      case Screen::Event::Interrupt:
        m_end = End::Interrupted;
        break;
      case Screen::Event::Terminate:
        m_end = End::Terminated;
        break;
      case Screen::Event::Disconnect:
        m_end = End::Disconnected;
        break;
    }
  }
  return *m_end;
}

Page ReviewSession::page() const {
  const std::size_t width = m_pager.width();
  if (m_overlay) {
    return *m_overlay;
  }
  if (m_summary) {
    return m_pages.ofSummary(m_decisions.pairsWith(Fix::Accept), *m_summary, width);
  }
  const auto& [item, index] = m_walk.place();
  return index ? m_pages.ofPair(item, *index, m_view, width) : m_pages.ofItem(item, m_view, width);
}

Pager::Footer ReviewSession::footer() const {
  if (m_overlay) {
    return {m_status, "", "any other key: back"};
  }
  if (m_summary) {
    const std::size_t count = m_summary->count(Kind::Done);
    return {m_status, "",
            (count > 0 ? "y:accept " + countOf(count, "master") + "  " : "") +
                "b:back  u:undo  q:quit, decisions are kept"};
  }
  return {m_status, std::string(wordFor(m_view)), m_walk.isAtPair() ? kPairKeys : kItemKeys};
}

void ReviewSession::draw() {
  if (m_question) {
    m_pager.ask(page(), m_question->text, m_question->input.text());
  } else {
    m_pager.show(page(), footer());
  }
}

void ReviewSession::press(const Key& key) {
  if (m_question) {
    type(key);
    return;
  }
  m_status.clear();
  if (m_pager.scroll(key)) {
    return;
  }
  if (key.kind == Key::Kind::Paste) {
    m_status = "pasted text is not taken for keys";
    return;
  }
  if (m_overlay) {
    m_overlay.reset();
    m_pager.scrollToTop();
    return;
  }
  std::string name = key.text;
  for (const Command& command : kCommands) {
    if (command.kind != Key::Kind::Other && command.kind == key.kind) {
      name = command.key;
    }
  }
  m_summary ? pressInSummary(name) : runCommand(name);
}

void ReviewSession::runCommand(const std::string& key) {
  const auto* const command =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&key](const Command& known) { return key == known.key; });
  if (command != std::end(kCommands)) {
    (this->*command->run)();
  }
}

void ReviewSession::pressInSummary(const std::string& key) {
  if (key == "y" && m_summary->count(Kind::Done) > 0) {
    m_end = End::Confirmed;
  } else if (key == "q") {
    m_end = End::Left;
  } else if (key == "b" || key == "g") {
    m_summary.reset();
    m_pager.scrollToTop();
  } else if (key == "u" || key == "?") {
    runCommand(key);
  }
}

void ReviewSession::type(const Key& key) {
  const LineInput::State state = m_question->input.press(key);
  if (state != LineInput::State::Typing) {
    const Question question = *m_question;
    m_question.reset();
    if (state == LineInput::State::Done) {
      (this->*question.answer)(question.input.text());
    }
  }
}

/// Whether the person can have seen what is to be decided. Pairs show what the record keeps of
/// them.
bool ReviewSession::isSeen() const {
  const auto& pairs = m_walk.item().pairs;
  return m_walk.isAtPair() || m_walk.item().hasPlace ||
         std::any_of(pairs.begin(), pairs.end(),
                     [this](std::size_t pair) { return m_opened.count(pair) > 0; });
}

void ReviewSession::accept() {
  const auto obstacleOf = [this](std::size_t pair) { return m_material.pairs()[pair].obstacle; };
  const auto& pairs = m_walk.item().pairs;
  const bool isStopped = m_walk.isAtPair() ? obstacleOf(m_walk.pair()).has_value()
                                           : std::all_of(pairs.begin(), pairs.end(), obstacleOf);
  if (isStopped) {
    m_status = "Cannot be accepted: " + printable(*obstacleOf(m_walk.pair()));
  } else if (!isSeen()) {
    m_status = "Not seen yet: open the files (o), or decide on the pairs one by one (p)";
  } else {
    decide(Fix::Accept);
  }
}

void ReviewSession::skip() {
  decide(Fix::Skip);
}

void ReviewSession::askForFault() {
  m_question = Question{"Note (Enter: none, Esc: no fault): ", {}, &ReviewSession::markAsFault};
}

void ReviewSession::markAsFault(const std::string& note) {
  decide(Fix::Fault, note);
}

void ReviewSession::decide(Fix fix, const std::string& note) {
  const std::size_t item = m_walk.place().item;
  std::string what;
  if (m_walk.isAtPair()) {
    what = printable(m_material.pairs()[m_walk.pair()].record.master);
    m_decisions.decidePair(m_walk.pair(), item, fix, note);
  } else {
    m_decisions.decideItem(item, fix, note);
  }
  m_written.push_back({});
  m_status = m_pages.ofDecision(fix, item, what) + " (u takes it back)";
  const bool isDone = fix != Fix::Accept || !m_isEager || writeMasters();
  m_pager.scrollToTop();
  if (isDone && !m_walk.advance()) {
    toSummary();
  }
}

/// Writes at once what the last decision accepts. Returns false if not all of it could be.
bool ReviewSession::writeMasters() {
  std::vector<std::size_t> pairs = m_walk.item().pairs;
  if (m_walk.isAtPair()) {
    pairs = {m_walk.pair()};
  }
  const auto isOther = [this](std::size_t pair) { return m_decisions.of(pair) != Fix::Accept; };
  pairs.erase(std::remove_if(pairs.begin(), pairs.end(), isOther), pairs.end());
  try {
    m_written.back() = m_masters.accept(pairs);
  } catch (const CommandError& error) {
    m_status = "not written: " + printable(error.what());
    return false;
  }
  const ChangeReport& done = m_written.back();
  const std::string problem = problemOf(done);
  m_status = countOf(done.count(Kind::Done), "master") + " written (u: undo)";
  if (!problem.empty()) {
    m_status = "not written: " + printable(problem);
  }
  return problem.empty();
}

/// Takes back what `writeMasters` did. Returns false, and says why, if that cannot be.
bool ReviewSession::unwriteMasters(const ChangeReport& written) {
  std::string problem;
  if (written.entry != 0) {
    problem = m_masters.undo(written.entry);
  } else if (written.count(Kind::Done) > 0) {
    problem = "masters were written, and no journal is kept";
  }
  m_status = "not undone: " + printable(problem);
  return problem.empty();
}

void ReviewSession::undo() {
  if (m_written.empty()) {
    m_status = "nothing was decided since this review began";
  } else if (unwriteMasters(m_written.back())) {
    m_written.pop_back();
    m_summary.reset();
    m_walk.goTo(*m_decisions.undo());
    m_pager.scrollToTop();
    m_status = "the last decision is taken back";
  }
}

void ReviewSession::enterPairs() {
  m_walk.enterPairs();
  m_pager.scrollToTop();
}

void ReviewSession::leavePairs() {
  m_walk.leavePairs();
  m_pager.scrollToTop();
}

void ReviewSession::goBack() {
  m_walk.goBack();
  m_pager.scrollToTop();
}

void ReviewSession::goOn() {
  if (!m_wanted.empty()) {
    search(m_wanted);
  } else if (!m_walk.goOn()) {
    toSummary();
  }
  m_pager.scrollToTop();
}

void ReviewSession::toSummary() {
  m_summary = m_masters.check(m_decisions.pairsWith(Fix::Accept));
  m_pager.scrollToTop();
}

void ReviewSession::cycleView() {
  m_view = m_view == HunkView::Unified      ? HunkView::SideBySide
           : m_view == HunkView::SideBySide ? HunkView::Normalized
                                            : HunkView::Unified;
}

void ReviewSession::explain() {
  const PairRecord& pair = m_material.pairs()[m_walk.pair()].record;
  try {
    m_overlay = textPage("What the rules of " + printable(pair.format) + " mask",
                         m_explain(pair, m_files.of(pair)), m_pager.width());
    m_pager.scrollToTop();
  } catch (const CommandError& error) {
    m_status = printable(error.what());
  }
}

void ReviewSession::openFiles() {
  const PairRecord pair = m_material.read(m_walk.pair());
  const std::string kind = pair.difference ? pair.difference->kind : "";
  const bool isText = kind != "picture" && kind != "script" && kind != "bytes";
  try {
    m_status = showInViewer(m_screen, m_files.of(pair), isText);
    if (m_status.empty()) {
      m_opened.insert(m_walk.pair());
    }
  } catch (const CommandError& error) {
    m_status = printable(error.what());
  }
}

void ReviewSession::askForText() {
  m_question = Question{"/", {}, &ReviewSession::search};
}

void ReviewSession::search(const std::string& text) {
  m_wanted = text;
  if (text.empty()) {
    return;
  }
  if (m_walk.find(text)) {
    m_pager.scrollToTop();
    m_status = "n: the next with \"" + printable(text) + '"';
  } else {
    m_status = "no group, name or change with \"" + printable(text) + '"';
  }
}

void ReviewSession::help() {
  m_overlay = helpPage();
  m_pager.scrollToTop();
}
