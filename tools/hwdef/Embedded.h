#pragma once

#include <string>
#include <vector>

/// A JSON document of the library as a value inside another one, `depth` levels below its top.
std::string embedded(const std::string& document, std::size_t depth);
/// Such documents as an array that is a member of the top.
std::string embeddedArray(const std::vector<std::string>& documents);
