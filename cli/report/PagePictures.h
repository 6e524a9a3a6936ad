#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/report/ReportRenderer.h"

/// The pictures of the HTML report: those of pairs that differ, and the pages of their documents.
class PagePictures {
 public:
  /// Notes a pair down, if it has pictures. Nothing is read yet.
  void add(std::size_t number, const PairRecord& pair, const FileReader& read);

  /// Reads the pictures. Returns, as JSON, for each pair that has any what the page shows:
  /// {"views": [{"label", "master", "output"}], "notes": []}, in which master and output are ids of
  /// `elements`.
  std::string load();

  /// The pictures' files as elements of the page. Call it after `load`.
  const std::string& elements() const { return m_elements; }

 private:
  struct Pair {
    std::size_t number;
    bool isDocument;  ///< PDF, whose pages are the pictures
    std::string names[2];
    FileFacts files[2];
    FileReader read;
  };

  /// What the page shows of a pair, as JSON with commas between the values.
  struct Shown {
    void note(const std::string& sentence);

    std::string views;
    std::string notes;
  };

  Shown describe(const Pair& pair);
  void addView(Shown& shown, const std::string& label, const std::string& master,
               const std::string& output);
  void addPages(Shown& shown, const std::string& master, const std::string& output);
  std::string elementOf(const std::string& file);

  std::vector<Pair> m_pairs;
  std::unordered_map<std::string, std::string> m_idOf;  ///< of files that are there, by hash
  std::size_t m_documents = 0;                          ///< whose pages were rendered
  std::string m_elements;
};
