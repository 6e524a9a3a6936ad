#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What kind of thing varies between runs.
enum class ValueKind {
  DateTime,
  Date,
  Time,
  Duration,
  Uuid,
  HexId,
  HostName,
  Version,
  Year,
  Counter,  ///< a whole number
  Number,   ///< any other
  Identifier,
  AttributeOrder,
  WhiteSpace,
  Words,  ///< anything else
};

/// "date and time".
std::string_view nameOf(ValueKind kind);

/// "date-time": a part of a pattern's name.
std::string_view slugOf(ValueKind kind);

/// Whether the form alone says that it comes from the run and not from the data.
bool isVolatileByForm(ValueKind kind);

/// Whether a month, a day of the week or a part of the day starts like this.
bool isCalendarWord(std::string_view word);

/// A stretch of a text that has a known form.
struct FoundValue {
  std::size_t begin;
  std::size_t end;
  ValueKind kind;
};

/// The values of known form in `text`, in order: all kinds up to `Number`. A date and a time next
/// to each other are one value. For the one verifying thread.
std::vector<FoundValue> findValues(std::string_view text);

/// The kind of all these values together.
ValueKind kindOf(const std::vector<std::string>& values);
