# CMake's description of the cross compiler for 64-bit Windows, and where the libraries for it were built
# (scripts/windows/setup; $ZEB_WINDOWS_LIBRARIES).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

set(ZEB_WINDOWS_LIBRARIES "$ENV{ZEB_WINDOWS_LIBRARIES}" CACHE PATH "Where libraries for Windows were built")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZEB_WINDOWS_LIBRARIES)
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${triple} ${ZEB_WINDOWS_LIBRARIES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Code that runs while building (moc and its like) is the build machine's own.
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake)
# Libraries are linked whole into the programs, so what they need themselves must be named too.
set(ENV{PKG_CONFIG_LIBDIR} ${ZEB_WINDOWS_LIBRARIES}/lib/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")
set(PKG_CONFIG_ARGN --static)
