// poll() with a total limit that survives EINTR.
#pragma once

#include <poll.h>

#include <cerrno>
#include <chrono>

namespace kvn::posix {

// Waits until fd is ready for events: 1 ready (or hung up, or in error: the next
// call on it tells which), 0 time limit passed, -1 error (errno says which).
// A limit of 0 or below waits without limit, as every limit of the library does.
inline int wait_ready(int fd, short events, int limit_ms) noexcept {
    using clock = std::chrono::steady_clock;
    const bool bounded = limit_ms > 0;
    const auto deadline = clock::now() + std::chrono::milliseconds(bounded ? limit_ms : 0);
    for (;;) {
        int left = -1;
        if (bounded) {
            auto ms = std::chrono::ceil<std::chrono::milliseconds>(deadline - clock::now()).count();
            left = ms < 0 ? 0 : static_cast<int>(ms);
        }
        pollfd p{fd, events, 0};
        int r = ::poll(&p, 1, left);
        if (r > 0) return 1;
        if (r == 0) {
            errno = ETIMEDOUT;
            return 0;
        }
        if (errno != EINTR) return -1;
    }
}

}  // namespace kvn::posix
