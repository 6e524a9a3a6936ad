#pragma once

#include <nlohmann/json.hpp>

#include "cli/record/Difference.h"

nlohmann::ordered_json differenceToJson(const Difference& difference);

/// The difference again. Raises an exception for anything that `differenceToJson` would not have
/// made; members that it does not know are passed over.
Difference differenceFromJson(const nlohmann::ordered_json& json);
