#pragma once

#include "Recipe.h"

/// Of entries that share a file name, an opened definition gives the attributes and source databases of all
/// to the first ones. Gives them back to the entries that have them in the container's BOM document; `files`
/// are its entries in order. Nothing happens when no name repeats.
void takeApartRepeated(const Container& container, std::vector<Recipe::File>& files);
