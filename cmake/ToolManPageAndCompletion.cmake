# The kova-mapping tool's manual page and bash completion, and its Markdown manual and example
# documents, installed with the tool (install component "tool", the kova-mapping Debian package).
#
# Manual page: docs/kova-mapping.md rendered by pandoc at build time into
# <build>/man/man1/kova-mapping.1 (so `MANPATH=<build>/man man kova-mapping` reads it), shaped for
# man(7) by cmake/ManPage.lua; installed as share/man/man1/kova-mapping.1. KOVA_BUILD_MANPAGE is on
# when pandoc is found.
find_program(KOVA_PANDOC_EXECUTABLE pandoc DOC "pandoc, which renders the kova-mapping(1) manual page")
set(KOVA_MANPAGE_DEFAULT OFF)
if(KOVA_PANDOC_EXECUTABLE)
  set(KOVA_MANPAGE_DEFAULT ON)
endif()
option(KOVA_BUILD_MANPAGE "Render the kova-mapping(1) manual page from docs/kova-mapping.md (needs pandoc)"
       ${KOVA_MANPAGE_DEFAULT})
set(KOVA_MANPAGE "")
if(KOVA_BUILD_MANPAGE)
  if(NOT KOVA_PANDOC_EXECUTABLE)
    message(FATAL_ERROR "KOVA_BUILD_MANPAGE is on but pandoc is not found: install it (apt-get install pandoc, "
                        "or scripts/setup-debian.sh) or configure with -DKOVA_BUILD_MANPAGE=OFF")
  endif()
  set(KOVA_MANPAGE ${PROJECT_BINARY_DIR}/man/man1/kova-mapping.1)
  add_custom_command(OUTPUT ${KOVA_MANPAGE}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man/man1
    COMMAND ${CMAKE_COMMAND}
            -DPANDOC=${KOVA_PANDOC_EXECUTABLE}
            -DINPUT=${PROJECT_SOURCE_DIR}/docs/kova-mapping.md
            -DOUTPUT=${KOVA_MANPAGE}
            -DFILTER=${PROJECT_SOURCE_DIR}/cmake/ManPage.lua
            -DTITLE=kova-mapping -DSECTION=1
            "-DFOOTER=KOVAMappingServices ${PROJECT_VERSION}" "-DHEADER=User Commands"
            -P ${PROJECT_SOURCE_DIR}/cmake/ManPageRender.cmake
    DEPENDS ${PROJECT_SOURCE_DIR}/docs/kova-mapping.md ${PROJECT_SOURCE_DIR}/cmake/ManPage.lua
            ${PROJECT_SOURCE_DIR}/cmake/ManPageRender.cmake
    COMMENT "Rendering the manual page kova-mapping.1"
    VERBATIM)
  add_custom_target(kova-mapping-manpage ALL DEPENDS ${KOVA_MANPAGE})
  install(FILES ${KOVA_MANPAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
elseif(KOVA_PANDOC_EXECUTABLE)
  message(STATUS "kova-mapping(1) manual page: not built (KOVA_BUILD_MANPAGE is off)")
else()
  message(STATUS "kova-mapping(1) manual page: not built, pandoc is not found "
                 "(apt-get install pandoc, or scripts/setup-debian.sh; then -DKOVA_BUILD_MANPAGE=ON)")
endif()

# Bash completion: bash-completion loads share/bash-completion/completions/kova-mapping the first
# time kova-mapping is completed.
set(KOVA_BASH_COMPLETION ${PROJECT_SOURCE_DIR}/tools/kova-mapping/completion/kova-mapping.bash)
install(FILES ${KOVA_BASH_COMPLETION} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME kova-mapping COMPONENT tool)

# The Markdown manual and the example documents it runs on.
install(FILES ${PROJECT_SOURCE_DIR}/docs/kova-mapping.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/documents/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
        COMPONENT tool)
