# A static import is searched beside the .exe first, unless Windows keeps the library on its list of known ones, and it
# is loaded before the program can forbid that. The others are loaded with the first call of one of their functions,
# long after the program has forbidden it.

# orvanta_delayed_import(NAME): a library NAME_delayed to link with, of the functions that NAME.def lists.
function(orvanta_delayed_import name)
  set(definitions ${CMAKE_CURRENT_SOURCE_DIR}/${name}.def)
  set(library ${CMAKE_CURRENT_BINARY_DIR}/lib${name}_delayed.a)
  add_custom_command(OUTPUT ${library}
    COMMAND ${CMAKE_DLLTOOL} --deterministic-libraries --input-def ${definitions} --output-delaylib ${library}
    DEPENDS ${definitions} VERBATIM)
  add_custom_target(${name}_import DEPENDS ${library})
  add_library(${name}_delayed STATIC IMPORTED GLOBAL)
  set_target_properties(${name}_delayed PROPERTIES IMPORTED_LOCATION ${library} INTERFACE_LINK_LIBRARIES delayimp)
  add_dependencies(${name}_delayed ${name}_import)
endfunction()
