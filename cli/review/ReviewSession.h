#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cli/review/LineInput.h"
#include "cli/review/Pager.h"
#include "cli/review/PairFiles.h"
#include "cli/review/ReviewDecisions.h"
#include "cli/review/ReviewMasters.h"
#include "cli/review/ReviewMaterial.h"
#include "cli/review/ReviewPages.h"
#include "cli/review/ReviewWalk.h"
#include "cli/terminal/Screen.h"

/// The walk of a person through what did not pass, on the screen. Every decision is kept at once.
class ReviewSession {
 public:
  /// What the rules mask in a pair's files, as lines that are safe to print.
  using Explainer = std::function<std::string(const PairRecord&, const PairFiles::Paths&)>;

  /// With `isEager`, masters are written with each decision. All others must outlive the session.
  ReviewSession(const ReviewMaterial& material, ReviewDecisions& decisions, ReviewMasters& masters,
                const Palette& palette, Explainer explain, bool isEager);

  enum class End { Left, Confirmed, Interrupted, Terminated, Disconnected };

  /// Takes the terminal until the person is done. Raises `CommandError` if decisions cannot be
  /// kept; the terminal has been given back then.
  End run();

 private:
  struct Command;
  struct Question {
    std::string text;
    LineInput input;
    void (ReviewSession::*answer)(const std::string& typed);
  };
  static const Command kCommands[];

  void draw();
  Page page() const;
  Pager::Footer footer() const;
  void press(const Key& key);
  void type(const Key& key);
  void pressInSummary(const std::string& key);
  void runCommand(const std::string& key);

  bool isSeen() const;
  void accept();
  void askForFault();
  void markAsFault(const std::string& note);
  void skip();
  void undo();
  void decide(Decision::Fix fix, const std::string& note = {});
  bool writeMasters();
  bool unwriteMasters(const ChangeReport& written);
  void enterPairs();
  void leavePairs();
  void goBack();
  void goOn();
  void toSummary();
  void cycleView();
  void explain();
  void openFiles();
  void askForText();
  void search(const std::string& text);
  void help();

  const ReviewMaterial& m_material;
  ReviewDecisions& m_decisions;
  ReviewMasters& m_masters;
  const Explainer m_explain;
  const bool m_isEager;
  const ReviewPages m_pages;
  PairFiles m_files;
  Screen m_screen;
  Pager m_pager;
  ReviewWalk m_walk;
  HunkView m_view = HunkView::Unified;
  std::optional<Page> m_overlay;          ///< help or an explanation, shown until the next key
  std::optional<ChangeReport> m_summary;  ///< what accepting would do; set while that is shown
  std::optional<Question> m_question;
  std::string m_status;                 ///< what the last key has led to, printable
  std::string m_wanted;                 ///< was searched last
  std::vector<ChangeReport> m_written;  ///< of masters at once, by each decision
  std::set<std::size_t> m_opened;       ///< pairs whose files were shown
  std::optional<End> m_end;
};
