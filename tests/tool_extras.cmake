# What the kova-mapping tool brings to a shell besides itself, checked against the built tool:
# tool.completion, the bash completion (tests/tool/completion_test.sh: its commands, options and
# values are those of the tool's help); tool.manpage, the manual page rendered from
# docs/kova-mapping.md (tests/tool/manpage_test.sh: groff and man render it without a warning, and
# it documents every command and long option).
if(KOVA_BUILD_TOOLS)
  add_test(NAME tool.completion
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tool/completion_test.sh $<TARGET_FILE:kova-mapping>
            ${KOVA_BASH_COMPLETION})
  if(KOVA_MANPAGE)
    add_test(NAME tool.manpage
      COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tool/manpage_test.sh ${KOVA_MANPAGE} $<TARGET_FILE:kova-mapping>
              ${PROJECT_VERSION})
  endif()
  set_tests_properties(tool.completion PROPERTIES ENVIRONMENT_MODIFICATION "${KOVA_UNSET_SWITCHES}")
endif()
