#include "cli/diff/PrintedDiff.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

#include "cli/diff/DifferenceBuilder.h"

namespace {

constexpr std::size_t kMostLines = 40;
constexpr std::size_t kMostBytesOfLine = 1000;

/// `text` without a name that is another one for every pair.
void removeAll(std::string& text, const std::string& name) {
  if (name.empty()) {
    return;
  }
  for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
    text.erase(at, name.size());
  }
}

}  // namespace

Difference printedDifference(const DiffRequest& request) {
  DifferenceBuilder builder("script", request);
  const std::string& printed = request.record.printed;
  if (printed.find_first_not_of(" \t\r\n") == std::string::npos) {
    builder.note("the comparison script printed nothing");
    return builder.take();
  }
  DiffHunk hunk;
  hunk.place = "printed by the comparison script";
  std::string_view rest = printed;
  while (!rest.empty() && hunk.lines.size() < kMostLines) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    DiffLine& line = hunk.lines.emplace_back();
    line.isCutAfter = end > kMostBytesOfLine;
    line.spans = {
        {DiffSpan::Kind::Same, std::string(rest.substr(0, std::min(end, kMostBytesOfLine))), {}}};
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  if (!rest.empty()) {
    const auto ended = static_cast<std::uint64_t>(std::count(rest.begin(), rest.end(), '\n'));
    hunk.lines.back().omitted = ended + (rest.back() == '\n' ? 0 : 1);
  }
  std::string key = printed;
  for (const std::string& path : {request.record.master, request.record.output}) {
    removeAll(key, std::filesystem::absolute(path).lexically_normal().string());
    removeAll(key, path);
    removeAll(key, std::filesystem::path(path).filename().string());
  }
  builder.add(std::move(hunk), {}, key);
  return builder.take();
}
