#pragma once

#include <functional>
#include <string>

#include "Argument.h"
#include "Recipe.h"

/// What a user allows an edit to do.
struct EditLeave {
    bool toRewriteBom = false;  ///< lose what only the present BOM document says
    bool toBless = false;       ///< record a digest for an archive that was changed since it was written
};

/// The options by which a user gives leave.
void defineLeave(Arguments& arguments, EditLeave& leave);

/// Throws CommandError for an archive whose digest is wrong, which a digest that is recorded anew would hide;
/// `leave` tells what --force does.
void checkDigest(const Container& container, const std::string& leave);

/// Changes the recipe of the container at `path` and writes it in its place. Members that the change leaves
/// alone keep their bytes as they are compressed, and the BOM all that it says. Throws CommandError and
/// HEXAll; the container is then as it was.
void editContainer(const std::string& path, const EditLeave& leave,
                   const std::function<void(Recipe&)>& change);
