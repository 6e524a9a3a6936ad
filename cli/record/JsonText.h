#pragma once

#include <nlohmann/json.hpp>
#include <string>

/// A text as JSON: a string if it is valid UTF-8, else {"hex": "..."} of its bytes.
nlohmann::ordered_json textToJson(const std::string& text);

/// The text again. Raises `std::runtime_error` for JSON of another form.
std::string textFromJson(const nlohmann::ordered_json& json);
