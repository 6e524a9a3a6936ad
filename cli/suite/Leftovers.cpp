#include "cli/suite/Leftovers.h"

namespace {

constexpr std::string_view kSaved[] = {".normalized_master", ".normalized_actual"};
constexpr std::string_view kCleansed = ".cleansed";

bool endsWith(std::string_view name, std::string_view ending) {
  return name.size() > ending.size() && name.substr(name.size() - ending.size()) == ending;
}

}  // namespace

bool isSavedByVerify(std::string_view name) {
  return endsWith(name, kSaved[0]) || endsWith(name, kSaved[1]);
}

bool isLeftover(std::string_view name) {
  return isSavedByVerify(name) || endsWith(name, kCleansed);
}

std::string_view ownerOfLeftover(std::string_view name) {
  return name.substr(0, name.rfind('.'));
}
