# Cross-compiling for 64-bit Windows with mingw-w64.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
# The posix thread model: std::thread, std::mutex and friends need it (the win32
# model of this GCC has no <thread>). The names are spelled out because the
# unsuffixed ones follow update-alternatives, which a fresh machine may point elsewhere.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Programs carry their runtime with them (libgcc, libstdc++, winpthreads), so they
# start under Wine or on a bare Windows machine without extra DLLs.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -static")
# Test programs (test discovery and ctest) run through Wine; scripts/wine-run keeps a
# private, headless prefix inside the build directory.
if(NOT DEFINED CMAKE_CROSSCOMPILING_EMULATOR)
  get_filename_component(_kvn_wine_run "${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run" ABSOLUTE)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${_kvn_wine_run}")
endif()
