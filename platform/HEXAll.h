#pragma once

#include <stdexcept>

#include "platform/Export.h"

/// The one exception class of the runtime: whatever of `platform/` fails by exception throws this
/// or a class derived from it. `what()` is a whole sentence for people: where, what was found, what
/// was expected.
class HWDEF_API HEXAll : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~HEXAll() override;
};
