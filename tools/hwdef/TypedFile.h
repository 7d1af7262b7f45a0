#pragma once

#include <string>

#include "Recipe.h"

/// A file on disk and its type out of PATH:TYPE. Throws CommandError when the text has another form, the
/// type isn't known or the file isn't there.
Recipe::File parseTypedFile(const std::string& text);
