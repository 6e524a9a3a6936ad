#pragma once

#include <string>

/// Has `man` show the page `name` ("orvdiff-verify") of section 1, out of the installation that
/// this program is part of, in place of this process. Returns if the page is not installed, as
/// systems that do without documentation have it, or there is no `man`.
void showManualPage(const std::string& name);
