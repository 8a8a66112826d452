# Windows programs (x86-64) by Debian's cross compiler, whose tests run under Wine.
#
# WX_WINDOWS names the folder of a static wxWidgets for Windows; KORVEX_WINDOW=OFF needs none.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# Of the two compilers, the one that has std::thread and its kin.
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/under-wine)

# One file a program: it needs nothing but what every Windows has.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(wxWidgets_CONFIG_EXECUTABLE ${WX_WINDOWS}/bin/wx-config)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES WX_WINDOWS)
