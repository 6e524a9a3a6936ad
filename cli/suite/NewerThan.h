#pragma once

#include <ctime>
#include <optional>
#include <string>

/// The time that outputs must not be older than.
struct NewerThan {
  timespec time = {};
  std::string text;  ///< for people: "2026-11-21 23:10:00", or the same with the name of a file
};

/// Reads a time ("2026-11-21", "2026-11-21T23:10", "2026-11-21 23:10:05", in local time, or in UTC
/// with a "Z" at its end), a duration before now ("90s", "30m", "12h", "2d"), seconds since the
/// epoch ("@1795561200"), or else the name of a file, whose time of modification counts. Raises
/// `CommandError` for anything that is none of these, a time in the future or one that local clocks
/// showed twice or never, and a text that is both a time and the name of a file.
NewerThan parseNewerThan(const std::string& text);

/// What to say of the file if it is older than that; nothing if it is not, or not there.
std::optional<std::string> whyStale(const std::string& file, const NewerThan& limit);
