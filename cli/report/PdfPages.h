#pragma once

#include <string>
#include <vector>

/// The pages of a PDF document as pictures.
struct PdfPages {
  std::vector<std::string> files;  ///< PNG
  bool isCut = false;              ///< the document may have more pages
  std::string problem;             ///< why there are none; empty if there are
};

/// Renders the first pages of a document with poppler's `pdftoppm`, in a process of its own that
/// has some seconds for it. A document that cannot be rendered is a problem, not an error.
PdfPages renderPdf(const std::string& document);
