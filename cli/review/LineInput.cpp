#include "cli/review/LineInput.h"

namespace {

void eraseLastCharacter(std::string& text) {
  const auto isInCharacter = [&text] {
    return !text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0U) == 0x80U;
  };
  while (isInCharacter()) {
    text.pop_back();
  }
  if (!text.empty()) {
    text.pop_back();
  }
}

}  // namespace

LineInput::State LineInput::press(const Key& key) {
  switch (key.kind) {
    case Key::Kind::Enter:
      return State::Done;
    case Key::Kind::Escape:
      return State::Cancelled;
    case Key::Kind::Backspace:
      eraseLastCharacter(m_text);
      break;
    default:
      m_text += key.text;  // empty but for texts
  }
  return State::Typing;
}
