#include "cli/record/RecordReader.h"

#include <cerrno>
#include <exception>
#include <iterator>
#include <system_error>
#include <utility>

#include "cli/record/ContentHash.h"
#include "cli/record/PairJson.h"
#include "cli/record/RecordFolder.h"
#include "cli/system/CommandError.h"

namespace {

std::string readText(const std::string& path, const char* whatItMeans) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw CommandError(path + ": " + std::generic_category().message(errno) + whatItMeans);
  }
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

RunRecord readRun(const std::string& folder) {
  const std::string path = folder + '/' + kRunFile;
  const std::string text = readText(path, "; a record is a folder that verify --record wrote");
  try {
    return runFromJson(text);
  } catch (const std::exception& error) {
    throw CommandError(path + " is not the record of a run: " + error.what());
  }
}

}  // namespace

RecordReader::RecordReader(std::string folder)
    : m_folder(std::move(folder)),
      m_run(readRun(m_folder)),
      m_pairs(m_folder + '/' + kPairsFile, std::ios::binary) {
  if (!m_pairs) {
    throw CommandError(m_folder + '/' + kPairsFile + ": " + std::generic_category().message(errno));
  }
}

std::optional<PairRecord> RecordReader::next() {
  std::string line;
  std::getline(m_pairs, line);
  const bool isWhole = !m_pairs.eof();  // else the line end is missing: it was cut off, or is none
  if (!isWhole || line.empty()) {
    if (m_run.complete && m_count != m_run.pairs) {
      throw CommandError(m_folder + '/' + kPairsFile + " holds " + std::to_string(m_count) +
                         " pairs, and the record says " + std::to_string(m_run.pairs) +
                         "; it was changed or cut off");
    }
    return std::nullopt;
  }
  ++m_count;
  m_position += line.size() + 1;
  try {
    return pairFromJsonLine(line);
  } catch (const std::exception& error) {
    throw CommandError(m_folder + '/' + kPairsFile + ", line " + std::to_string(m_count) +
                       " is damaged: " + error.what());
  }
}

PairRecord RecordReader::readAt(std::uint64_t position) const {
  const std::string path = m_folder + '/' + kPairsFile;
  std::ifstream file(path, std::ios::binary);
  std::string line;
  file.seekg(static_cast<std::streamoff>(position));
  if (!std::getline(file, line)) {
    throw CommandError(path + " was changed or cut off");
  }
  try {
    return pairFromJsonLine(line);
  } catch (const std::exception& error) {
    throw CommandError(path + " was changed or is damaged: " + error.what());
  }
}

std::string RecordReader::evidence(const std::string& hash) const {
  const std::string path = m_folder + '/' + kEvidenceFolder + '/' + hash;
  std::string bytes = readText(path, "; the record is incomplete");
  if (contentHash(bytes) != hash) {
    throw CommandError(path + " is not what was recorded: its content has another hash");
  }
  return bytes;
}
