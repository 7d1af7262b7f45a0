#pragma once

#include "Recipe.h"

/// Throws CommandError for a recipe of which no sound container could be made: a member or a file has two
/// paths, a member stands twice in the archive's order, which must have the bill of materials, or that has
/// another name than a container's may have.
void checkRecipe(const Recipe& recipe);

/// All members to pack, the BOM without a path. Where the recipe tells the archive's order, files that it
/// forgets come last; what is only listed and isn't on disk is told and left out.
std::vector<Recipe::Member> partsOf(const Recipe& recipe);
