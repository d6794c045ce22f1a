# Cross-compiling for Windows 10 and 11, x64, with Debian's package g++-mingw-w64-x86-64-posix. Everything is linked
# into the program, so that no DLL has to lie beside it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The same bytes whenever it is built: no time goes into the program. packaging/windows/make_zip.py --check proves it.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--no-insert-timestamp")

# What nobody calls of the libraries that are linked in stays out.
string(APPEND CMAKE_CXX_FLAGS_INIT " -ffunction-sections -fdata-sections")
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -static -Wl,--gc-sections")

set(CMAKE_EXPORT_COMPILE_COMMANDS ON) # for scripts/check_style.sh
