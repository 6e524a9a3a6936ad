// The least a program can do that has Xerces check documents: one DOM parser, document by document,
// with the settings of the library's XML engines.
//
// usage: orvdiff_bare_xerces FOLDER                      well-formedness of every *.xml in FOLDER
//        orvdiff_bare_xerces FOLDER NAMESPACE SCHEMA     and validity
//
// Prints how many documents were parsed; stops at the first that is at fault.

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/validators/common/Grammar.hpp>

namespace {

class ThrowingHandler : public xercesc::HandlerBase {
 public:
  void error(const xercesc::SAXParseException& problem) override {
    throw xercesc::SAXParseException(problem);
  }
};

void loadSchema(xercesc::XercesDOMParser& parser, const std::string& name, const char* schema) {
  parser.setValidationScheme(xercesc::XercesDOMParser::Val_Always);
  parser.setDoSchema(true);
  parser.setExternalSchemaLocation((name + ' ' + schema).c_str());
  const xercesc::TranscodeFromStr path(reinterpret_cast<const XMLByte*>(schema),
                                       std::strlen(schema), "UTF-8");
  const xercesc::LocalFileInputSource source(path.str());
  parser.loadGrammar(source, xercesc::Grammar::SchemaGrammarType, true);
}

int parseAll(xercesc::XercesDOMParser& parser, const char* folder) {
  int count = 0;
  for (const auto& document : std::filesystem::directory_iterator(folder)) {
    if (document.path().extension() == ".xml") {
      parser.parse(document.path().c_str());
      parser.resetDocumentPool();
      ++count;
    }
  }
  return count;
}

int run(int argc, char** argv) {
  ThrowingHandler handler;
  xercesc::SecurityManager limits;
  xercesc::XercesDOMParser parser;
  parser.cacheGrammarFromParse(true);
  parser.useCachedGrammarInParse(true);
  parser.setDoNamespaces(true);
  parser.setIncludeIgnorableWhitespace(false);
  parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
  parser.setDisableDefaultEntityResolution(true);
  parser.setSecurityManager(&limits);
  parser.setErrorHandler(&handler);
  if (argc == 4) {
    loadSchema(parser, argv[2], argv[3]);
  }
  try {
    std::printf("%d documents\n", parseAll(parser, argv[1]));
  } catch (const xercesc::SAXParseException& problem) {
    const xercesc::TranscodeToStr message(problem.getMessage(), "UTF-8");
    std::fprintf(stderr, "%s\n", reinterpret_cast<const char*>(message.str()));
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) {
    std::fputs("usage: orvdiff_bare_xerces FOLDER [NAMESPACE SCHEMA]\n", stderr);
    return 2;
  }
  xercesc::XMLPlatformUtils::Initialize();
  const int status = run(argc, argv);
  xercesc::XMLPlatformUtils::Terminate();
  return status;
}
