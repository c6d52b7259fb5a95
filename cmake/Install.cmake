# What `cmake --install` puts where, and the packages CPack makes of it.
#
# Linux follows the FHS under the prefix: bin/ostrel, the data files in
# share/ostrel (the tool looks there when none lie beside it), the manual page,
# the bash completion, the README and copyright in share/doc/ostrel. Windows
# keeps the layout of the build folder: the DLL, the tool and the data files
# side by side at the top of the prefix.
#
# With OSTREL_SPLIT_DEBUG (the release presets) the artefacts are installed
# stripped, their debug information in a file of their own (found through
# the .gnu_debuglink section) in the component "debug": lib/debug/.build-id
# on Linux, where gdb looks, and beside the binary on Windows (the debug zip
# unpacks over the program folder, where the debug link is looked up first).
option(OSTREL_SPLIT_DEBUG "Install stripped artefacts with their debug information apart" OFF)
include(GNUInstallDirs)

if(WIN32)
  set(OSTREL_INSTALL_BINDIR .)
  set(OSTREL_INSTALL_DATADIR .)
else()
  set(OSTREL_INSTALL_BINDIR ${CMAKE_INSTALL_BINDIR})
  set(OSTREL_INSTALL_DATADIR ${CMAKE_INSTALL_DATADIR}/ostrel)
endif()

# ostrel_install_artefact(<target> <file name>): the target's file into the
# program folder, stripped and split when OSTREL_SPLIT_DEBUG is on.
function(ostrel_install_artefact target file)
  if(NOT OSTREL_SPLIT_DEBUG)
    install(TARGETS ${target} RUNTIME DESTINATION ${OSTREL_INSTALL_BINDIR} COMPONENT runtime
                              LIBRARY DESTINATION ${OSTREL_INSTALL_BINDIR} COMPONENT runtime)
    return()
  endif()
  set(dir ${CMAKE_BINARY_DIR}/stripped)
  file(MAKE_DIRECTORY ${dir})
  add_custom_command(OUTPUT ${dir}/${file} ${dir}/${file}.debug
    COMMAND ${CMAKE_COMMAND} -DOBJCOPY=${CMAKE_OBJCOPY} -DINPUT=$<TARGET_FILE:${target}>
            -DOUTPUT=${dir}/${file} -P ${PROJECT_SOURCE_DIR}/cmake/split_debug.cmake
    DEPENDS ${target} ${PROJECT_SOURCE_DIR}/cmake/split_debug.cmake
    COMMENT "Stripping ${file}, its debug information into ${file}.debug" VERBATIM)
  add_custom_target(${target}_stripped ALL DEPENDS ${dir}/${file})
  install(PROGRAMS ${dir}/${file} DESTINATION ${OSTREL_INSTALL_BINDIR} COMPONENT runtime)
  if(WIN32)
    install(FILES ${dir}/${file}.debug DESTINATION ${OSTREL_INSTALL_BINDIR} COMPONENT debug)
  else()
    install(DIRECTORY ${dir}/.build-id DESTINATION lib/debug COMPONENT debug)
  endif()
endfunction()

ostrel_install_artefact(ostrel ostrel${CMAKE_EXECUTABLE_SUFFIX})
if(TARGET Ostrel)
  ostrel_install_artefact(Ostrel Ostrel.dll)
endif()

file(GLOB OSTREL_DATA_FILES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/data/*.txt
     ${PROJECT_SOURCE_DIR}/data/*.ico ${PROJECT_SOURCE_DIR}/data/*.bmp)
list(FILTER OSTREL_DATA_FILES EXCLUDE REGEX "/CMakeLists.txt$")
install(FILES ${OSTREL_DATA_FILES} DESTINATION ${OSTREL_INSTALL_DATADIR} COMPONENT runtime)

if(NOT WIN32)
  # The manual page and the completion script come from the tool's own build;
  # installed when that build made them.
  set(OSTREL_MAN_PAGE ${CMAKE_BINARY_DIR}/share/man/man1/ostrel.1
      CACHE FILEPATH "The tool's manual page, made by the build")
  set(OSTREL_BASH_COMPLETION ${CMAKE_BINARY_DIR}/share/bash-completion/completions/ostrel
      CACHE FILEPATH "The tool's bash completion script, made by the build")
  # Debian ships manual pages compressed.
  install(CODE "
    set(page \"${OSTREL_MAN_PAGE}\")
    set(dest \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1\")
    if(EXISTS \"\${page}\")
      file(MAKE_DIRECTORY \"\${dest}\")
      execute_process(COMMAND gzip -9nc \"\${page}\" OUTPUT_FILE \"\${dest}/ostrel.1.gz\" COMMAND_ERROR_IS_FATAL ANY)
      message(STATUS \"Installing: \${dest}/ostrel.1.gz\")
    else()
      message(STATUS \"No manual page (\${page}): not installed\")
    endif()" COMPONENT runtime)
  install(FILES ${OSTREL_BASH_COMPLETION} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
          COMPONENT runtime OPTIONAL)

  set(docdir ${CMAKE_INSTALL_DATADIR}/doc/ostrel)
  install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/packaging/copyright
          DESTINATION ${docdir} COMPONENT runtime)
  # A native package's changelog, compressed as policy asks.
  set(changelog ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${CMAKE_BINARY_DIR}/packaging/changelog @ONLY)
  add_custom_command(OUTPUT ${changelog}
    COMMAND gzip -9nc ${CMAKE_BINARY_DIR}/packaging/changelog > ${changelog}
    DEPENDS ${CMAKE_BINARY_DIR}/packaging/changelog)
  add_custom_target(ostrel_changelog ALL DEPENDS ${changelog})
  install(FILES ${changelog} DESTINATION ${docdir} COMPONENT runtime)
  install(FILES ${changelog} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/ostrel-dbgsym COMPONENT debug)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/ostrel-dbgsym COMPONENT debug)

  include(${PROJECT_SOURCE_DIR}/packaging/deb.cmake)
endif()
