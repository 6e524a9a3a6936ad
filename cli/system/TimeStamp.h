#pragma once

#include <string>

/// Now, in UTC: "2026-11-23T06:12:00Z".
std::string timeStamp();

/// The date of today in local time, "2027-01-31".
std::string localDate();
