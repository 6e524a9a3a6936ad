#pragma once

#include <string_view>

/// Whether `name` is that of a text which comparing a pair left behind beside its files.
bool isLeftover(std::string_view name);

/// The name of the file that a leftover belongs to.
std::string_view ownerOfLeftover(std::string_view name);

/// Whether `verify --save-normalized` writes files of such names itself.
bool isSavedByVerify(std::string_view name);
