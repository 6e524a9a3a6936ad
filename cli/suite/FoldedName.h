#pragma once

#include <string>
#include <string_view>

/// A name without what a person may overlook in it: two names that differ only in upper and lower
/// case, or in their form of Unicode, have the same. Bytes that are no UTF-8 count by ASCII case.
std::string foldedName(std::string_view name);
