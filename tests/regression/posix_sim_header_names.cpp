// Found by review: the simulator gained a groups.h, and tests/posix_kvnctl.cpp, which links both kvnsim and kvnctl, got it instead of kvnctl's groups.h on a fresh build.
//
// kvnsim's headers are on the include path of everything that links it (the
// tests, kvnctl, the benchmarks), so a simulator header named like a header of
// those directories can be taken in its place.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

TEST(Regression, SimulatorHeadersShadowNoOtherHeader) {
    namespace fs = std::filesystem;
    const fs::path root = KVN_SOURCE_DIR;
    size_t headers = 0;
    for (const fs::directory_entry& e : fs::directory_iterator(root / "tools/sim")) {
        if (!e.is_regular_file() || e.path().extension() != ".h") continue;
        ++headers;
        const fs::path name = e.path().filename();
        for (const char* dir : {"include", "src", "tests", "tools/kvnctl", "bench", "examples"})
            EXPECT_FALSE(fs::exists(root / dir / name)) << name << " is in tools/sim and in " << dir;
    }
    EXPECT_GT(headers, 5u);  // the directory was found
}
