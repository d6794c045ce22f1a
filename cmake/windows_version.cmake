# The project's version for the resources and the manifests of Windows, which have four numbers of it.
set(numbers ${PROJECT_VERSION_MAJOR} ${PROJECT_VERSION_MINOR} ${PROJECT_VERSION_PATCH} ${PROJECT_VERSION_TWEAK} 0 0 0)
list(SUBLIST numbers 0 4 numbers)
list(JOIN numbers ", " ORVANTA_VERSION_NUMBERS)
list(JOIN numbers "." ORVANTA_VERSION_FOUR)
configure_file(${PROJECT_SOURCE_DIR}/cmake/version_resource.h.in ${PROJECT_BINARY_DIR}/configured/version_resource.h @ONLY)

# orvanta_versioned_resource(TARGET SOURCE NAME): SOURCE, which TARGET compiles, says the version; its manifest is made
# from NAME.in.
function(orvanta_versioned_resource target source manifest)
  set(made ${PROJECT_BINARY_DIR}/configured/${manifest})
  configure_file(${CMAKE_CURRENT_SOURCE_DIR}/${manifest}.in ${made} @ONLY)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/configured)
  set_property(SOURCE ${source} APPEND PROPERTY OBJECT_DEPENDS
    "${made};${PROJECT_BINARY_DIR}/configured/version_resource.h")
endfunction()
