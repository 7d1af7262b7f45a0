#pragma once

#include <functional>

namespace support {

/// Runs `work` to its end on a thread whose stack has room for few hundred calls only, so that
/// recursion by the depth of an input shows as a crash.
void onSmallStack(const std::function<void()>& work);

}  // namespace support
