#pragma once

#include <sys/stat.h>

#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "cli/baseline/JournalEntry.h"
#include "cli/baseline/JournalPlace.h"
#include "cli/baseline/MasterChange.h"

class Journal;

/// Some changes of masters on their way. Each step takes all changes that nothing has stopped so
/// far; one that a step cannot take is out, with a reason, and its master stays as it is.
class ChangeRun {
 public:
  /// All arguments must outlive the object.
  ChangeRun(const JournalPlace& place, const std::vector<MasterChange>& changes,
            const ContentSource& source);

  /// Step 1: looks at the masters, whether anything is in the way. Changes nothing.
  void inspect();

  /// Whether the new contents can be had, which `prepare` finds out anyway. Changes nothing.
  void tryContents();

  /// Step 2: hands the bytes of all masters as they are to `journal`.
  void keepFormer(Journal& journal);

  /// Whether any change is left.
  bool hasWork() const;

  /// What the journal is to say of them.
  std::vector<JournalFile> files() const;
  /// Folders that new masters need, outermost first.
  std::vector<std::string> missingFolders() const;

  /// Step 3: writes new contents beside the masters. Temporary names are told apart by `id`.
  void prepare(std::uint64_t id);

  /// Step 4: everything takes its place.
  void finish();

  const ChangeReport& report() const { return m_report; }

  /// The temporary file for change `number` of entry `id` to `path`.
  static std::string temporaryFor(const std::string& path, std::uint64_t id, std::size_t number);

 private:
  using Kind = ChangeOutcome::Kind;

  struct Target {
    std::string path;  ///< absolute, without links
    bool isThere = false;
    struct stat status = {};
    std::string temporary;
  };

  bool isOpen(std::size_t i) const { return m_report.outcomes[i].kind == Kind::Done; }
  void close(std::size_t i, Kind kind, std::string why);
  void fail(std::size_t i, const char* doing, const std::error_code& error);
  void resolve(std::size_t i);
  std::string realPath(const std::string& master, std::error_code& error);
  void closeRivals();
  void inspect(std::size_t i);
  void requireWritable(std::size_t i);
  std::string contentOf(std::size_t i);
  bool isUnchanged(const Target& target) const;
  void replace(std::size_t i);
  void flushFolders();

  const JournalPlace& m_place;
  const std::vector<MasterChange>& m_changes;
  const ContentSource& m_source;
  std::vector<Target> m_targets;
  std::map<std::string, std::string> m_realFolders;
  ChangeReport m_report;
};
