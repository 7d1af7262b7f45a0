#pragma once

#include <cstdlib>
#include <iostream>
#include <string>

/// Ends the example with a failure when something isn't as it must be.
inline void expect(bool condition, const std::string& what)
{
    if (!condition) {
        std::cerr << "failed: " << what << "\n";
        std::exit(EXIT_FAILURE);
    }
}
