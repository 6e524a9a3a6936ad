#pragma once

/// The HTML report's page as it was built into the program, from the files in cli/report/html.
struct PageSource {
  const char* page;       ///< with "@name@" for what each report puts there
  const char* style;      ///< CSS
  const char* styleHash;  ///< SHA-256 in hexadecimal
  const char* script;
  const char* scriptHash;
};

extern const PageSource kPageSource;
