# What is installed where, and the Debian packages that are made of it: one of the process, one of the tools.

set(process_package qmi-kesext-hook)
set(hookctl_package hookctl)
set(KESEXT_MAINTAINER "qmi_kesext_hook maintainers <maintainers@kesext.example.com>" CACHE STRING
  "Who is to be asked about the packages")

# compress(FILE NAME): FILE as build/NAME.gz, in the same bytes each time.
function(compress file name)
  set(packed ${PROJECT_BINARY_DIR}/${name}.gz)
  add_custom_command(OUTPUT ${packed} COMMAND gzip -9nc ${file} > ${packed} DEPENDS ${file} VERBATIM)
  set_property(GLOBAL APPEND PROPERTY KESEXT_INSTALLED_FILES ${packed})
endfunction()

# package_papers(COMPONENT): what Debian asks of every package.
function(package_papers component)
  set(package ${${component}_package})
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/changelog.in ${PROJECT_BINARY_DIR}/${package}/changelog @ONLY)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/copyright.in ${PROJECT_BINARY_DIR}/${package}/copyright @ONLY)
  compress(${PROJECT_BINARY_DIR}/${package}/changelog ${package}/changelog)
  install(FILES ${PROJECT_BINARY_DIR}/${package}/changelog.gz ${PROJECT_BINARY_DIR}/${package}/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

# The process is for its parent to start, and not for people's PATH.
install(TARGETS qmi_kesext_hook DESTINATION ${CMAKE_INSTALL_LIBEXECDIR} COMPONENT process)
compress(${PROJECT_SOURCE_DIR}/docs/man/qmi_kesext_hook.8 qmi_kesext_hook.8)
install(FILES ${PROJECT_BINARY_DIR}/qmi_kesext_hook.8.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT process)
package_papers(process)

if(KESEXT_WITH_TOOLS)
  install(TARGETS hookctl DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT hookctl)
  compress(${PROJECT_SOURCE_DIR}/docs/man/hookctl.1 hookctl.1)
  install(FILES ${PROJECT_BINARY_DIR}/hookctl.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT hookctl)
  install(DIRECTORY scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/hookctl COMPONENT hookctl)
  install(FILES docs/hookctl.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/hookctl COMPONENT hookctl)
  package_papers(hookctl)

  foreach(shell bash zsh fish)
    set(script ${PROJECT_BINARY_DIR}/completion/${shell})
    add_custom_command(OUTPUT ${script} COMMAND hookctl completion ${shell} > ${script} DEPENDS hookctl VERBATIM)
    set_property(GLOBAL APPEND PROPERTY KESEXT_INSTALLED_FILES ${script})
  endforeach()
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/completion)
  # install_completion(SHELL FOLDER NAME [OPTION]): where that shell looks for it.
  function(install_completion shell folder name)
    install(FILES ${PROJECT_BINARY_DIR}/completion/${shell} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder}
      RENAME ${name} COMPONENT hookctl ${ARGN})
  endfunction()
  install_completion(bash bash-completion/completions hookctl)
  install_completion(fish fish/vendor_completions.d hookctl.fish)
  # Debian's zsh has a folder of its own for packages.
  install_completion(zsh zsh/vendor-completions _hookctl EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/completion/zsh DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    RENAME _hookctl COMPONENT elsewhere)
endif()

get_property(files GLOBAL PROPERTY KESEXT_INSTALLED_FILES)
add_custom_target(installed_files ALL DEPENDS ${files})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_VENDOR "")
set(CPACK_PACKAGE_CONTACT ${KESEXT_MAINTAINER})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL process)
if(KESEXT_WITH_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL hookctl)
endif()
# Whatever the umask of who packs.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PROCESS_PACKAGE_NAME ${process_package})
set(CPACK_DEBIAN_PROCESS_DESCRIPTION "serves OEM hook requests with the help of a modem
A handset's radio interface layer starts this process as its child. It takes
requests over a pipe, asks the modem, and answers each with one record.

This build has a workstation's stand-in for the handset's libraries, which
connects it to a simulated modem on a socket.")
set(CPACK_DEBIAN_HOOKCTL_PACKAGE_NAME ${hookctl_package})
set(CPACK_DEBIAN_HOOKCTL_PACKAGE_DEPENDS "${process_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_HOOKCTL_DESCRIPTION "bench tool for qmi_kesext_hook
Starts qmi_kesext_hook beside a simulated modem, sends it requests by name,
shows what comes back in words, and makes the modem misbehave. Plays scenarios
and holds each step against what is expected; reads records and logs.")
include(CPack)
