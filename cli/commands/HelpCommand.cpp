#include <iostream>
#include <memory>
#include <string>

#include "cli/commands/CommandLine.h"
#include "cli/commands/Verb.h"
#include "cli/system/ManualPage.h"

void addHelp(CLI::App& app, Performer& chosen) {
  const auto name = std::make_shared<std::string>();  // empty: the program as a whole
  CLI::App* const help = app.add_subcommand("help", "Show the manual page of a command");
  help->add_option("COMMAND", *name, "A command; default: the program as a whole")->type_name("");
  help->callback([&app, &chosen, name] {
    const CLI::App* const verb = name->empty() ? nullptr : findVerb(app, *name);
    if (verb == nullptr && !name->empty()) {
      throw CLI::ArgumentMismatch("unknown command \"" + *name + "\"");
    }
    const std::string page = verb == nullptr ? "orvdiff" : "orvdiff-" + verb->get_name();
    // Not app.help(), which is that of the command that was given: this one.
    const std::string text = verb == nullptr ? app.get_formatter()->make_help(
                                                   &app, "orvdiff", CLI::AppFormatMode::Normal)
                                             : verb->help("orvdiff");
    chosen = [page, text](const CommonOptions& /*common*/) {
      showManualPage(page);
      std::cout << text;
      return kExitPassed;
    };
  });
}
