#pragma once

#include <string>
#include <utility>

/// Where a format's files are.
struct OrvFormatLayout {
  const char* outputDirectoryTypeName;  ///< folder below "../webcontent/bi/"
  const char* masterInfix;              ///< between the master folder and the report name
  const char* masterTail;               ///< after the report name; "*" is any run of characters
};

/// Adds to `Engine`, a class derived from `OrvDiffFileEngine`, the two operations that a fixed
/// layout answers.
template <typename Engine>
class OrvFixedLayoutEngine : public Engine {
 public:
  /// That of the layout.
  std::string getOutputDirectoryTypeName() const override {
    return m_layout.outputDirectoryTypeName;
  }

  /// The master folder, the layout's infix, the report name and the layout's tail.
  std::string getMasterFileGlobExpression(const std::string& location) const override {
    return this->getMasterFileDirectory(location) + m_layout.masterInfix +
           this->getReportName(location) + m_layout.masterTail;
  }

 protected:
  /// `engineArguments` are what the constructor of `Engine` takes after `subFolder`.
  template <typename... Arguments>
  OrvFixedLayoutEngine(const char* subFolder, const OrvFormatLayout& layout,
                       Arguments&&... engineArguments)
      : Engine(subFolder, std::forward<Arguments>(engineArguments)...), m_layout(layout) {}

 private:
  const OrvFormatLayout m_layout;
};
