#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What is to become of a file of a suite: a line of a decisions file. `audit --fix-list`, the HTML
/// report and `review` write such files; `accept --list` and `remove --list` carry them out.
///
/// Paths are bytes as the file system knows them, relative to the run's working folder. Hashes are
/// those of the record that the decision was made on.
struct Decision {
  enum class Fix {
    Accept,  ///< the output becomes the master
    Remove,  ///< the file belongs to nothing
    Fault,   ///< the output is wrong: the master stays, and the difference is known
    Skip     ///< looked at, and left undecided
  };

  Fix fix = Fix::Skip;
  std::string kind;    ///< of an audit's finding, such as "outputs"; empty: about a pair
  std::string report;  ///< empty if it is not about a pair
  std::string format;
  std::string path;    ///< the master; of `kind` "outputs", the output that has none
  std::string output;  ///< of the pair
  std::string masterHash;
  std::string outputHash;
  std::string group;  ///< that the decision was made for as a whole; may be empty
  std::string note;   ///< of a person
  /// Groups of the pair that were accepted; others are still undecided, so the fix is `Skip`.
  std::vector<std::string> accepted;
};

/// As one line of JSON, without a line end. Leaves out what is empty.
std::string toJsonLine(const Decision& decision);

/// The decision of a line. Raises `std::runtime_error`, saying what is wrong; members that it does
/// not know are passed over.
Decision decisionFromJsonLine(std::string_view line);

/// All decisions of a file. Of several about one file the last counts, and is the only one here.
/// Passes over empty lines. Raises `CommandError`, naming file and line, for what cannot be read.
std::vector<Decision> readDecisions(const std::string& path);
