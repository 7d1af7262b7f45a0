#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "hwdef/hwdef.h"

/// A property of a definition that people name by a key and see as a text.
struct Property {
    const char* key;    ///< on the command line and in JSON
    const char* title;  ///< for people
    std::string (*get)(const HHDFHwDef& definition);
    /// False when the text can't be the property's.
    bool (*set)(HHDFHwDef& definition, const std::string& text);
    const char* help;  ///< what may be set; empty for any text
};

/// All properties in the order in which they are shown; the counts of resources come last.
std::span<const Property> properties();
/// The property of that key; null when there is none.
const Property* findProperty(const std::string& key);

/// A key with its value.
using Assignment = std::pair<std::string, std::string>;

/// What stands on both sides of the first "="; the right side may be empty. Throws CommandError, which
/// tells the form.
Assignment parseAssignment(const std::string& text, const char* form = "key=value");

/// Sets a property by its key, or a free attribute of the design by "attribute.NAME". Throws
/// CommandError for a key that isn't known, with the nearest one, and for a value that it can't have.
void assign(HHDFHwDef& definition, const Assignment& assignment);
