#pragma once

/// `std::strstream`, the type in which a host holds outputs in memory.
///
/// The class is deprecated, but its freeze protocol is part of the contract between host and
/// library, so it stays. This is the one place that includes its header and keeps the compiler
/// quiet about it.
#pragma push_macro("__DEPRECATED")
#undef __DEPRECATED
#include <strstream>
#pragma pop_macro("__DEPRECATED")
