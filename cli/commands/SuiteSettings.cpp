#include "cli/commands/SuiteSettings.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/commands/ConfigOptions.h"
#include "cli/suite/SuiteLayout.h"
#include "cli/system/CommandError.h"
#include "cli/system/Cores.h"

namespace {

/// The options that settings go to.
struct Targets {
  FormatOptions& formats;
  std::string& workFolder;
  VerifyOptions* verify;  ///< null: only the two above
};

struct Setting {
  std::string_view key;
  std::string_view option;  ///< of the command line; empty: there is none
  bool isOfVerify;
  void (*take)(const SuiteConfig& config, const TomlValue& value, const Targets& targets);
  std::string (*show)(const VerifyOptions& options);
};

std::vector<std::string> textsOf(const TomlValue& value) {
  std::vector<std::string> texts;
  for (const TomlValue& element : value.elements) {
    texts.push_back(element.text);
  }
  return value.kind == TomlValue::Kind::Array ? texts : std::vector<std::string>{value.text};
}

std::string join(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) {
    joined += (joined.empty() ? "" : ",") + text;
  }
  return joined;
}

/// As a TOML string.
std::string quoted(const std::string& text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      result += std::string("\\u00") + kHex[static_cast<unsigned char>(c) >> 4U] +
                kHex[static_cast<unsigned char>(c) & 0xFU];
    } else {
      result += c;
    }
  }
  return result + '"';
}

std::string quoted(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) {
    list += (list.empty() ? "" : ", ") + quoted(text);
  }
  return '[' + list + ']';
}

std::string boolean(bool value) {
  return value ? "true" : "false";
}

std::string number(double value) {
  std::string text = std::to_string(value);
  text.erase(text.find_last_not_of('0') + 1);
  return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

std::uint64_t countOf(const TomlValue& value) {
  return static_cast<std::uint64_t>(value.integer);
}

/// A file stays one wherever the run is started from; a time is none.
std::string timeOrFile(const SuiteConfig& config, const std::string& text) {
  std::error_code unknown;
  const std::string file = pathFrom(config, text);
  return std::filesystem::exists(file, unknown) ? file : text;
}

constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20;

void takeWork(const SuiteConfig& config, const TomlValue& value, const Targets& targets) {
  std::error_code unknown;
  targets.workFolder = pathFrom(config, value.text);
  if (!std::filesystem::is_directory(targets.workFolder, unknown)) {
    throw CommandError(toText(value.place) + ": the working folder " + targets.workFolder +
                       " is not there");
  }
}

// Rows of the table below; their order is that of `suiteKeys`.
using C = const SuiteConfig&;
using V = const TomlValue&;
using T = const Targets&;
using O = const VerifyOptions&;

void ignore(C, V, T) {}  // `takeRules` sees to it

constexpr Setting kSettings[] = {
    {"work", "--work", false, takeWork, [](O o) { return quoted(o.workFolder); }},
    {"outputs", "", false, ignore, nullptr},
    {"masters", "", false, ignore, nullptr},
    {"formats", "--format", false, [](C, V v, T t) { t.formats.names = textsOf(v); },
     [](O o) { return quoted(o.formats.names); }},
    {"sub-folders", "--sub-folder", false, [](C, V v, T t) { t.formats.subFolders = textsOf(v); },
     [](O o) { return quoted(o.formats.subFolders); }},
    {"all-sub-folders", "--all-sub-folders", false,
     [](C, V v, T t) { t.formats.allSubFolders = v.boolean; },
     [](O o) { return boolean(o.formats.allSubFolders); }},
    {"folder-suffix", "--folder-suffix", false,
     [](C, V v, T t) { t.formats.folderSuffix = v.text; },
     [](O o) { return quoted(o.formats.folderSuffix); }},
    {"newer-than", "--newer-than", true,
     [](C c, V v, T t) { t.verify->newerThan = timeOrFile(c, v.text); },
     [](O o) { return quoted(o.newerThan); }},
    {"jobs", "--jobs", true, [](C, V v, T t) { t.verify->jobs = countOf(v); },
     [](O o) { return std::to_string(o.jobs != 0 ? o.jobs : availableCores()); }},
    {"timeout", "--timeout", true, [](C, V v, T t) { t.verify->secondsPerPair = v.number; },
     [](O o) { return number(o.secondsPerPair); }},
    {"memory", "--memory", true, [](C, V v, T t) { t.verify->memoryMegabytes = countOf(v); },
     [](O o) { return std::to_string(o.memoryMegabytes); }},
    {"strict", "--strict", true,
     [](C, V v, T t) {
       const bool isWord = v.kind != TomlValue::Kind::Boolean;
       t.verify->strict = isWord ? join(textsOf(v)) : v.boolean ? "all" : "";
     },
     [](O o) { return quoted(o.strict); }},
    {"mask-limit", "--mask-limit", true, [](C, V v, T t) { t.verify->maskLimits.match = v.number; },
     [](O o) { return number(o.maskLimits.match); }},
    {"mask-sum-limit", "--mask-sum-limit", true,
     [](C, V v, T t) { t.verify->maskLimits.sum = v.number; },
     [](O o) { return number(o.maskLimits.sum); }},
    {"evidence-file-limit", "", true,
     [](C, V v, T t) { t.verify->evidence.perFile = countOf(v) * kMegabyte; },
     [](O o) { return std::to_string(o.evidence.perFile / kMegabyte); }},
    {"evidence-limit", "", true,
     [](C, V v, T t) { t.verify->evidence.total = countOf(v) * kMegabyte; },
     [](O o) { return std::to_string(o.evidence.total / kMegabyte); }},
    {"layout-schema", "--layout-schema", false,
     [](C c, V v, T t) { t.formats.layoutData.schema = pathFrom(c, v.text); },
     [](O o) { return quoted(o.formats.layoutData.schema); }},
    {"layout-namespace", "--layout-namespace", false,
     [](C, V v, T t) { t.formats.layoutData.namespaceUri = v.text; },
     [](O o) { return quoted(o.formats.layoutData.namespaceUri); }},
};

/// The option is given. The folder of -C is one that the user wants to work in, as with --work.
bool isGiven(const Setting& setting, const CommonOptions& options) {
  return options.given.count(std::string(setting.option)) > 0 ||
         (setting.key == "work" && !options.startFolder.empty());
}

void take(const SuiteConfig& config, const CommonOptions& given, const Targets& targets) {
  for (const Setting& setting : kSettings) {
    const auto found = config.suite.find(std::string(setting.key));
    if (found != config.suite.end() && !isGiven(setting, given) &&
        (targets.verify != nullptr || !setting.isOfVerify)) {
      setting.take(config, found->second, targets);
    }
  }
}

std::string valueOf(const Setting& setting, const VerifyOptions& options) {
  if (setting.show != nullptr) {
    return setting.show(options);
  }
  const SuiteLayout& layout = suiteLayout();
  return quoted(setting.key == "outputs" ? layout.outputRoot : layout.masterFolder);
}

}  // namespace

void takeSettings(const SuiteConfig& config, VerifyOptions& options) {
  take(config, options, {options.formats, options.workFolder, &options});
}

void takeConfig(VerifyOptions& options, Verbosity verbosity) {
  if (auto config = suiteConfigFor(options.config, options.locations, verbosity)) {
    takeSettings(*config, options);
    options.suite = std::make_shared<const SuiteConfig>(std::move(*config));
  }
}

void takeSelection(const SuiteConfig& config, const CommonOptions& given, FormatOptions& formats,
                   std::string& workFolder) {
  take(config, given, {formats, workFolder, nullptr});
}

std::vector<EffectiveSetting> effectiveSettings(const SuiteConfig* config,
                                                const VerifyOptions& options) {
  std::vector<EffectiveSetting> settings;
  for (const Setting& setting : kSettings) {
    const std::string key(setting.key);
    const bool isInFile = config != nullptr && config->suite.count(key) > 0;
    settings.push_back({key, valueOf(setting, options),
                        isGiven(setting, options) ? "command line"
                        : isInFile                ? toText(config->suite.at(key).place)
                                                  : "default"});
  }
  return settings;
}
