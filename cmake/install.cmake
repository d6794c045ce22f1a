# What `cmake --install` puts where. On Linux the program folder lies below the folder of libraries, and the command is
# a link into it; on Windows the program folder is all there is.
set(installed_programs orvanta-usbtool)
if(TARGET fat32format)
  list(APPEND installed_programs fat32format)
endif()

# The user guide with its pictures lies where the program looks for it.
if(handbook)
  list(REMOVE_ITEM program_files ${handbook})
endif()

if(WIN32)
  install(TARGETS ${installed_programs} RUNTIME DESTINATION .)
  install(FILES ${program_files} ${handbook} DESTINATION .)
  if(handbook)
    install(DIRECTORY ${PROJECT_BINARY_DIR}/program/Anleitung DESTINATION .)
  endif()
  return()
endif()

include(GNUInstallDirs)
set(folder ${CMAKE_INSTALL_LIBDIR}/orvanta-usbtool)
install(TARGETS ${installed_programs} RUNTIME DESTINATION ${folder})
install(FILES ${program_files} DESTINATION ${folder})
if(handbook)
  set(guide ${folder})
  if(ORVANTA_HANDBOOK_FOLDER)
    set(guide ${ORVANTA_HANDBOOK_FOLDER})
  endif()
  install(FILES ${handbook} DESTINATION ${guide})
  install(DIRECTORY ${PROJECT_BINARY_DIR}/program/Anleitung DESTINATION ${guide})
endif()
file(RELATIVE_PATH to_program ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/orvanta-usbtool/orvanta-usbtool)
set(link ${PROJECT_BINARY_DIR}/configured/link/orvanta-usbtool)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/configured/link)
file(CREATE_LINK ${to_program} ${link} SYMBOLIC)
install(FILES ${link} DESTINATION ${CMAKE_INSTALL_BINDIR})

set(linux ${PROJECT_SOURCE_DIR}/packaging/linux)
set(made ${PROJECT_BINARY_DIR}/configured)

# The day of the release is that of the build, unless SOURCE_DATE_EPOCH says another.
function(orvanta_metainfo)
  string(TIMESTAMP ORVANTA_RELEASE_DAY "%Y-%m-%d" UTC)
  string(REPLACE "&" "&amp;" ORVANTA_UPDATE_PAGE "${ORVANTA_UPDATE_PAGE}")
  string(REPLACE "<" "&lt;" ORVANTA_UPDATE_PAGE "${ORVANTA_UPDATE_PAGE}")
  configure_file(${linux}/orvanta-usbtool.metainfo.xml.in ${made}/orvanta-usbtool.metainfo.xml @ONLY)
endfunction()
orvanta_metainfo()

# It names the formatter's place, and `cmake --install --prefix` may choose another one than was configured. It is made
# where it goes: in the build it would be root's after root has installed, and nobody else could write it again.
install(CODE "
  set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
  cmake_path(ABSOLUTE_PATH prefix)
  set(ORVANTA_PROGRAM_FOLDER \"${folder}\")
  cmake_path(ABSOLUTE_PATH ORVANTA_PROGRAM_FOLDER BASE_DIRECTORY \"\${prefix}\" NORMALIZE)
  string(REPLACE \"&\" \"&amp;\" ORVANTA_PROGRAM_FOLDER \"\${ORVANTA_PROGRAM_FOLDER}\")
  set(policy \"${CMAKE_INSTALL_DATADIR}/polkit-1/actions/orvanta-usbtool.policy\")
  cmake_path(ABSOLUTE_PATH policy BASE_DIRECTORY \"\${prefix}\" NORMALIZE)
  message(STATUS \"Installing: \$ENV{DESTDIR}\${policy}\")
  configure_file(\"${linux}/orvanta-usbtool.policy.in\" \"\$ENV{DESTDIR}\${policy}\" @ONLY
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${policy}\")")
install(FILES ${linux}/orvanta-usbtool.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${made}/orvanta-usbtool.metainfo.xml RENAME example.orvanta.UsbTool.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
foreach(size 16 22 24 32 48 64 128 256 512)
  install(FILES ${PROJECT_SOURCE_DIR}/data/icons/103-${size}.png RENAME orvanta-usbtool.png
    DESTINATION ${icons}/${size}x${size}/apps)
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/data/svg/103.svg RENAME orvanta-usbtool.svg DESTINATION ${icons}/scalable/apps)

install(FILES ${linux}/orvanta-usbtool.1 ${PROJECT_SOURCE_DIR}/tools/fat32format/linux/fat32format.exe.1
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${linux}/orvanta-usbtool.de.1 RENAME orvanta-usbtool.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/de/man1)
