#include "cli/suite/XmlCheck.h"

#include <iostream>
#include <memory>
#include <sstream>

#include "cli/suite/FormatSelection.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

/// Takes what engines print on `std::cout` during its lifetime.
class Printed {
 public:
  Printed() : m_console(std::cout.rdbuf(m_text.rdbuf())) {}
  ~Printed() { std::cout.rdbuf(m_console); }
  Printed(const Printed&) = delete;
  Printed& operator=(const Printed&) = delete;

  std::string text() const { return m_text.str(); }

 private:
  std::ostringstream m_text;
  std::streambuf* const m_console;
};

/// What follows `words` in a failure block, up to the end of the line.
std::string after(const std::string& words, const std::string& block) {
  const std::size_t start = block.find(words);
  if (start == std::string::npos) {
    return {};
  }
  const std::size_t value = start + words.size();
  return block.substr(value, block.find('\n', value) - value);
}

}  // namespace

std::optional<std::string> whyNotXml(const std::string& file) {
  static const auto engine = createPairEngine(formatNamed("ctx-metadata"));
  const Printed printed;
  const std::unique_ptr<const OrvDiffResult> result(engine->performDiff(file, file, nullptr));
  if (result->isPassed()) {
    return std::nullopt;
  }
  const std::string block = printed.text();
  return after(" at line ", block) + ':' + after(" column number ", block) + ": " +
         after(" message: ", block);
}
