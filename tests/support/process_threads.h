#ifndef QVIMANAGER_TESTS_SUPPORT_PROCESS_THREADS_H
#define QVIMANAGER_TESTS_SUPPORT_PROCESS_THREADS_H

// How many threads this process has now, as /proc lists them. A tool (the
// thread sanitizer) may add threads of its own, so compare counts taken
// after the program's first thread was made.

#include <filesystem>
#include <system_error>

namespace TestSupport {

inline long ThreadsOfProcess()
{
    long count = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task", ignored)) {
        static_cast<void>(entry);
        ++count;
    }
    return count;
}

} // namespace TestSupport

#endif
