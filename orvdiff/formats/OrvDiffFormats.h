#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvOutputFormat.h"

/// What an engine may be told at construction. The texts must outlive the engine.
struct OrvFormatArguments {
  const char* subFolder = nullptr;                ///< every format; null: none
  const char* outputDirectoryTypeName = nullptr;  ///< formats that need arguments
  const char* masterSubFolder = nullptr;          ///< likewise; null: none
  const char* fileNameSuffix = nullptr;           ///< chart graphics scripts; null: none
  const char* layoutNamespace = nullptr;          ///< layout data; null: the deployment's
  const char* layoutSchema = nullptr;             ///< path of its schema; null: the deployment's
};

/// One verifiable format.
struct OrvDiffFormat {
  std::string_view name;  ///< as a person writes it on a command line
  OrvOutputFormat format;
  std::string_view comparison;  ///< how its outputs are compared, in a few words
  bool needsArguments;          ///< whether `outputDirectoryTypeName` must be given
  /// Raises `VELAssertError` when an argument that is needed is null, and, for the formats that are
  /// validated as XML, when the host has not initialised Xerces.
  std::unique_ptr<OrvDiffFileEngine> (*createEngine)(const OrvFormatArguments& arguments);
};

/// The one list of all formats.
class ORVDIFF_API OrvDiffFormats {
 public:
  /// Every format once, in the order in which a run verifies them.
  static const std::vector<OrvDiffFormat>& all();

  /// The format of this name, or null.
  static const OrvDiffFormat* find(std::string_view name);

  /// The patterns that `engine` applies to both texts before it compares them: empty when only
  /// carriage returns go, null when it compares something else than normalised texts. They belong
  /// to the engine.
  static const OrvPatternList* getCleansingPatterns(const OrvDiffFileEngine& engine);
};
