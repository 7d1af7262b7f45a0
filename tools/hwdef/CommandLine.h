#pragma once

#include <string>
#include <vector>

#include "Argument.h"
#include "Output.h"
#include "Verb.h"

/// What every verb may be told.
struct Settings {
    bool json = false;
    bool quiet = false;
    bool help = false;
    std::string colours = "auto";
};

/// The place of the verb among the words: the first one that is neither an option that every verb has nor
/// such an option's value.
std::vector<std::string>::const_iterator verbIn(const std::vector<std::string>& words);

/// The options that every verb has.
void defineSettings(Arguments& arguments, Settings& settings);
Colours coloursOf(const Settings& settings);

/// Fills the targets of the arguments from the words behind the verb. Throws CommandError for words that
/// don't fit; of these, the help option is told instead.
void parseWords(const Verb& verb, const Arguments& arguments, const Settings& settings,
                std::vector<std::string> words);

/// The verb's help text, without a newline at its end.
std::string helpOf(const Verb& verb, const Arguments& arguments);
