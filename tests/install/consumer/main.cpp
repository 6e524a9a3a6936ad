#include <orvdiff/orvdiff.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

// It does not link Xerces; the library finds it, whatever the working folder is by then.
bool passesXml() {
  std::filesystem::create_directory("elsewhere");
  std::filesystem::current_path("elsewhere");
  std::ofstream("consumed.xml") << "<a/>";
  OrvXerces::initializeOnDemand([](const char*) { std::abort(); });
  OrvDiffCtxMetadataXmlFileEngine engine(nullptr);
  const std::unique_ptr<OrvDiffResult> result(
      engine.performDiff("consumed.xml", "consumed.xml", nullptr));
  return result->isPassed();
}

int main() {
  OrvDiffHtmlFileEngine engine(nullptr);
  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(OrvOutputFormat::Html, &engine);
  registry.verifyOutput(OrvOutputFormat::Html, "no-such-report.xml", nullptr);
  try {
    OrvDiffLib::strdupnew(nullptr);
  } catch (const VELAssertError&) {
    return passesXml() ? 0 : 2;
  }
  return 1;
}
