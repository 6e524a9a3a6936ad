#pragma once

#include <string_view>

#include "cli/custom/ContentOutcome.h"
#include "cli/custom/OwnFormat.h"

/// Compares the pixels of two PNGs, whatever their depth, colour type and compression. Another size
/// is a difference; what cannot be decoded is bad.
ContentOutcome comparePictures(std::string_view master, std::string_view output,
                               const PictureRules& rules);
