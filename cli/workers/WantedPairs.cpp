#include "cli/workers/WantedPairs.h"

std::vector<OrvFilePair> findPairs(const std::string& report, const SelectedFormat& format,
                                   const WantedPairs* wanted) {
  if (wanted != nullptr && wanted->count({report, {}, {}}) == 0) {
    const auto found = wanted->find({report, std::string(format.format->name), format.subFolder});
    if (found == wanted->end()) {
      return {};
    }
    if (!found->second.front().master.empty()) {
      return found->second;
    }
  }
  return format.engine->findPairs(report);
}
