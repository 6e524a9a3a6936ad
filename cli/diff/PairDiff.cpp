#include "cli/diff/PairDiff.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <optional>
#include <string>

#include "cli/diff/TextDiff.h"
#include "cli/suite/MissingReason.h"

namespace {

/// One way of telling how two files differ.
struct DiffKind {
  bool readsFiles;
  bool (*appliesTo)(const DiffRequest& request);
  Difference (*differenceOf)(const DiffRequest& request);
};

bool isAnything(const DiffRequest& /*request*/) {
  return true;
}

/// The kinds; the first that applies is taken. Those that read no files come first.
constexpr DiffKind kKinds[] = {
    {true, isAnything, textDifference},
};

std::optional<std::string> readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) {
    return std::nullopt;
  }
  const std::streamoff size = file.tellg();
  std::string bytes(static_cast<std::size_t>(std::max<std::streamoff>(size, 0)), '\0');
  file.seekg(0);
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (size < 0 || file.gcount() != size) {
    return std::nullopt;
  }
  return bytes;
}

Difference onlyNote(std::string note) {
  Difference difference;
  difference.kind = "none";
  difference.notes.push_back(std::move(note));
  return difference;
}

/// The difference of one kind, which finds the files' bytes in the request.
Difference differenceOfKind(const DiffKind& kind, DiffRequest request) {
  if (!kind.readsFiles) {
    return kind.differenceOf(request);
  }
  std::optional<std::string> bytes[2];
  const std::string* const paths[] = {&request.record.master, &request.record.output};
  for (int side = 0; side < 2; ++side) {
    bytes[side] = readFile(*paths[side]);
    if (!bytes[side]) {
      return onlyNote(*paths[side] + " was there when it was compared; now it " +
                      missingReason(*paths[side]));
    }
  }
  request.master = *bytes[0];
  request.output = *bytes[1];
  return kind.differenceOf(request);
}

}  // namespace

Difference differenceOf(const OrvDiffFormat& format, const OrvDiffFileEngine& engine,
                        const PairRecord& record, const DiffOptions& options) {
  const DiffRequest request = {format, engine, record, {}, {}, options};
  for (const DiffKind& kind : kKinds) {
    if (!kind.appliesTo(request)) {
      continue;
    }
    try {
      return differenceOfKind(kind, request);
    } catch (const std::exception& error) {
      return onlyNote(std::string("how they differ could not be found out: ") + error.what());
    }
  }
  return {};
}
