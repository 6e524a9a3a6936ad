#include "cli/custom/OwnEngines.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/content/FileText.h"
#include "cli/custom/CsvComparison.h"
#include "cli/custom/JsonSettlement.h"
#include "cli/custom/NumbersComparison.h"
#include "cli/custom/PictureComparison.h"
#include "cli/custom/ScriptRun.h"
#include "cli/system/CommandError.h"
#include "orvdiff/compare/OrvComparisonObserver.h"
#include "orvdiff/formats/OrvDiffLayoutDataXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffWellFormedXmlFileEngine.h"
#include "orvdiff/formats/XmlModule.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

/// Adds to `Engine` where the files of an own format are.
template <typename Engine>
class InOwnFolders : public Engine {
 public:
  std::string getOutputDirectoryTypeName() const override { return m_format.outputFolder; }

  std::string getMasterFileGlobExpression(const std::string& location) const override {
    const std::string folder = m_format.masterFolder.empty() ? "" : m_format.masterFolder + '/';
    return this->getMasterFileDirectory(location) + '/' + folder + this->getReportName(location) +
           m_format.masterTail;
  }

 protected:
  template <typename... Arguments>
  InOwnFolders(const OwnFormat& format, const char* subFolder, Arguments&&... arguments)
      : Engine(subFolder, std::forward<Arguments>(arguments)...), m_format(format) {}

  const OwnFormat& format() const { return m_format; }

 private:
  const OwnFormat& m_format;
};

class BytesEngine : public InOwnFolders<OrvDiffFileEngine> {
 public:
  BytesEngine(const OwnFormat& format, const BytesRules& /*rules*/, const char* subFolder)
      : InOwnFolders(format, subFolder) {}

  OrvDiffResult* performDiff(const std::string& master, const std::string& output,
                             std::strstream* inMemoryOutput) override {
    return areFilesIdentical(master, output, inMemoryOutput);
  }
};

/// The catalogue's pattern of this name, or null.
const OrvDiffNormalizationPattern* patternNamed(const std::string& name) {
  constexpr int kPatterns = OrvDiffNormalizationPatterns::eReportSpecNamespaceVersion + 1;
  for (int id = 0; id < kPatterns; ++id) {
    const auto* const pattern = OrvDiffNormalizationPatterns::getPattern(
        static_cast<OrvDiffNormalizationPatterns::OrvNormalizationPatternsEnum>(id));
    if (name == OrvDiffNormalizationPatterns::getName(*pattern)) {
      return pattern;
    }
  }
  return nullptr;
}

OrvSharedPatternList patternsOf(const std::vector<OwnRule>& rules) {
  OrvSharedPatternList patterns;
  for (const OwnRule& rule : rules) {
    const auto* const pattern = rule.own != nullptr ? rule.own.get() : patternNamed(rule.name);
    if (pattern == nullptr) {
      throw CommandError("there is no pattern \"" + rule.name + '"');
    }
    patterns.add(pattern);
  }
  return patterns;
}

class TextEngine : public InOwnFolders<OrvDiffTextFileTypeEngine> {
 public:
  TextEngine(const OwnFormat& format, const TextRules& rules, const char* subFolder)
      : InOwnFolders(format, subFolder) {
    const OrvSharedPatternList patterns = patternsOf(rules.patterns);
    for (const auto* const pattern : patterns.list()) {
      addCleansingPattern(pattern);
    }
  }
};

class WellFormedXmlEngine : public InOwnFolders<OrvDiffWellFormedXmlFileEngine> {
 public:
  WellFormedXmlEngine(const OwnFormat& format, const XmlRules& rules, const char* subFolder)
      : InOwnFolders(format, subFolder, OrvFormatLayout{}, "OwnFormat",
                     XmlDocumentKind::CtxMetadata) {
    const OrvSharedPatternList patterns = patternsOf(rules.patterns);
    for (const auto* const pattern : patterns.list()) {
      addCleansingPattern(pattern);
    }
  }
};

/// Validates as layout data is validated.
class ValidXmlEngine : public InOwnFolders<OrvDiffLayoutDataXmlFileEngine> {
 public:
  ValidXmlEngine(const OwnFormat& format, const XmlRules& rules, const char* subFolder)
      : InOwnFolders(
            format, subFolder, rules.namespaceUri.c_str(), rules.schema.c_str(),
            std::initializer_list<OrvDiffNormalizationPatterns::OrvNormalizationPatternsEnum>()),
        m_schema(rules.schema) {
    const OrvSharedPatternList patterns = patternsOf(rules.patterns);
    for (const auto* const pattern : patterns.list()) {
      addCleansingPattern(pattern);
    }
  }

  const std::string& schema() const { return m_schema; }

 private:
  const std::string& m_schema;
};

OrvDiffResult* createResult(const ContentOutcome& outcome, const std::string& master,
                            const std::string& output) {
  switch (outcome.verdict) {
    case ContentOutcome::Verdict::Equal:
      return new OrvDiffResultPass(master, output);
    case ContentOutcome::Verdict::Differs:
      return new OrvDiffResultFailDiff(master, output);
    case ContentOutcome::Verdict::BadOutput:
      return new OrvDiffResultFail(master, output);
    case ContentOutcome::Verdict::BadMaster:
      break;
  }
  throw CommandError("the master " + master + ' ' + outcome.problem);
}

/// The engine of a comparison that reads both files whole.
template <typename Rules>
class ContentEngine : public InOwnFolders<OrvDiffFileEngine> {
 public:
  using Compare = ContentOutcome (*)(std::string_view master, std::string_view output,
                                     const Rules& rules);

  ContentEngine(const OwnFormat& format, const Rules& rules, const char* subFolder, Compare compare)
      : InOwnFolders(format, subFolder), m_rules(rules), m_compare(compare) {}

  OrvDiffResult* performDiff(const std::string& master, const std::string& output,
                             std::strstream* /*inMemoryOutput*/) override {
    std::string masterBytes;
    std::string outputBytes;
    if (!readFile(master, masterBytes)) {
      return new OrvDiffResultFailFileMissing(master, output, master);
    }
    if (!readFile(output, outputBytes)) {
      return new OrvDiffResultFailFileMissing(master, output, output);
    }
    OrvComparisonObserver* const observer = OrvComparisonObserver::current();
    if (observer != nullptr) {
      observer->sawFiles(masterBytes, outputBytes);
    }
    const ContentOutcome outcome = m_compare(masterBytes, outputBytes, m_rules);
    for (const std::string& rule : outcome.rules) {
      if (observer != nullptr) {
        observer->sawHelpOf(rule);
      }
    }
    return createResult(outcome, master, output);
  }

 private:
  const Rules& m_rules;
  const Compare m_compare;
};

class ScriptEngine : public InOwnFolders<OrvDiffFileEngine> {
 public:
  ScriptEngine(const OwnFormat& format, const ScriptRules& rules, const char* subFolder)
      : InOwnFolders(format, subFolder), m_rules(rules) {}

  const ScriptRules& rules() const { return m_rules; }

  OrvDiffResult* performDiff(const std::string& master, const std::string& output,
                             std::strstream* /*inMemoryOutput*/) override {
    for (const std::string& path : {master, output}) {
      if (!doesFileExist(path)) {
        return new OrvDiffResultFailFileMissing(master, output, path);
      }
    }
    if (runScript(m_rules, master, output)) {
      return new OrvDiffResultPass(master, output);
    }
    return new OrvDiffResultFailDiff(master, output);
  }

 private:
  const ScriptRules& m_rules;
};

using Engine = std::unique_ptr<OrvDiffFileEngine>;

ContentOutcome compareNumbersOf(std::string_view master, std::string_view output,
                                const NumbersRules& rules) {
  return compareNumbers(master, output, rules.tolerance);
}

/// Creates the engine for each kind of rules.
struct EngineFactory {
  const OwnFormat& format;
  const char* subFolder;

  Engine operator()(const BytesRules& rules) const { return create<BytesEngine>(rules); }
  Engine operator()(const TextRules& rules) const { return create<TextEngine>(rules); }
  Engine operator()(const NumbersRules& rules) const {
    return createForContent(rules, compareNumbersOf);
  }
  Engine operator()(const CsvRules& rules) const { return createForContent(rules, compareCsv); }
  Engine operator()(const JsonRules& rules) const { return createForContent(rules, compareJson); }
  Engine operator()(const PictureRules& rules) const {
    return createForContent(rules, comparePictures);
  }
  Engine operator()(const ScriptRules& rules) const { return create<ScriptEngine>(rules); }

  Engine operator()(const XmlRules& rules) const {
    if (rules.schema.empty()) {
      return create<WellFormedXmlEngine>(rules);
    }
    return create<ValidXmlEngine>(rules);
  }

  template <typename Type, typename Rules>
  Engine create(const Rules& rules) const {
    return std::make_unique<Type>(format, rules, subFolder);
  }
  template <typename Rules>
  Engine createForContent(const Rules& rules,
                          typename ContentEngine<Rules>::Compare compare) const {
    return std::make_unique<ContentEngine<Rules>>(format, rules, subFolder, compare);
  }
};

}  // namespace

std::unique_ptr<OrvDiffFileEngine> createOwnEngine(const OwnFormat& format, const char* subFolder) {
  return std::visit(EngineFactory{format, subFolder}, format.comparison);
}

std::string obstacleOf(const OrvDiffFileEngine& engine) {
  if (const ScriptRules* const rules = scriptRulesOf(engine)) {
    return programProblem(*rules);
  }
  const auto* const xml = dynamic_cast<const ValidXmlEngine*>(&engine);
  return xml != nullptr && access(xml->schema().c_str(), R_OK) != 0
             ? "the schema " + xml->schema() +
                   " cannot be read: " + std::generic_category().message(errno)
             : std::string();
}

const ScriptRules* scriptRulesOf(const OrvDiffFileEngine& engine) {
  const auto* const script = dynamic_cast<const ScriptEngine*>(&engine);
  return script != nullptr ? &script->rules() : nullptr;
}
