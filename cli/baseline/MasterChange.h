#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What is to become of one master. Hashes are those of `contentHash`.
struct MasterChange {
  std::string master;            ///< as the run names it, relative to the working folder
  std::string before;            ///< hash that it must have now; empty: it must not be there
  std::string after;             ///< hash of what it becomes; empty: it is removed
  std::string source;            ///< the output that it becomes, for people; empty: none
  std::optional<mode_t> mode{};  ///< of a file that is not there yet; none: that of any new file
  bool mayBeOutside = false;     ///< of the suite, such as what earlier runs left among outputs
};

/// What came of one change, or would come of it.
struct ChangeOutcome {
  enum class Kind {
    Done,       ///< carried out; or, while only checked, nothing is in its way
    AlreadySo,  ///< the master is already what it was to become
    Refused,    ///< not carried out, for a reason that a person should know
    Failed      ///< the system did not let it happen; the master is as it was, unless `why` says so
  };

  Kind kind = Kind::Done;
  std::string master;
  std::string why;  ///< not escaped; empty if done
};

/// What came of several changes, in their order.
struct ChangeReport {
  std::vector<ChangeOutcome> outcomes;
  std::uint64_t entry = 0;            ///< of the journal; 0: nothing was changed, or none is kept
  std::vector<std::string> problems;  ///< what went wrong besides, a sentence each

  std::size_t count(ChangeOutcome::Kind kind) const;

  /// Takes over what came of some of the changes: `places` says which outcomes are theirs.
  void takeOver(const std::vector<std::size_t>& places, ChangeReport part);
};

/// The bytes that a master is to become. Raises `CommandError`, saying why, if they cannot be had.
/// The receiver checks their hash.
using ContentSource = std::function<std::string(const MasterChange& change)>;
