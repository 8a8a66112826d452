# Windows programs (x86-64) by Debian's cross compiler, whose tests run under Wine.
#
# WINDOWS_LIBRARIES names the folders of the libraries that Debian has no Windows form of.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# Of the two compilers, the one that has std::thread and its kin.
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH ${WINDOWS_LIBRARIES} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/under-wine)

# One file a program: it needs nothing but what every Windows has.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES WINDOWS_LIBRARIES)
find_program(wxWidgets_CONFIG_EXECUTABLE wx-config PATHS ${WINDOWS_LIBRARIES} PATH_SUFFIXES bin
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
