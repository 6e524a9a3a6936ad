#pragma once

#include <optional>
#include <string>

/// A key that was pressed, as the terminal sends it.
struct Key {
  enum class Kind {
    Text,   ///< one character
    Paste,  ///< text from the clipboard: not keys that somebody pressed
    Enter,
    Escape,
    Backspace,
    Up,
    Down,
    Left,
    Right,
    PageUp,
    PageDown,
    Home,
    End,
    Other  ///< any other key
  };
  Kind kind = Kind::Other;
  std::string text;  ///< of Text and Paste
};

/// Takes the first key off `bytes`, which is what a terminal has sent. Nothing if there is none, or
/// if more bytes are needed to tell; with `isQuiet`, no more bytes have come for a while, so that a
/// lone escape character is the Escape key.
std::optional<Key> takeKey(std::string& bytes, bool isQuiet);
