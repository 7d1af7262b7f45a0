#pragma once

#include <string>

#include "platform/iostreams/NewMember.h"

namespace iostreams::zip {

/// Adds the member to the archive where it stands, or to a new one when nothing exists there; a member
/// of its name is replaced. docs/container-format.md tells the steps and what each instant shows.
///
/// Throws SourceError when the member's source can't be read and zip_exception when the archive can't
/// be read or written; the archive then has its old bytes and length again. What an earlier addition
/// that was interrupted has left there goes in either case.
void addToArchive(const std::string& archive, NewMember& member);

}  // namespace iostreams::zip
