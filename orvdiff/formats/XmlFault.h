#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "orvdiff/formats/XmlModule.h"

class OrvDiffResult;

/// Passes the text of a document to `parse`: `inMemoryText` or, when that is null, the whole file.
/// Returns null when `parse` succeeds, else a new result: the file as missing, or a plain failure,
/// with `fileName` for both names. `parse` is run, and its exceptions are treated, as
/// `XmlParser::passes` says, which `parser` must serve.
///
/// Creates `parser`, of the given kind, when it is null or no longer usable. Raises what
/// `xmlModule` and the functions of the module raise.
OrvDiffResult* findXmlFault(
    std::shared_ptr<XmlParser>& parser, XmlDocumentKind kind, const std::string& fileName,
    const char* inMemoryText,
    const std::function<void(const char* bytes, std::uint64_t length)>& parse);
