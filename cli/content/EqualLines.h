#pragma once

#include <cstddef>
#include <string_view>

/// How much of both texts, from their starts to the end of some line, is the same and free of
/// `stop`. Fast, and not always all of it.
std::size_t equalLines(std::string_view master, std::string_view output, char stop);
