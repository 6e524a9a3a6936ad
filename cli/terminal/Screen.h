#pragma once

#include <array>
#include <csignal>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/terminal/Keys.h"

/// All of the terminal, for a program that is worked with key by key. The terminal shows another
/// screen while one lives, so that what was there before comes back afterwards.
///
/// The terminal is given back in its former state however the program ends, by a signal too, unless
/// that is SIGKILL. Ctrl-Z suspends the program, as anywhere.
///
/// At most one may live at a time, in a program with a single thread.
class Screen {
 public:
  struct Size {
    std::size_t rows;
    std::size_t columns;
  };

  /// Why `wait` returned.
  enum class Event {
    Key,         ///< a key was pressed
    Redraw,      ///< the size has changed, or others may have written on the screen
    Interrupt,   ///< Ctrl-C, or SIGINT
    Terminate,   ///< SIGTERM
    Disconnect,  ///< the terminal is gone: nothing can be shown or asked any more
  };

  /// Requires `canShowScreen`.
  Screen();
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  Size size() const;

  /// Shows rows of text, which may be coloured, from the top. What is wider than the screen is cut
  /// off. `cursor`: the column, from 0, of a cursor in the last of the rows; usually there is none.
  void show(const std::vector<std::string>& rows, std::optional<std::size_t> cursor = {});

  /// Waits for a key or for something to happen to program and terminal.
  Event wait(Key& key);

  /// Gives the terminal to a program that is started meanwhile, and waited for. Ctrl-C is
  /// the other program's.
  class Pause {
   public:
    explicit Pause(Screen& screen);
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

    /// The signals that the other program is to start with.
    const sigset_t& signalMask() const { return m_screen.m_formerMask; }

   private:
    Screen& m_screen;
    std::array<struct sigaction, 3> m_former = {};
  };

 private:
  static constexpr std::size_t kSignals = 12;

  void take();
  void suspend();
  std::optional<Event> takeEvent();
  bool readInput();

  std::array<struct sigaction, kSignals> m_formerActions = {};
  sigset_t m_formerMask = {};
  std::string m_input;  ///< that is no key yet
  std::vector<std::string> m_shown;
  bool m_isQuiet = false;  ///< nothing has followed `m_input` for a while
};
