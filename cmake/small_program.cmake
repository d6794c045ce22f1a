# The program comes up the faster the less of it there is to read and to relocate. What nobody calls of the libraries
# that are linked in stays out, and relocations that say no more than an address take a bit instead of 24 bytes.
# The toolchain for Windows says the like for its own libraries.
if(NOT WIN32)
  include(CheckLinkerFlag)
  add_compile_options(-ffunction-sections -fdata-sections)
  add_link_options(-Wl,--gc-sections)
  check_linker_flag(CXX -Wl,-z,pack-relative-relocs ORVANTA_PACKS_RELOCATIONS)
  if(ORVANTA_PACKS_RELOCATIONS)
    add_link_options(-Wl,-z,pack-relative-relocs)
  endif()
endif()
