#pragma once

#include <functional>

namespace support {

/// Runs the work in a child process, which then ends at once, without any cleaning up; how it ended, as
/// waitpid tells it. Work that ends the process itself by std::exit cleans up.
int inChild(const std::function<void()>& work);

/// Whether that was by SIGKILL.
bool wasKilled(int status);

}  // namespace support
