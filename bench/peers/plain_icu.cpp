// What a programmer would write with ICU: every substitution on its own, with its conversions.
//
// usage: orvdiff_plain_icu MASTER-FOLDER OUTPUT-FOLDER   prints the names of the pages that differ

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Patterns = std::vector<std::unique_ptr<icu::RegexPattern>>;

constexpr const char* kExpressions[] = {
    "\r",
    "((\n)|(\r\n))",
    "(?s)<script.*?</script>",
    R"~(\bname="chart.*?")~",
    R"~(\bname="next.*?"\sid="next.*?")~",
    R"~(<meta name="Copyright".*?>[\r\n]*)~",
    R"~(<meta name="GeneratorID".*?>[\r\n]*)~",
    R"~(<meta name="Trademark".*?>)~",
    R"~(<meta http\-equiv="X\-UA\-Compatible".*?>[\r\n]*)~",
    R"~(on(click|load|mousemove|mouseup|keypress|keydown|dblclick|contextmenu)=".*?" *)~",
    R"~( id="PRMT_[A-Za-z_0-9]+" *)~",
    R"~(\bcoords=".*?")~",
    R"~( +aria-labelledby="( _THIS_[A-Za-z_0-9.]+hiddenspan[0-9]+)? *[A-Za-z_0-9.]+" *)~",
    R"~( +id="[A-Za-z_0-9.]+" *)~",
    R"~(aria-labelledby="(_THIS_hdr[0-9]+)( _THIS_hdr[0-9]+)*( _THIS_[A-Za-z_0-9.]+hiddenspan[0-9]+)? [A-Za-z_0-9.]+" *)~",
    R"~( ctx="[0-9:]+")~",
    R"~( for="[A-Za-z_0-9\[\]]+" *)~",
    R"~( name="[a-zA-Z_0-9]+" *)~",
};

Patterns compile() {
  Patterns patterns;
  for (const char* const expression : kExpressions) {
    UErrorCode status = U_ZERO_ERROR;
    patterns.emplace_back(
        icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(expression), 0, status));
    if (U_FAILURE(status)) {
      std::fprintf(stderr, "%s: %s\n", expression, u_errorName(status));
      std::exit(2);
    }
  }
  return patterns;
}

void replaceAll(std::string& text, const icu::RegexPattern& pattern) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString input = icu::UnicodeString::fromUTF8(text);
  const std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(input, status));
  const icu::UnicodeString output = matcher->replaceAll(icu::UnicodeString(), status);
  text.clear();
  output.toUTF8String(text);
}

std::string normalized(const fs::path& path, const Patterns& patterns) {
  std::ifstream file(path, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  for (const auto& pattern : patterns) {
    replaceAll(text, *pattern);
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: orvdiff_plain_icu MASTER-FOLDER OUTPUT-FOLDER\n", stderr);
    return 2;
  }
  const Patterns patterns = compile();
  for (const auto& master : fs::directory_iterator(argv[1])) {
    const fs::path name = master.path().filename();
    if (normalized(master.path(), patterns) != normalized(argv[2] / name, patterns)) {
      std::printf("%s\n", name.c_str());
    }
  }
}
