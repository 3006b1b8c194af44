# Windows x64 with Debian's mingw-w64 toolchain (g++-mingw-w64-x86-64-posix).
# The posix flavour gives std::thread and std::mutex; the C and C++ runtimes
# are linked statically, so the DLLs and test programs need no runtime DLLs
# beside them (each DLL keeps its own copy: only C types cross its boundary).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TQCS_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${TQCS_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TQCS_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${TQCS_MINGW_PREFIX}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${TQCS_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)

# Test programs run under Wine; without it they are skipped (exit status 77).
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../../scripts/wine-run.sh)
