# What has been compiled once, in whichever folder, is not compiled again: a new clone takes what ccache keeps below the
# user's own cache folder. Without ccache, or where it may not write, everything is compiled; and in a build for a
# distribution ("None"), whose debug information is part of a package: it is not byte by byte the same with ccache.
# Whoever makes a package that nobody compares may set the variable of the environment.
if(DEFINED ENV{ORVANTA_COMPILER_CACHE})
  set(wanted "$ENV{ORVANTA_COMPILER_CACHE}")
elseif(CMAKE_BUILD_TYPE STREQUAL "None")
  set(wanted OFF)
else()
  set(wanted ON)
endif()
option(ORVANTA_COMPILER_CACHE "Take from ccache what has been compiled before" ${wanted})
find_program(CCACHE_PROGRAM ccache)
if(NOT ORVANTA_COMPILER_CACHE OR NOT CCACHE_PROGRAM OR CMAKE_CXX_COMPILER_LAUNCHER)
  return()
endif()

# Paths inside of the source folder count as relative ones, and the build folder is no part of what is compiled. The
# rest is what precompiled headers take: https://ccache.dev/manual/4.7.5.html#_precompiled_headers
set(launcher
  ${CMAKE_COMMAND} -E env
  CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}
  CCACHE_NOHASHDIR=1
  CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
  ${CCACHE_PROGRAM})

# It fails, instead of compiling, for somebody whose home cannot be written.
set(trial ${CMAKE_BINARY_DIR}/CMakeFiles/compiler_cache_trial)
file(WRITE ${trial}.cpp "")
execute_process(COMMAND ${launcher} ${CMAKE_CXX_COMPILER} -c ${trial}.cpp -o ${trial}.o
  RESULT_VARIABLE refused OUTPUT_QUIET ERROR_QUIET)
if(refused)
  return()
endif()

set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
else()
  add_compile_options(-fpch-preprocess)
endif()
