#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "cli/report/PageContext.h"
#include "cli/report/ReportRenderer.h"

/// The pairs of the HTML report: an index with a row for each, which the page reads first, and
/// everything that is known of each in compressed blocks, which it unpacks when a pair is opened.
class PagePairs {
 public:
  void add(const PairRecord& pair, const FileReader& read);

  std::size_t count() const { return m_count; }

  /// The index as JSON. Call it after the last pair.
  std::string index();

  /// The blocks as elements of the page. Call it after `index`.
  std::string blocks() const { return m_blocks + m_context.elements(); }

 private:
  /// The values of a column, as JSON with commas between them.
  struct Column {
    void add(const std::string& json) { values += (values.empty() ? "" : ",") + json; }

    std::string values;
  };

  /// A column of few different texts, as numbers into a list of them.
  struct NamedColumn {
    void add(const std::string& name);

    Column names;
    Column numbers;
    std::unordered_map<std::string, std::size_t> numberOf;
  };

  void flush();

  std::size_t m_count = 0;
  NamedColumn m_verdicts, m_formats, m_folders;
  Column m_ids, m_names, m_microseconds, m_places, m_firstOfBlocks;
  std::string m_block;  ///< that is being filled
  std::size_t m_firstOfBlock = 0;
  std::size_t m_blockCount = 0;
  std::string m_blocks;
  PageContext m_context;
};

/// An element that holds data of the page under an id.
std::string dataElement(const std::string& id, const std::string& base64);
