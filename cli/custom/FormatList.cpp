#include "cli/custom/FormatList.h"

#include <algorithm>
#include <deque>
#include <utility>

#include "cli/custom/OwnEngines.h"
#include "cli/system/CommandError.h"

namespace {

/// Values of own formats; hosts' own are below.
constexpr std::int32_t kFirstOwnFormat = 1'000'000;

struct Formats {
  std::deque<std::vector<OrvDiffFormat>> rows = {OrvDiffFormats::all()};  ///< the last ones count
  std::deque<OwnFormat> own;  ///< all that were ever set; engines and rows borrow them
  std::vector<const OwnFormat*> current;
};

Formats& formats() {
  static Formats& all = *new Formats;  // never destroyed, like the engines
  return all;
}

std::string placeOf(const OwnFormat& format) {
  const FilePlace& place = format.definedAt;
  return place.file.empty() ? "" : place.file + ':' + std::to_string(place.line) + ": ";
}

OrvDiffFormat rowOf(const OwnFormat& format, std::size_t number) {
  OrvDiffFormat row = {};
  row.name = format.name;
  row.format = static_cast<OrvOutputFormat>(kFirstOwnFormat + static_cast<std::int32_t>(number));
  row.comparison = comparisonOf(format);
  row.validatesXml = std::holds_alternative<XmlRules>(format.comparison);
  return row;
}

}  // namespace

const std::vector<OrvDiffFormat>& FormatList::all() {
  return formats().rows.back();
}

const OrvDiffFormat* FormatList::find(std::string_view name) {
  const auto found = std::find_if(all().begin(), all().end(), [name](const OrvDiffFormat& format) {
    return format.name == name;
  });
  return found != all().end() ? &*found : nullptr;
}

const OwnFormat* FormatList::ownOf(const OrvDiffFormat& format) {
  for (const OwnFormat* const own : formats().current) {
    if (own->name == format.name) {
      return own;
    }
  }
  return nullptr;
}

std::unique_ptr<OrvDiffFileEngine> FormatList::createEngine(const OrvDiffFormat& format,
                                                            const OrvFormatArguments& arguments) {
  const OwnFormat* const own = ownOf(format);
  return own != nullptr ? createOwnEngine(*own, arguments.subFolder)
                        : format.createEngine(arguments);
}

void FormatList::setOwn(std::vector<OwnFormat> own) {
  std::vector<OrvDiffFormat> rows = OrvDiffFormats::all();
  std::vector<const OwnFormat*> current;
  for (OwnFormat& format : own) {
    std::string problem = problemOf(format);
    if (OrvDiffFormats::find(format.name) != nullptr) {
      problem = "is the name of a documented format, whose rules cannot be replaced";
    } else if (std::any_of(current.begin(), current.end(),
                           [&](const OwnFormat* other) { return other->name == format.name; })) {
      problem = "is defined twice";
    }
    if (!problem.empty()) {
      throw CommandError(placeOf(format) + "format \"" + format.name + "\" " + problem);
    }
    current.push_back(&formats().own.emplace_back(std::move(format)));
    rows.push_back(rowOf(*current.back(), current.size()));
  }
  formats().rows.push_back(std::move(rows));
  formats().current = std::move(current);
}
