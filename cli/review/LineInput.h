#pragma once

#include <string>

#include "cli/terminal/Keys.h"

/// A line that is being typed.
class LineInput {
 public:
  enum class State { Typing, Done, Cancelled };

  State press(const Key& key);

  /// What has been typed so far; it may hold anything that was pasted.
  const std::string& text() const { return m_text; }

 private:
  std::string m_text;
};
