# The kova-mapping tool: its parts, the built tool run as users run it, and the installed tool.
if(KOVA_BUILD_TOOLS)
  set(KOVA_TOOL_TESTS ${CMAKE_CURRENT_SOURCE_DIR}/tool)

  kova_env_test(kova_tool_parts
    SOURCES ${KOVA_TOOL_TESTS}/ToolText_test.cpp ${KOVA_TOOL_TESTS}/ToolGenerator_test.cpp)
  target_link_libraries(kova_tool_parts PRIVATE kova_mapping_tool KOVAMappingServices::generator)
  kova_env_test(kova_tool_documents SOURCES ${KOVA_TOOL_TESTS}/ToolDocuments_test.cpp FILTER ToolDocumentsLogOff)
  target_link_libraries(kova_tool_documents PRIVATE kova_mapping_tool)
  kova_env_test(kova_tool_documents SOURCES ${KOVA_TOOL_TESTS}/ToolDocuments_test.cpp FILTER ToolDocumentsLogOn
                SET ActivateKOVALogger)

  # Each tests/tool/cases/*.sh runs the built tool: exit statuses, exact output lines, standard
  # input and -o. The switches are unset unless a case sets them for one command.
  file(GLOB KOVA_TOOL_CASES CONFIGURE_DEPENDS ${KOVA_TOOL_TESTS}/cases/*.sh)
  foreach(case IN LISTS KOVA_TOOL_CASES)
    get_filename_component(name ${case} NAME_WE)
    add_test(NAME tool.${name}
      COMMAND bash ${KOVA_TOOL_TESTS}/run_case.sh $<TARGET_FILE:kova-mapping> ${case} ${PROJECT_SOURCE_DIR})
    set_tests_properties(tool.${name} PROPERTIES ENVIRONMENT_MODIFICATION "${KOVA_UNSET_SWITCHES}")
  endforeach()

  # The tool installed into a prefix of the build tree, as users run it, with the schemas, the
  # completion and the manual beside it (the fixture installs once per test run):
  # tests/tool/installed/*.sh are cases of the kind above (tool.installed.<case>), and
  # tests/tool/installed/test_*.py pytest files (tool.installed.<file>) that parse the tool's
  # machine-readable output; both find the tool in KOVA_MAPPING_TOOL.
  set(KOVA_TEST_PREFIX ${PROJECT_BINARY_DIR}/test-prefix)
  add_test(NAME tool.installed_prefix COMMAND ${CMAKE_COMMAND} --install ${PROJECT_BINARY_DIR} --prefix ${KOVA_TEST_PREFIX})
  set_tests_properties(tool.installed_prefix PROPERTIES FIXTURES_SETUP kova_installed_tool)
  set(kova_installed_env ${KOVA_UNSET_SWITCHES} "KOVA_TEST_PREFIX=set:${KOVA_TEST_PREFIX}"
      "KOVA_MAPPING_TOOL=set:${KOVA_TEST_PREFIX}/bin/kova-mapping" "KOVA_SOURCE_DIR=set:${PROJECT_SOURCE_DIR}"
      "PYTHONDONTWRITEBYTECODE=set:1")
  if(KOVA_SANITIZE OR KOVA_TSAN)
    list(APPEND kova_installed_env "KOVA_SANITIZED=set:1")
  endif()
  file(GLOB KOVA_INSTALLED_TOOL_CASES CONFIGURE_DEPENDS ${KOVA_TOOL_TESTS}/installed/*.sh)
  foreach(case IN LISTS KOVA_INSTALLED_TOOL_CASES)
    get_filename_component(name ${case} NAME_WE)
    add_test(NAME tool.installed.${name}
      COMMAND bash ${KOVA_TOOL_TESTS}/run_case.sh ${KOVA_TEST_PREFIX}/bin/kova-mapping ${case} ${PROJECT_SOURCE_DIR})
    set_tests_properties(tool.installed.${name} PROPERTIES ENVIRONMENT_MODIFICATION "${kova_installed_env}"
      FIXTURES_REQUIRED kova_installed_tool)
  endforeach()
  find_package(Python3 COMPONENTS Interpreter QUIET)
  file(GLOB KOVA_INSTALLED_TOOL_PYTESTS CONFIGURE_DEPENDS ${KOVA_TOOL_TESTS}/installed/test_*.py)
  foreach(file IN LISTS KOVA_INSTALLED_TOOL_PYTESTS)
    get_filename_component(name ${file} NAME_WE)
    string(REGEX REPLACE "^test_" "" name ${name})
    add_test(NAME tool.installed.${name}
      COMMAND ${Python3_EXECUTABLE} -m pytest -q -p no:cacheprovider ${file}
      WORKING_DIRECTORY ${KOVA_TOOL_TESTS}/installed)
    set_tests_properties(tool.installed.${name} PROPERTIES ENVIRONMENT_MODIFICATION "${kova_installed_env}"
      FIXTURES_REQUIRED kova_installed_tool TIMEOUT 300)
  endforeach()

  # The tool installed with the library into a temporary prefix, and the pkg-config file.
  set(KOVA_CONSUMER_FLAGS "")
  if(KOVA_SANITIZE)
    set(KOVA_CONSUMER_FLAGS "-fsanitize=address,undefined")
  endif()
  add_test(NAME tool.install
    COMMAND bash ${KOVA_TOOL_TESTS}/install_test.sh ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR} "${KOVA_CONSUMER_FLAGS}")
  set_tests_properties(tool.install PROPERTIES ENVIRONMENT_MODIFICATION "${KOVA_UNSET_SWITCHES}")
endif()
