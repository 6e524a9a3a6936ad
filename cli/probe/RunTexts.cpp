#include "cli/probe/RunTexts.h"

#include <algorithm>
#include <cstdio>

#include "cli/suite/MissingReason.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/ErrorCause.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/OrvFileHandle.h"
#include "orvdiff/platform/VELErrors.h"

namespace {

constexpr std::size_t kMostKeptBytes = std::size_t{1} << 30;

}  // namespace

std::string normalized(const std::string& text, const OrvPatternList& patterns) {
  OrvTextBuffer buffer = OrvDiffLib::strdupnew(text.c_str());
  OrvTextBuffer unused = OrvDiffLib::strdupnew("");  // cleanse works on pairs
  OrvDiffLib::cleanse(buffer, unused, patterns);
  return buffer.get();
}

std::vector<RunTexts::Text> RunTexts::of(std::size_t file) {
  if (!m_kept[file].empty()) {
    return m_kept[file];
  }
  std::vector<Text> texts = read(file);
  std::size_t bytes = 0;
  for (std::size_t run = 0; run < texts.size(); ++run) {
    bytes += run == 0 || texts[run] != texts.front() ? texts[run]->size() : 0;
  }
  if (m_keptBytes + bytes <= kMostKeptBytes) {
    m_keptBytes += bytes;
    m_kept[file] = texts;
  }
  return texts;
}

/// Most pages of most runs are equal, or become so: they are kept once.
std::vector<RunTexts::Text> RunTexts::read(std::size_t file) {
  std::vector<std::string> originals;
  std::vector<Text> texts;
  for (std::size_t run = 0; run < m_folders.folders.size(); ++run) {
    originals.push_back(original(run, file));
    Text text;
    for (std::size_t other = 0; other < run && text == nullptr; ++other) {
      text = originals[other] == originals[run] ? texts[other] : nullptr;
    }
    if (text == nullptr) {
      try {
        text = std::make_shared<const std::string>(normalized(originals[run], m_patterns));
      } catch (const VELThrowable& error) {
        throw CommandError(m_folders.pathOf(run, file) + ": " + causeOf(error, Verbosity::Normal));
      }
    }
    const auto same = std::find_if(texts.begin(), texts.end(),
                                   [&](const Text& other) { return *other == *text; });
    texts.push_back(same != texts.end() ? *same : text);
  }
  return texts;
}

std::string RunTexts::original(std::size_t run, std::size_t file) {
  const std::string path = m_folders.pathOf(run, file);
  try {
    OrvFileHandle handle(path.c_str(), "r");
    if (handle == nullptr) {
      throw CommandError(path + " " + missingReason(path));
    }
    std::string text = OrvDiffLib::slurpFile(handle).get();
    const bool isCut = text.size() < static_cast<std::size_t>(std::ftell(handle));
    if (isCut && std::find(m_cutFiles.begin(), m_cutFiles.end(), path) == m_cutFiles.end()) {
      m_cutFiles.push_back(path);
    }
    return text;
  } catch (const VELThrowable& error) {
    throw CommandError(path + ": " + causeOf(error, Verbosity::Normal));
  }
}
