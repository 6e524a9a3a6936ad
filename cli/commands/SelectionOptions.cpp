#include "cli/commands/SelectionOptions.h"

#include "orvdiff/formats/OrvDiffFormats.h"

namespace {

void addPlaces(CLI::App& verify, FormatOptions& formats) {
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    if (!format.needsArguments) {
      continue;
    }
    const std::string name(format.name);
    const auto add = [&](const char* what, std::string FormatPlaces::*member, const char* help) {
      return verify
          .add_option_function<std::string>(
              "--" + name + what,
              [&formats, name, member](const std::string& text) {
                formats.places[name].*member = text;
              },
              help)
          ->group("Location of " + name + " files");
    };
    CLI::Option* const output =
        add("-output-dir", &FormatPlaces::outputDirectory,
            "Output folder below ../webcontent/bi; also selects the format");
    output->type_name("NAME");
    add("-master-sub-folder", &FormatPlaces::masterSubFolder, "Subfolder of the master folder")
        ->needs(output)
        ->type_name("NAME");
    if (format.format == OrvOutputFormat::Cgs) {
      add("-suffix", &FormatPlaces::fileNameSuffix, "Only masters whose names end in _TEXT")
          ->needs(output)
          ->type_name("TEXT");
    }
  }
}

}  // namespace

void addSelection(CLI::App& verb, FormatOptions& formats) {
  verb.add_option("-f,--format", formats.names,
                  "Verify only this format; repeat it or separate names with commas "
                  "(default: all that need no further options)")
      ->allow_extra_args(false)  // the word after the name is a location
      ->delimiter(',')
      ->option_text("FORMAT");
  verb.add_option("--sub-folder", formats.subFolders,
                  "Subfolder of the master and output folders; may be repeated")
      ->allow_extra_args(false)
      ->option_text("NAME");
  verb.add_flag("--all-sub-folders", formats.allSubFolders,
                "Also verify every sub-folder of the master folders that is no format's own");
  verb.add_option("--folder-suffix", formats.folderSuffix,
                  "Text appended to the names of output folders")
      ->type_name("TEXT");
  addPlaces(verb, formats);
}

void addWork(CLI::App& verb, std::string& folder) {
  verb.add_option("--work", folder,
                  "Look for the outputs from the working folder DIR, but leave the paths on the "
                  "command line relative to the current folder")
      ->check(notEmpty())
      ->type_name("DIR");
}
