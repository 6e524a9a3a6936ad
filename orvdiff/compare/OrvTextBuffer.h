#pragma once

#include <memory>

/// An owned, NUL-terminated text. Operations that normalise a text replace the array held here.
using OrvTextBuffer = std::unique_ptr<char[]>;
