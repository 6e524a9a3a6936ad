#include "cli/report/PagePictures.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "cli/record/ContentHash.h"
#include "cli/record/JsonText.h"
#include "cli/report/Packed.h"
#include "cli/report/PagePairs.h"
#include "cli/report/PdfPages.h"

using nlohmann::ordered_json;

namespace {

constexpr std::size_t kMostBytes = std::size_t{20} << 20;  // of all pictures in the page
constexpr std::size_t kMostDocuments = 20;  // rendering one takes a tenth of a second a page

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

void addNote(ordered_json& json, const std::string& note) {
  json["notes"].push_back(textToJson(note));
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

std::string PagePictures::load() {
  ordered_json json = ordered_json::object();
  for (const Pair& pair : m_pairs) {
    json[std::to_string(pair.number)] = describe(pair);
  }
  m_pairs.clear();
  return json.dump();
}

ordered_json PagePictures::describe(const Pair& pair) {
  ordered_json json = {{"views", ordered_json::array()}, {"notes", ordered_json::array()}};
  std::string files[2];
  for (int side = 0; side < 2; ++side) {
    try {
      files[side] = pair.read(pair.names[side], pair.files[side]);
    } catch (const std::exception& error) {
      addNote(json, std::string("The picture of the ") + (side == 0 ? "master" : "output") +
                        " is not in this report: " + error.what());
      return json;
    }
  }
  if (pair.isDocument) {
    addPages(json, files[0], files[1]);
  } else {
    addView(json, "", files[0], files[1]);
  }
  return json;
}

void PagePictures::addView(ordered_json& json, const std::string& label, const std::string& master,
                           const std::string& output) {
  if (m_elements.size() + (master.size() + output.size()) / 3 * 4 > kMostBytes) {
    addNote(json, (label.empty() ? "The pictures are" : label + " is") +
                      " not in this report, which holds " + std::to_string(kMostBytes) +
                      " bytes of pictures at most.");
    return;
  }
  json["views"].push_back(
      {{"label", label}, {"master", elementOf(master)}, {"output", elementOf(output)}});
}

void PagePictures::addPages(ordered_json& json, const std::string& master,
                            const std::string& output) {
  if (++m_documents > kMostDocuments) {
    addNote(json, "Pages are shown of the first " + std::to_string(kMostDocuments) +
                      " documents that differ.");
    return;
  }
  const PdfPages masterPages = renderPdf(master);
  const PdfPages outputPages = renderPdf(output);
  for (const PdfPages* const pages : {&masterPages, &outputPages}) {
    if (!pages->problem.empty()) {
      addNote(json, "Pages cannot be shown: " + pages->problem);
      return;
    }
  }
  const std::size_t common = std::min(masterPages.files.size(), outputPages.files.size());
  std::size_t equal = 0;
  for (std::size_t i = 0; i < common; ++i) {
    if (masterPages.files[i] == outputPages.files[i]) {
      ++equal;
    } else {
      addView(json, "Page " + std::to_string(i + 1), masterPages.files[i], outputPages.files[i]);
    }
  }
  if (equal > 0) {
    addNote(json, std::to_string(equal) + " of the pages rendered look the same.");
  }
  if (masterPages.files.size() != outputPages.files.size()) {
    addNote(json, "The master has " + std::to_string(masterPages.files.size()) +
                      " pages, the output " + std::to_string(outputPages.files.size()) + '.');
  } else if (masterPages.isCut || outputPages.isCut) {
    addNote(json, "Only the first " + std::to_string(common) + " pages were rendered.");
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
