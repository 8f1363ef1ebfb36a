# cpack -G DEB: libsit11, sit and libsit-dev. cpack -G TGZ: all of it for machines without packages.
set(CPACK_PACKAGE_NAME sit)
set(CPACK_PACKAGE_VENDOR "The sit developers")
set(CPACK_PACKAGE_CONTACT "The sit developers <sit@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Diagnostic collection for Linux machines and Pelloran products")
set(CPACK_PACKAGE_FILE_NAME sit-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL plugin host dev)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(soname ${PROJECT_VERSION_MAJOR})
set(version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
function(debian_package component name section summary text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
  # What every package has below /usr/share/doc.
  set(doc ${CMAKE_CURRENT_BINARY_DIR}/doc/${name})
  configure_file(copyright.in ${doc}/copyright @ONLY)
  configure_file(changelog.in ${doc}/changelog.Debian @ONLY)
  execute_process(COMMAND gzip -9nf ${doc}/changelog.Debian)
  configure_file(lintian-overrides.in ${doc}/${name} @ONLY)
  if(SIT_DEBIAN)
    install(FILES ${doc}/${name} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
      COMPONENT ${component})
    install(FILES ${doc}/copyright ${doc}/changelog.Debian.gz
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  endif()
endfunction()
option(SIT_DEBIAN "Lay out what is installed as Debian wants it" OFF)
debian_package(plugin libsit${soname} libs "diagnostic collection as a plug-in"
  "A shared library that writes what a support engineer needs to know about\na machine and the Pelloran products on it into reports. It needs libc alone.")
debian_package(host sit admin "collects diagnostic reports into one archive"
  "Runs the plug-in in worker processes, masks secrets, and packs reports,\nsummary and page into one archive that can be sent.")
debian_package(dev libsit-dev libdevel "headers of the diagnostic plug-in"
  "What a program needs that loads or links libsit.")
set(CPACK_DEBIAN_HOST_PACKAGE_DEPENDS "libsit${soname} (= ${version})")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libsit${soname} (= ${version})")

# Rules are there to be changed: an upgrade asks before it replaces them.
file(GLOB rules RELATIVE ${PROJECT_SOURCE_DIR}/host/data ${PROJECT_SOURCE_DIR}/host/data/*.yaml)
list(TRANSFORM rules PREPEND /etc/sit/)
list(JOIN rules "\n" rules)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/conffiles "${rules}\n")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/shlibs
  "libsit ${soname} libsit${soname} (>= ${PROJECT_VERSION})\n")
file(CHMOD ${CMAKE_CURRENT_BINARY_DIR}/conffiles ${CMAKE_CURRENT_BINARY_DIR}/triggers
  ${CMAKE_CURRENT_BINARY_DIR}/shlibs
  PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set(CPACK_DEBIAN_HOST_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/conffiles)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_BINARY_DIR}/triggers ${CMAKE_CURRENT_BINARY_DIR}/shlibs)
if(SIT_DEBIAN)
  set(CPACK_SET_DESTDIR ON)
  set(CPACK_INSTALL_PREFIX /usr)
endif()
include(CPack)
