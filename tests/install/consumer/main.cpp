#include <orvdiff/orvdiff.h>

int main() {
  OrvDiffHtmlFileEngine engine(nullptr);
  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(OrvOutputFormat::Html, &engine);
  registry.verifyOutput(OrvOutputFormat::Html, "no-such-report.xml", nullptr);
  try {
    OrvDiffLib::strdupnew(nullptr);
  } catch (const VELAssertError&) {
    return 0;
  }
  return 1;
}
