#pragma once

#include <string>
#include <vector>

/// A text with what hangs below it.
struct Tree {
    std::string text;
    std::vector<Tree> children;

    /// The text, and each child with branches in front. Recurses to the tree's depth.
    std::vector<std::string> lines() const
    {
        std::vector<std::string> all = {text};
        for (std::size_t i = 0; i < children.size(); ++i) {
            const bool isLast = i + 1 == children.size();
            std::string branch = isLast ? "└── " : "├── ";
            for (const std::string& line : children[i].lines()) {
                all.push_back(branch + line);
                branch = isLast ? "    " : "│   ";
            }
        }
        return all;
    }
};
