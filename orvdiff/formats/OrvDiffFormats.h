#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvOutputFormat.h"

/// Arguments of an engine's constructor. The texts must outlive the engine.
struct OrvFormatArguments {
  const char* subFolder = nullptr;                ///< every format; null: none
  const char* outputDirectoryTypeName = nullptr;  ///< formats that need arguments
  const char* masterSubFolder = nullptr;          ///< likewise; null: none
  const char* fileNameSuffix = nullptr;           ///< chart graphics scripts; null: none
  const char* layoutNamespace = nullptr;          ///< layout data; null: the deployment's
  const char* layoutSchema = nullptr;             ///< path of its schema; null: the deployment's
};

/// A format that outputs can be verified in. Everything else about it is asked of the engine.
struct OrvDiffFormat {
  std::string_view name;        ///< as a person writes it on a command line
  OrvOutputFormat format;       ///< the value to register its engine under
  std::string_view comparison;  ///< how its outputs are compared, in a few words
  bool needsArguments;          ///< whether `outputDirectoryTypeName` is required
  /// Raises `VELAssertError` if a required argument is null.
  std::unique_ptr<OrvDiffFileEngine> (*createEngine)(const OrvFormatArguments& arguments);
  bool validatesXml = false;  ///< whether the engine needs Xerces (`OrvXerces`)

  /// The `createEngine` of a format whose engine needs no arguments but the sub-folder.
  template <typename Engine>
  static std::unique_ptr<OrvDiffFileEngine> create(const OrvFormatArguments& arguments) {
    return std::make_unique<Engine>(arguments.subFolder);
  }
};

/// The one list of all formats.
class ORVDIFF_API OrvDiffFormats {
 public:
  /// Every format once, in the order in which a run verifies them.
  static const std::vector<OrvDiffFormat>& all();

  /// The format of this name, or null.
  static const OrvDiffFormat* find(std::string_view name);
};
