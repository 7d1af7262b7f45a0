#pragma once

#include <string>

/// What the command says of itself as a whole.
std::string generalHelp();
/// That there is no such verb, and which one was probably meant.
std::string unknownVerb(const std::string& name);
