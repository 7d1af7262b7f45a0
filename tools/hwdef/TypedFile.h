#pragma once

#include <string>

#include "Recipe.h"

/// The token of a type that a file can be packed with, from a token in any case. Throws CommandError when it
/// isn't known, with the nearest one, and for that of driver sources, which makes no entry of a file.
std::string packedType(const std::string& token);

/// A file on disk and its type out of PATH:TYPE. Throws CommandError when the text has another form, the
/// name is that of a bill of materials, packedType() refuses the type, or the file isn't there.
Recipe::File parseTypedFile(const std::string& text);
