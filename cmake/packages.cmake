# The Debian packages: one of the process, one of the tools.
set(KESEXT_MAINTAINER "qmi_kesext_hook maintainers <maintainers@kesext.example.com>" CACHE STRING
  "Who is to be asked about the packages")

set(CPACK_COMPONENTS_ALL process)
if(KESEXT_WITH_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL hookctl)
endif()
set(CPACK_DEBIAN_PROCESS_PACKAGE_NAME qmi-kesext-hook)
set(CPACK_DEBIAN_PROCESS_DESCRIPTION "serves OEM hook requests with the help of a modem
A handset's radio interface layer starts this process as its child. It takes
requests over a pipe, asks the modem, and answers each with one record.

This build has a workstation's stand-in for the handset's libraries, which
connects it to a simulated modem on a socket.")
set(CPACK_DEBIAN_HOOKCTL_PACKAGE_NAME hookctl)
set(CPACK_DEBIAN_HOOKCTL_PACKAGE_DEPENDS "${CPACK_DEBIAN_PROCESS_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_HOOKCTL_DESCRIPTION "bench tool for qmi_kesext_hook
Starts qmi_kesext_hook beside a simulated modem, sends it requests by name,
shows what comes back in words, and makes the modem misbehave. Plays scenarios
and holds each step against what is expected; reads records and logs.")

# What Debian asks of every package. With SOURCE_DATE_EPOCH set, packing again gives the same bytes.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${package})
  foreach(paper changelog copyright)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${paper}.in ${PROJECT_BINARY_DIR}/${package}/${paper} @ONLY)
  endforeach()
  install(FILES ${PROJECT_BINARY_DIR}/${package}/copyright DESTINATION ${folder} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install_compressed(${PROJECT_BINARY_DIR}/${package}/changelog ${component} ${folder} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_CONTACT ${KESEXT_MAINTAINER})
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/open_folders.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
include(CPack)
