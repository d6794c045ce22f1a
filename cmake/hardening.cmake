# What a program that reads a server's and a stick's bytes is built with, whatever the preset, and debug information in a
# file of its own beside it. tests/hardening reads from the finished programs that it is there.
add_compile_options(-fstack-protector-strong -D_GLIBCXX_ASSERTIONS)
# The same bytes whichever folder it is built in; no folder of the builder's machine goes into the program.
# The library's assertions name its headers.
add_compile_options(-ffile-prefix-map=${CMAKE_BINARY_DIR}=build -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
                    -fmacro-prefix-map=/usr/=)

if(WIN32)
  add_link_options(-fstack-protector-strong) # it is a library there, linked in like all others
else()
  add_compile_options(-fstack-clash-protection -fcf-protection)
  # It checks what an optimising compiler knows the size of, and does not go with the sanitizers' own checks.
  if(NOT ORVANTA_SANITIZE)
    add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
                        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
  endif()
  add_link_options(-Wl,-z,relro,-z,now)
  include(CheckPIESupported)
  check_pie_supported()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()

# Moves a program's debug information to the folder `debug-information` of the build, where debuggers are told to find
# it. Not in a build for the debugger, nor in one for a distribution ("None"), which makes a package of it.
function(orvanta_split_debug_information target)
  if(WIN32 OR CMAKE_BUILD_TYPE MATCHES "^(Debug|None)$" OR NOT CMAKE_OBJCOPY)
    return()
  endif()
  set(folder ${CMAKE_BINARY_DIR}/debug-information)
  set(file ${folder}/$<TARGET_FILE_NAME:${target}>.debug)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> ${file}
    COMMAND ${CMAKE_OBJCOPY} --strip-debug --strip-unneeded --add-gnu-debuglink=${file} $<TARGET_FILE:${target}>
    VERBATIM)
endfunction()
