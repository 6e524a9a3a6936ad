#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "cli/custom/OwnFormat.h"
#include "orvdiff/formats/OrvDiffFormats.h"

/// All formats that this process knows: the documented ones, then those of the suite's own file,
/// which are rows of the same kind. Create engines here: the rows of own formats have no
/// `createEngine`.
///
/// For the one thread that verifies. Rows are never freed, so references to them stay good.
class FormatList {
 public:
  static const std::vector<OrvDiffFormat>& all();

  /// The format of this name, or null.
  static const OrvDiffFormat* find(std::string_view name);

  /// What the suite's file says of a format; null: it is a documented one.
  static const OwnFormat* ownOf(const OrvDiffFormat& format);

  /// The rules of an own format if it is compared in this way, else null.
  template <typename Rules>
  static const Rules* rulesOf(const OrvDiffFormat& format) {
    const OwnFormat* const own = ownOf(format);
    return own != nullptr ? std::get_if<Rules>(&own->comparison) : nullptr;
  }

  /// The engine of a format, for which `arguments` are as for `OrvDiffFormat::createEngine`. Raises
  /// what `createOwnEngine` raises.
  static std::unique_ptr<OrvDiffFileEngine> createEngine(const OrvDiffFormat& format,
                                                         const OrvFormatArguments& arguments);

  /// Sets the formats of the suite's file, in place of those set before. Raises `CommandError`,
  /// which says where, for one that `problemOf` objects to or whose name another format has.
  static void setOwn(std::vector<OwnFormat> formats);
};

/// Why a format cannot be used as it is described, to be printed after its name or place; empty: it
/// can. Looks at nothing but the description.
std::string problemOf(const OwnFormat& format);

/// How its outputs are compared, in a few words.
std::string_view comparisonOf(const OwnFormat& format);
