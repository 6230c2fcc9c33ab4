// Every test process works in a scratch directory of its own under the system's
// temporary directory, removed when the process ends: files that tests write by a
// relative name (transfers, databases, exports) never land in the source tree or
// the build tree, and parallel test processes never share one.
#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace {

struct ScratchDir {
    std::filesystem::path dir;
    ScratchDir() {
        std::error_code ec;
        std::random_device rd;
        const auto base = std::filesystem::temp_directory_path(ec);
        if (ec) return;
        for (int i = 0; i < 8 && dir.empty(); ++i) {
            auto d = base / ("kvnsdk2-tests-" + std::to_string(rd()));
            if (std::filesystem::create_directory(d, ec) && !ec) dir = d;
        }
        if (!dir.empty()) std::filesystem::current_path(dir, ec);
    }
    ~ScratchDir() {
        if (dir.empty()) return;
        std::error_code ec;
        std::filesystem::current_path(dir.parent_path(), ec);
        std::filesystem::remove_all(dir, ec);
    }
};

const ScratchDir scratch;

}  // namespace
