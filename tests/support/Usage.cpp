#include "tests/support/Usage.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

Usage usageOf(const std::function<void()>& work) {
    const pid_t copy = fork();
    if (copy == 0) {
        work();
        _exit(0);
    }
    int status = -1;
    rusage used{};
    wait4(copy, &status, 0, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return {static_cast<double>(used.ru_maxrss) / 1024, seconds(used.ru_utime) + seconds(used.ru_stime),
            WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

} // namespace support
