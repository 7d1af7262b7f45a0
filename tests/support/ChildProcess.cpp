#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

int inChild(const std::function<void()>& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

bool wasKilled(int status)
{
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

}  // namespace support
