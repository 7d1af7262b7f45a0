#pragma once

#include <stdexcept>

/// What was asked can't be done: one line for the user on standard error, and the exit code 2.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Nobody reads what is written: the work ends without a word.
class ClosedPipe : public CommandError {
public:
    using CommandError::CommandError;
};
