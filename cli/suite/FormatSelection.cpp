#include "cli/suite/FormatSelection.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string_view>
#include <utility>

#include "cli/suite/ComparisonScript.h"
#include "cli/suite/MissingReason.h"
#include "cli/suite/OwnPatterns.h"
#include "cli/suite/SuiteLayout.h"
#include "cli/system/CommandError.h"
#include "cli/system/XercesStart.h"
#include "cli/terminal/EditDistance.h"

namespace {

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

/// Format names that the user may have meant, best match first, separated by commas.
std::string similarNames(const std::string& name) {
  constexpr std::size_t kMost = 4;
  const std::string wanted = lowerCase(name);
  std::vector<std::pair<std::size_t, std::string_view>> candidates;
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    const std::size_t distance = editDistance(wanted, format.name);
    const bool contained = wanted.size() > 1 && format.name.find(wanted) != std::string_view::npos;
    if (distance <= wanted.size() / 3 + 1 || contained) {
      candidates.emplace_back(contained ? 1 : distance, format.name);
    }
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  candidates.resize(std::min(candidates.size(), kMost));
  std::string text;
  for (const auto& [distance, candidate] : candidates) {
    text += (text.empty() ? "" : ", ") + std::string(candidate);
  }
  return text;
}

const char* nullIfEmpty(const std::string& text) {
  return text.empty() ? nullptr : text.c_str();
}

/// Raises `CommandError` if the schema cannot be read.
void setLayoutData(OrvFormatArguments& arguments, const LayoutDataOptions& layoutData) {
  if (!layoutData.schema.empty() && access(layoutData.schema.c_str(), R_OK) != 0) {
    throw CommandError("the layout-data schema " + layoutData.schema + ' ' +
                       missingReason(layoutData.schema));
  }
  arguments.layoutSchema = nullIfEmpty(layoutData.schema);
  arguments.layoutNamespace = nullIfEmpty(layoutData.namespaceUri);
}

std::shared_ptr<OrvDiffFileEngine> createLastingEngine(const OrvDiffFormat& format,
                                                       const OrvFormatArguments& arguments,
                                                       const std::vector<OwnPattern>& patterns) {
  if (format.validatesXml) {
    startXercesOnDemand();
  }
  static auto& engines = *new std::vector<std::shared_ptr<OrvDiffFileEngine>>;  // never destroyed
  const auto& engine = engines.emplace_back(format.createEngine(arguments));
  engine->setFolders(suiteLayout().masterFolder, suiteLayout().outputRoot);
  addOwnPatterns(patterns, format.name, *engine);
  return engine;
}

SelectedFormat select(const OrvDiffFormat& format, const FormatOptions& options,
                      const std::string& subFolder) {
  OrvFormatArguments arguments;
  arguments.subFolder = nullIfEmpty(subFolder);
  setLayoutData(arguments, options.layoutData);
  const auto places = options.places.find(std::string(format.name));
  if (places != options.places.end()) {
    arguments.outputDirectoryTypeName = places->second.outputDirectory.c_str();
    arguments.masterSubFolder = nullIfEmpty(places->second.masterSubFolder);
    arguments.fileNameSuffix = nullIfEmpty(places->second.fileNameSuffix);
  } else if (format.needsArguments) {
    const std::string name(format.name);
    throw CommandError("format " + name + " needs --" + name + "-output-dir");
  }
  SelectedFormat selected = {
      &format, createLastingEngine(format, arguments, options.patterns), false, subFolder, {}, {}};
  selected.runsScript = runsScript(*selected.engine);
  selected.engine->setMasterAndOutputFoldersSuffix(options.folderSuffix);
  selected.outputRoot = suiteLayout().outputRoot + '/' +
                        selected.engine->getOutputDirectoryTypeName() + options.folderSuffix;
  selected.outputFolder = selected.outputRoot + (subFolder.empty() ? "" : '/' + subFolder);
  return selected;
}

}  // namespace

const OrvDiffFormat& formatNamed(const std::string& name) {
  const OrvDiffFormat* const format = OrvDiffFormats::find(name);
  if (format == nullptr) {
    const std::string similar = similarNames(name);
    throw CommandError("unknown format \"" + name + "\"; " +
                       (similar.empty() ? "" : "did you mean " + similar + "? ") +
                       "\"orvdiff formats\" lists them all");
  }
  return *format;
}

std::shared_ptr<OrvDiffFileEngine> createPairEngine(const OrvDiffFormat& format,
                                                    const LayoutDataOptions& layoutData,
                                                    const std::vector<OwnPattern>& patterns) {
  OrvFormatArguments arguments;
  setLayoutData(arguments, layoutData);
  arguments.outputDirectoryTypeName = "";
  return createLastingEngine(format, arguments, patterns);
}

std::vector<SelectedFormat> selectFormats(const FormatOptions& options) {
  std::set<std::string_view> wanted;
  for (const std::string& name : options.names) {
    wanted.insert(formatNamed(name).name);
  }
  std::vector<SelectedFormat> selected;
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    const bool byName = options.names.empty() ? !format.needsArguments : wanted.count(format.name);
    if (byName || options.places.count(std::string(format.name)) > 0) {
      for (const std::string& subFolder : options.subFolders) {
        selected.push_back(select(format, options, subFolder));
      }
    }
  }
  return selected;
}
