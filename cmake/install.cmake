# What is installed where, in two components: the process, and the tools.

# install_compressed(FILE COMPONENT FOLDER [OPTION]): as FILE.gz, in the same bytes each time.
function(install_compressed file component folder)
  cmake_path(GET file FILENAME name)
  set(packed ${PROJECT_BINARY_DIR}/compressed/${component}/${name}.gz)
  add_custom_command(OUTPUT ${packed} COMMAND gzip -9nc ${file} > ${packed} DEPENDS ${file} VERBATIM)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/compressed/${component})
  add_custom_target(${component}_${name} ALL DEPENDS ${packed})
  install(FILES ${packed} DESTINATION ${folder} COMPONENT ${component} ${ARGN})
endfunction()

# The process is for its parent to start, and not for people's PATH.
install(TARGETS qmi_kesext_hook DESTINATION ${CMAKE_INSTALL_LIBEXECDIR} COMPONENT process)
install_compressed(${PROJECT_SOURCE_DIR}/docs/man/qmi_kesext_hook.8 process ${CMAKE_INSTALL_MANDIR}/man8)

if(NOT KESEXT_WITH_TOOLS)
  return()
endif()

install(TARGETS hookctl DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT hookctl)
install_compressed(${PROJECT_SOURCE_DIR}/docs/man/hookctl.1 hookctl ${CMAKE_INSTALL_MANDIR}/man1)
install(DIRECTORY scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/hookctl COMPONENT hookctl)
install(FILES docs/hookctl.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/hookctl COMPONENT hookctl)

# The completions are what hookctl prints, where it runs here.
if(CMAKE_CROSSCOMPILING)
  return()
endif()

# install_completion(SHELL COMPONENT FOLDER NAME [OPTION]): where that shell looks for it.
function(install_completion shell component folder name)
  install(FILES ${PROJECT_BINARY_DIR}/completion/${shell} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder}
    RENAME ${name} COMPONENT ${component} ${ARGN})
endfunction()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/completion)
foreach(shell bash zsh fish)
  set(script ${PROJECT_BINARY_DIR}/completion/${shell})
  add_custom_command(OUTPUT ${script} COMMAND hookctl completion ${shell} > ${script} DEPENDS hookctl VERBATIM)
  add_custom_target(completion_${shell} ALL DEPENDS ${script})
endforeach()
install_completion(bash hookctl bash-completion/completions hookctl)
install_completion(fish hookctl fish/vendor_completions.d hookctl.fish)
# Debian's zsh has a folder of its own for what packages bring.
install_completion(zsh hookctl zsh/vendor-completions _hookctl EXCLUDE_FROM_ALL)
install_completion(zsh unpacked zsh/site-functions _hookctl)
