#include "cli/diff/PairDiff.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include "cli/diff/ByteDiff.h"
#include "cli/diff/JsonDiff.h"
#include "cli/diff/MissingDiff.h"
#include "cli/diff/NumbersDiff.h"
#include "cli/diff/PictureDiff.h"
#include "cli/diff/PrintedDiff.h"
#include "cli/diff/TableDiff.h"
#include "cli/diff/TextDiff.h"
#include "cli/diff/VmdDiff.h"
#include "cli/diff/XmlFaultDiff.h"
#include "cli/suite/ComparisonScript.h"
#include "cli/suite/MissingReason.h"
#include "orvdiff/formats/OrvDiffImageEngines.h"

namespace {

enum class Reads : std::uint8_t { Nothing, Output, Both };

/// One way of telling how two files differ.
struct DiffKind {
  Reads reads;
  bool (*appliesTo)(const DiffRequest& request);
  Difference (*differenceOf)(const DiffRequest& request);
  /// Taken instead when no hunk was found, as for damaged files; the notes stay. Null: none.
  Difference (*otherwise)(const DiffRequest& request);
};

bool isMissing(const DiffRequest& request) {
  return request.record.verdict == Verdict::Missing;
}

bool isXmlFault(const DiffRequest& request) {
  return request.record.verdict == Verdict::Failed && request.format.validatesXml;
}

bool isScript(const DiffRequest& request) {
  return runsScript(request.engine);
}

bool isPicture(const DiffRequest& request) {
  return request.ownRules<PictureRules>() != nullptr ||
         dynamic_cast<const OrvDiffPngFileEngine*>(&request.engine) != nullptr;
}

template <OrvOutputFormat format>
bool is(const DiffRequest& request) {
  return request.format.format == format;
}

template <typename Rules>
bool isOwn(const DiffRequest& request) {
  return request.ownRules<Rules>() != nullptr;
}

bool isAnything(const DiffRequest& /*request*/) {
  return true;
}

/// For formats whose rule is that all bytes are the same. A text ends at its first NUL.
Difference plainDifference(const DiffRequest& request) {
  const bool hasNul = request.master.find('\0') != std::string_view::npos ||
                      request.output.find('\0') != std::string_view::npos;
  return hasNul ? byteDifference(request) : textDifference(request);
}

/// The kinds; the first that applies is taken.
constexpr DiffKind kKinds[] = {
    {Reads::Nothing, isMissing, missingDifference, nullptr},
    {Reads::Output, isXmlFault, xmlFaultDifference, nullptr},
    {Reads::Nothing, isScript, printedDifference, nullptr},
    {Reads::Both, isPicture, pictureDifference, byteDifference},
    {Reads::Both, isOwn<CsvRules>, tableDifference, plainDifference},
    {Reads::Both, isOwn<JsonRules>, jsonDifference, plainDifference},
    {Reads::Both, isOwn<NumbersRules>, numbersDifference, plainDifference},
    {Reads::Both, isOwn<BytesRules>, plainDifference, nullptr},
    {Reads::Both, is<OrvOutputFormat::Csv>, tableDifference, plainDifference},
    {Reads::Both, is<OrvOutputFormat::Json>, jsonDifference, plainDifference},
    {Reads::Both, is<OrvOutputFormat::Vmd>, vmdDifference, textDifference},
    {Reads::Both, isAnything, textDifference, nullptr},
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

/// Whatever shows the bytes as they are, after what `tried` has found out without showing anything.
/// A change that `tried` could name, such as another spacing, is the group of it all.
Difference withNotesOf(Difference tried, Difference shown) {
  shown.notes.insert(shown.notes.begin(), std::make_move_iterator(tried.notes.begin()),
                     std::make_move_iterator(tried.notes.end()));
  shown.isCoarse = shown.isCoarse || tried.isCoarse;
  if (!tried.changes.empty()) {
    shown.changes = std::move(tried.changes);
    for (DiffHunk& hunk : shown.hunks) {
      hunk.groups = {shown.changes.front().group};
    }
  }
  return shown;
}

/// The difference of one kind, which finds the files' bytes in the request.
Difference differenceOfKind(const DiffKind& kind, DiffRequest request) {
  std::optional<std::string> bytes[2];
  const std::string* const paths[] = {&request.record.master, &request.record.output};
  for (int side = kind.reads == Reads::Both ? 0 : 1; side < 2 && kind.reads != Reads::Nothing;
       ++side) {
    bytes[side] = readFile(*paths[side]);
    if (!bytes[side]) {
      return onlyNote(*paths[side] + " was there when it was compared; now it " +
                      missingReason(*paths[side]));
    }
    (side == 0 ? request.master : request.output) = *bytes[side];
  }
  Difference difference = kind.differenceOf(request);
  if (difference.hunkCount == 0 && kind.otherwise != nullptr) {
    difference = withNotesOf(std::move(difference), kind.otherwise(request));
  }
  return difference;
}

Difference differenceOfRequest(const DiffRequest& request) {
  for (const DiffKind& kind : kKinds) {
    if (kind.appliesTo(request)) {
      return differenceOfKind(kind, request);
    }
  }
  return {};
}

}  // namespace

bool isAboutFiles(Verdict verdict) {
  return verdict == Verdict::Differs || verdict == Verdict::Failed || verdict == Verdict::Missing;
}

Difference onlyNote(std::string note, std::string kind) {
  Difference difference;
  difference.kind = std::move(kind);
  difference.notes.push_back(std::move(note));
  return difference;
}

std::optional<Difference> differenceOf(const OrvDiffFormat& format, const OrvDiffFileEngine& engine,
                                       const PairRecord& record, const DiffOptions& options) {
  if (!isAboutFiles(record.verdict)) {
    return std::nullopt;
  }
  Difference difference;
  try {
    difference = differenceOfRequest({format, engine, record, {}, {}, options});
  } catch (const std::exception& error) {
    difference = onlyNote(std::string("how they differ could not be found out: ") + error.what());
  }
  if (difference.notes.empty() && difference.hunks.empty()) {
    return std::nullopt;
  }
  return difference;
}
