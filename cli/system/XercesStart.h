#pragma once

/// Initialises Xerces for the engines that validate XML, before the first of them is created; later
/// calls do nothing. Raises `CommandError`, or `std::bad_alloc`.
///
/// Nothing terminates Xerces again. That would release only what the end of the process releases
/// anyway, and its clean-up allocates: out of memory there, it would abort the program after the
/// verdict.
void startXerces();
