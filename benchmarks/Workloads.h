#pragma once

#include "support/Registry.h"

/// The in-process comparisons, one function for each file.
namespace bench {

void addOpening();
void addMembers();
void addRewriting();
void addDigests();
void addAppending();
void addGrowth();
void addLimits();

/// Opening the container of that many members; also measured for growth.
Task openTask(std::size_t count);

}  // namespace bench
