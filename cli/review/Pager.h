#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cli/review/ReviewPages.h"
#include "cli/terminal/Screen.h"
#include "cli/terminal/Terminal.h"

/// Lays pages out on the screen:
///
///     Group 3 of 14                      11 of 300 pairs decided
///     ----------------------------------------------------------
///     rows of the page, as many as there is room for
///     lines 1-18 of 40, unified, or what the last key has led to
///     a:accept r:fault s:skip ...
class Pager {
 public:
  /// Both must outlive the pager.
  Pager(Screen& screen, const Palette& palette) : m_screen(screen), m_palette(palette) {}

  /// Columns that a page has.
  std::size_t width() const { return m_screen.size().columns; }

  /// What stands below the page.
  struct Footer {
    std::string status;  ///< printable
    std::string view;    ///< how the page is shown; may be empty
    std::string keys;
  };
  void show(const Page& page, const Footer& footer);

  /// Shows a page with a question below, and what has been typed so far.
  void ask(const Page& page, const std::string& question, std::string_view typed);

  /// Scrolls the page that was shown last, if the key is one for that.
  bool scroll(const Key& key);
  void scrollToTop() { m_top = 0; }

 private:
  std::vector<std::string> layOut(const Page& page);
  std::string position() const;

  Screen& m_screen;
  const Palette& m_palette;
  std::size_t m_top = 0;   ///< the first row that is shown
  std::size_t m_rows = 0;  ///< of the page
  std::size_t m_room = 1;  ///< for rows of a page
};
