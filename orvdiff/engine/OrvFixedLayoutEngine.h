#pragma once

#include <string>

/// Where a format's files lie.
struct OrvFormatLayout {
  const char* outputDirectoryTypeName;  ///< folder below "../webcontent/bi/"
  const char* masterInfix;              ///< between the master folder and the report name
  const char* masterTail;               ///< after the report name; "*" is any run of characters
};

/// A file engine whose places are fixed by a layout. Adds the two answers that depend on nothing
/// else to `Engine`, a class derived from `OrvDiffFileEngine`.
template <typename Engine>
class OrvFixedLayoutEngine : public Engine {
 public:
  std::string getOutputDirectoryTypeName() const override {
    return m_layout.outputDirectoryTypeName;
  }

  std::string getMasterFileGlobExpression(const std::string& location) const override {
    return this->getMasterFileDirectory(location) + m_layout.masterInfix +
           this->getReportName(location) + m_layout.masterTail;
  }

 protected:
  OrvFixedLayoutEngine(const char* subFolder, const OrvFormatLayout& layout)
      : Engine(subFolder), m_layout(layout) {}

 private:
  const OrvFormatLayout m_layout;
};
