// poll() with a total limit that survives EINTR.
#pragma once

#include <poll.h>

#include <cerrno>
#include <chrono>

namespace kvn::posix {

// Waits until fd is ready for events: 1 ready, 0 time limit passed, -1 error.
// A limit below 0 waits without limit.
inline int wait_ready(int fd, short events, int limit_ms) noexcept {
    using clock = std::chrono::steady_clock;
    const auto deadline = clock::now() + std::chrono::milliseconds(limit_ms < 0 ? 0 : limit_ms);
    for (;;) {
        int left = -1;
        if (limit_ms >= 0) {
            auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock::now()).count();
            left = ms < 0 ? 0 : static_cast<int>(ms);
        }
        pollfd p{fd, events, 0};
        int r = ::poll(&p, 1, left);
        if (r >= 0) return r > 0 ? 1 : 0;
        if (errno != EINTR) return -1;
    }
}

}  // namespace kvn::posix
