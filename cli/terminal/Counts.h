#pragma once

#include <cstdint>
#include <string>

/// A number as people read it: "12,345,678".
std::string withThousands(std::uint64_t number);

/// "1 byte", "2,000 bytes"; `thing` is the word for one.
std::string counted(std::uint64_t number, const std::string& thing);
