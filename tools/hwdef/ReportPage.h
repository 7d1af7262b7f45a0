#pragma once

#include <string>
#include <vector>

#include "Container.h"

/// What a report shows.
struct ReportFacts {
    std::string path;
    std::vector<HHDFFinding> findings;
    Container container;  ///< without definition and archive when it can't be opened
    std::string refusal;  ///< why it can't; empty when it can
    std::string contentDigest;
    std::string fileDigest;
};

/// One HTML document that needs nothing beside it and asks no network for anything. Equal facts give equal
/// bytes.
std::string reportPage(const ReportFacts& facts);
