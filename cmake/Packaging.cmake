# Where things go when they are installed, and the Debian package (scripts/make-deb).
# The program's folder is installed as it is built: it finds its resources by its own place, through
# the link in bin/ too.
find_program(TORVANE_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(TORVANE_GZIP gzip)

set(TORVANE_PACKAGE_MAINTAINER "The Torvane developers <developers@torvane.example>" CACHE STRING
  "Who answers for the package: a name and an address")
set(name torvane-p2p-helper)
set(home lib/${name})

# By build number within a version. A package of 1.0.1 is newer than any of 1.0.
set(CPACK_DEBIAN_PACKAGE_VERSION "${PROJECT_VERSION}+${TORVANE_BUILD_NUMBER}")
set(CPACK_PACKAGE_CONTACT "${TORVANE_PACKAGE_MAINTAINER}")

# Programs
set(bundle "${PROJECT_BINARY_DIR}/bundle/Torvane P2P Helper")
install(TARGETS ${name} DESTINATION ${home}/bin)
install(FILES "${bundle}/Info.json" DESTINATION ${home})
foreach(file ${TORVANE_ENGINE_FILES})
  get_filename_component(folder ${file} DIRECTORY)
  install(FILES "${bundle}/Resources/${file}" DESTINATION ${home}/Resources/${folder})
endforeach()
set(linked ${name})
if(TARGET torvane-show)
  install(TARGETS torvane-show DESTINATION ${home}/bin)
  list(APPEND linked torvane-show)
endif()
install(CODE "
  set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
  file(MAKE_DIRECTORY \"\${folder}\")
  foreach(program ${linked})
    file(CREATE_LINK ../${home}/bin/\${program} \"\${folder}/\${program}\" SYMBOLIC)
  endforeach()")

# What a desktop shows of it
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(made ${PROJECT_BINARY_DIR}/packaging)
set(id app.torvane.p2p-helper)
string(TIMESTAMP TORVANE_RELEASE_DATE "%Y-%m-%d" UTC)  # as below
set(component app.torvane.p2p_helper)  # which may have no hyphen
configure_file(${packaging}/${component}.metainfo.xml.in ${made}/${component}.metainfo.xml @ONLY)
install(FILES ${packaging}/${id}.desktop DESTINATION share/applications)
if(TARGET torvane-show)
  install(FILES ${packaging}/app.torvane.show.desktop DESTINATION share/applications)
endif()
install(FILES ${made}/${component}.metainfo.xml DESTINATION share/metainfo)
install(FILES ${packaging}/${name}.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES ${packaging}/${name}-symbolic.svg DESTINATION share/icons/hicolor/symbolic/apps)

# Manual pages and Debian's documents, packed, and what shells complete; the date is the
# environment's SOURCE_DATE_EPOCH.
string(TIMESTAMP TORVANE_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(TORVANE_BUNDLE_PARENT ${CMAKE_INSTALL_PREFIX}/lib)
configure_file(${packaging}/${name}.1.in ${made}/${name}.1 @ONLY)
configure_file(${packaging}/changelog.in ${made}/changelog @ONLY)
add_custom_command(OUTPUT ${made}/torvane-ipad.1
  COMMAND ${TORVANE_PYTHON} ${packaging}/man-page $<TARGET_FILE:torvane-ipad> > torvane-ipad.1
  DEPENDS torvane-ipad ${packaging}/man-page ${packaging}/program_help.py WORKING_DIRECTORY ${made} VERBATIM)
foreach(shell bash zsh)
  add_custom_command(OUTPUT ${made}/completion.${shell}
    COMMAND ${TORVANE_PYTHON} ${packaging}/completions ${shell} $<TARGET_FILE:torvane-ipad>
      > completion.${shell}
    DEPENDS torvane-ipad ${packaging}/completions ${packaging}/program_help.py
    WORKING_DIRECTORY ${made} VERBATIM)
  list(APPEND texts ${made}/completion.${shell})
endforeach()
set(manuals ${name} torvane-ipad)
if(TARGET torvane-show)
  configure_file(${packaging}/torvane-show.1 ${made}/torvane-show.1 COPYONLY)
  list(APPEND manuals torvane-show)
endif()
list(TRANSFORM manuals APPEND .1)
foreach(text ${manuals} changelog)
  add_custom_command(OUTPUT ${made}/${text}.gz
    COMMAND ${TORVANE_GZIP} -9nkf ${text}
    DEPENDS ${made}/${text} WORKING_DIRECTORY ${made} VERBATIM)
  list(APPEND texts ${made}/${text}.gz)
endforeach()
add_custom_target(packed_texts ALL DEPENDS ${texts})
foreach(manual ${manuals})
  install(FILES ${made}/${manual}.gz DESTINATION share/man/man1)
endforeach()
install(FILES ${made}/completion.bash DESTINATION share/bash-completion/completions
  RENAME torvane-ipad)
install(FILES ${made}/completion.zsh DESTINATION share/zsh/vendor-completions
  RENAME _torvane-ipad)
install(FILES ${made}/changelog.gz ${packaging}/copyright DESTINATION share/doc/${name})
install(FILES ${packaging}/lintian-overrides DESTINATION share/lintian/overrides RENAME ${name})

# The package
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${name})
set(CPACK_PACKAGE_VENDOR "The Torvane developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "lets an iPad run the presentation on this computer")
set(CPACK_PACKAGE_DESCRIPTION
  "A small program in the status area through which an iPad runs the presentation
on this computer. Both have to be on the same network, where the iPad finds the
computer by itself. An iPad is approved once; from then on it connects by
itself. Pen strokes and a laser dot from the iPad appear over the slide show.
.
torvane-ipad stands in for an iPad on the command line. torvane-show shows a
PDF on the whole screen, where the iPad runs it.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${TORVANE_UPDATE_BASE})
# Libraries are found by what the programs are linked with. The engine runs on Python, and
# drives LibreOffice through python3-uno; without Avahi iPads do not find this computer, but can
# connect by its address.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS python3)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "avahi-daemon, libreoffice-impress, python3-uno")
include(CPack)
