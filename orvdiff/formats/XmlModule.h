#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "orvdiff/orvdiff_export.h"

// The XML parser as the rest of the library sees it. Everything that touches Xerces stands behind
// these declarations, and in the shared form of the library in a module of its own: loading Xerces
// and what Debian's build of it needs (libcurl, LDAP, Kerberos, TLS) takes longer than a small run.
// The module depends on nothing but Xerces, ICU and `platform`, of which it has its own copies.

namespace orvdiff::detail {

/// What the documents of an engine are.
enum class XmlDocumentKind { CtxMetadata, AuthoredDThroughTargets, LayoutData };

/// The parser of one engine, reused for every document.
class XmlParser {
 public:
  virtual ~XmlParser() = default;

  /// False when a parse was interrupted in the middle, by a failed allocation for example. All that
  /// remains is to replace the parser.
  virtual bool isUsable() const = 0;

  /// Runs `parse`, which is to call `parseText`, and answers whether it succeeded. Otherwise prints
  /// what Xerces threw, with `fileName`, on standard output. `VELOutOfMemoryError` and
  /// `VELStdExceptionError` out of `parse` are passed on; any other exception, `std::bad_alloc`
  /// included, is a failure without a word. The parser is unusable after either.
  virtual bool passes(const std::string& fileName, const std::function<void()>& parse) = 0;

  /// Parses a text, which stays the caller's. Only for use within `passes`.
  virtual void parseText(const char* bytes, std::uint32_t length) = 0;

  /// Loads the schema file at `path`, unless one is loaded, and has every document validated
  /// against it. A schema that cannot be used, or does not describe `namespaceUri` (empty: whatever
  /// it describes), is reported on standard output; without one every document is invalid. Only for
  /// use within `passes`.
  virtual void loadSchema(const std::string& path, const std::string& namespaceUri) = 0;
};

/// What the module offers.
struct XmlModule {
  /// Raises `VELAssertError` when Xerces is not initialised, and `VELOutOfMemoryError`.
  std::shared_ptr<XmlParser> (*createParser)(XmlDocumentKind kind);

  /// Initialises Xerces, once. Whatever fails ends in `onPanic`, as most failures do within Xerces
  /// itself: neither trying again nor terminating it is safe after one.
  void (*initializeXerces)(void (*onPanic)(const char* reason));
};

/// The module. In the shared form of the library, the first call loads it, for good. Raises
/// `VELStdExceptionError`, which names the file, when it cannot be loaded; the next call tries
/// again.
const XmlModule& xmlModule();

}  // namespace orvdiff::detail

using orvdiff::detail::XmlDocumentKind;
using orvdiff::detail::XmlParser;

/// The one symbol of the module.
extern "C" ORVDIFF_API const orvdiff::detail::XmlModule* OrvXmlModuleEntry();
