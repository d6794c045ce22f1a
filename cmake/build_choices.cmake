# What a builder chooses. It goes, with the project's version, into the generated build_choices.h and into Server.ini.

# orvanta_choice(NAME DEFAULT TEXT): a new build folder takes over the variable of the environment, which reaches the
# builds of all packages of a release.
macro(orvanta_choice name default text)
  if(DEFINED ENV{${name}})
    set(${name} "$ENV{${name}}" CACHE STRING "${text}")
  else()
    set(${name} "${default}" CACHE STRING "${text}")
  endif()
endmacro()

orvanta_choice(ORVANTA_UPDATE_SERVER "http://update.orvanta.example" "Scheme and host of the update server")
orvanta_choice(ORVANTA_UPDATE_PAGE "www.orvanta.example" "Host of the page that offers the program")
orvanta_choice(ORVANTA_WEB_HOST "www.brellix.example" "The distributor's web host")
set(ORVANTA_HANDBOOK_FOLDER "" CACHE STRING "Folder of the handbook; empty: beside the program")
option(ORVANTA_PORTABLE "Settings beside the program, where the user may write there" ON)

# orvanta_build_choices(FOLDER): FOLDER/build_choices.h.
function(orvanta_build_choices folder)
  if(ORVANTA_PORTABLE)
    set(ORVANTA_PORTABLE_VALUE true)
  else()
    set(ORVANTA_PORTABLE_VALUE false)
  endif()
  foreach(text ORVANTA_UPDATE_SERVER ORVANTA_UPDATE_PAGE ORVANTA_WEB_HOST ORVANTA_HANDBOOK_FOLDER)
    string(REPLACE "\\" "\\\\" ${text} "${${text}}")
    string(REPLACE "\"" "\\\"" ${text} "${${text}}")
  endforeach()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/build_choices.h.in ${folder}/build_choices.h @ONLY)
endfunction()

orvanta_build_choices(${PROJECT_BINARY_DIR}/configured)
configure_file(${PROJECT_SOURCE_DIR}/data/Server.ini.in ${PROJECT_BINARY_DIR}/configured/Server.ini @ONLY
  NEWLINE_STYLE WIN32)
