#pragma once

#include <string>

#include "Recipe.h"

/// A recipe as the text of a JSON document, with paths as they stand in the recipe.
std::string recipeText(const Recipe& recipe);
/// The recipe in the JSON document at `path`; relative paths in it count from its directory. Throws
/// CommandError, which says where it isn't a recipe.
Recipe readRecipe(const std::string& path);
