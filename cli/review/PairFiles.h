#pragma once

#include <cstddef>
#include <string>

#include "cli/record/RecordReader.h"

/// The two files of a pair as they were compared, for programs that show them.
class PairFiles {
 public:
  /// `record` must outlive the object.
  explicit PairFiles(const RecordReader& record) : m_record(record) {}
  /// Removes the files that it has created.
  ~PairFiles();
  PairFiles(const PairFiles&) = delete;
  PairFiles& operator=(const PairFiles&) = delete;

  struct Paths {
    std::string master;  ///< absolute
    std::string output;
  };

  /// The files themselves if they are still what was compared; else copies of the record's
  /// evidence, under the same names. Raises `CommandError` if it holds none.
  Paths of(const PairRecord& pair);

 private:
  std::string find(const std::string& name, const std::string& path, const FileFacts& facts,
                   const char* side);

  const RecordReader& m_record;
  std::string m_folder;     ///< for copies; empty: there are none yet
  std::size_t m_pairs = 0;  ///< that were asked for
};
