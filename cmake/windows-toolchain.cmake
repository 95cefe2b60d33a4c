# 64-bit Windows from Debian: packages g++-mingw-w64-x86-64-posix, mingw-w64-tools, and wine64 to run what was built.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

# The posix thread model has std::thread and std::mutex; the unsuffixed compiler may be the other one.
set(korven_triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${korven_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${korven_triple}-g++-posix)
set(CMAKE_RC_COMPILER ${korven_triple}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${korven_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The compiler aligns the stack to 16 bytes on this target but spills 32- and 64-byte vectors with aligned moves
# (GCC bug 54412); the assembler writes unaligned ones instead, which cost nothing on aligned data.
set(CMAKE_CXX_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")

# The runtime goes into the image, and no time stamp: the same sources give the same bytes.
set(korven_link_flags "-static -Wl,--no-insert-timestamp")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${korven_link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${korven_link_flags}")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../tools/run_under_wine")
