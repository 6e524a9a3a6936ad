#include "cli/report/PagePictures.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "cli/record/ContentHash.h"
#include "cli/record/JsonText.h"
#include "cli/report/Packed.h"
#include "cli/report/PagePairs.h"
#include "cli/report/PdfPages.h"

namespace {

constexpr std::size_t kMostBytes = std::size_t{20} << 20;  // of all pictures in the page
constexpr std::size_t kMostDocuments = 20;  // rendering one takes a tenth of a second a page

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

void PagePictures::add(std::size_t number, const PairRecord& pair, const FileReader& read) {
  const bool isDocument = pair.format == "pdf";
  const bool isPicture = endsWith(pair.format, "-png");
  if (pair.verdict == Verdict::Differs && (isDocument || isPicture)) {
    m_pairs.push_back(
        {number, isDocument, {pair.master, pair.output}, {pair.masterFile, pair.outputFile}, read});
  }
}

void PagePictures::Shown::note(const std::string& sentence) {
  notes += (notes.empty() ? "" : ",") + textToJson(sentence).dump();
}

std::string PagePictures::load() {
  std::string json;
  for (const Pair& pair : m_pairs) {
    const Shown shown = describe(pair);
    json += std::string(json.empty() ? "" : ",") + '"' + std::to_string(pair.number) +
            "\":{\"views\":[" + shown.views + "],\"notes\":[" + shown.notes + "]}";
  }
  m_pairs.clear();
  return '{' + json + '}';
}

PagePictures::Shown PagePictures::describe(const Pair& pair) {
  Shown shown;
  std::string files[2];
  for (int side = 0; side < 2; ++side) {
    try {
      files[side] = pair.read(pair.names[side], pair.files[side]);
    } catch (const std::exception& error) {
      shown.note(std::string("The picture of the ") + (side == 0 ? "master" : "output") +
                 " is not in this report: " + error.what());
      return shown;
    }
  }
  if (pair.isDocument) {
    addPages(shown, files[0], files[1]);
  } else {
    addView(shown, "", files[0], files[1]);
  }
  return shown;
}

void PagePictures::addView(Shown& shown, const std::string& label, const std::string& master,
                           const std::string& output) {
  if (m_elements.size() + (master.size() + output.size()) / 3 * 4 > kMostBytes) {
    shown.note((label.empty() ? "The pictures are" : label + " is") +
               " not in this report, which holds " + std::to_string(kMostBytes) +
               " bytes of pictures at most.");
    return;
  }
  shown.views += (shown.views.empty() ? "" : ",");
  shown.views += "{\"label\":\"" + label + "\",\"master\":\"" + elementOf(master) +
                 "\",\"output\":\"" + elementOf(output) + "\"}";
}

void PagePictures::addPages(Shown& shown, const std::string& master, const std::string& output) {
  if (++m_documents > kMostDocuments) {
    shown.note("Pages are shown of the first " + std::to_string(kMostDocuments) +
               " documents that differ.");
    return;
  }
  const PdfPages masterPages = renderPdf(master);
  const PdfPages outputPages = renderPdf(output);
  for (const PdfPages* const pages : {&masterPages, &outputPages}) {
    if (!pages->problem.empty()) {
      shown.note("Pages cannot be shown: " + pages->problem);
      return;
    }
  }
  const std::size_t common = std::min(masterPages.files.size(), outputPages.files.size());
  std::size_t equal = 0;
  for (std::size_t i = 0; i < common; ++i) {
    if (masterPages.files[i] == outputPages.files[i]) {
      ++equal;
    } else {
      addView(shown, "Page " + std::to_string(i + 1), masterPages.files[i], outputPages.files[i]);
    }
  }
  if (equal > 0) {
    shown.note(std::to_string(equal) + " of the pages rendered look the same.");
  }
  if (masterPages.files.size() != outputPages.files.size()) {
    shown.note("The master has " + std::to_string(masterPages.files.size()) +
               " pages, the output " + std::to_string(outputPages.files.size()) + '.');
  } else if (masterPages.isCut || outputPages.isCut) {
    shown.note("Only the first " + std::to_string(common) + " pages were rendered.");
  }
}

/// The id of the element with this file, which is made if it is not there yet.
std::string PagePictures::elementOf(const std::string& file) {
  const auto [found, isNew] =
      m_idOf.try_emplace(contentHash(file), "picture" + std::to_string(m_idOf.size()));
  if (isNew) {
    m_elements += dataElement(found->second, base64(file));
  }
  return found->second;
}
