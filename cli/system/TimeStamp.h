#pragma once

#include <string>

/// Now, in UTC: "2026-11-23T06:12:00Z".
std::string timeStamp();
