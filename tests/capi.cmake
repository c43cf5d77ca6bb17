# The C interface (libkovamapping_c, kova_mapping.h): C11 programs linked to the C library alone,
# one program per area, each test case its own ctest entry (capi.<area>.<case>); and a Python ctypes
# smoke test of the installed library.
if(TARGET kovamapping_c)
  set(KOVA_CAPI_TESTS ${CMAKE_CURRENT_SOURCE_DIR}/capi)
  set(KOVA_CAPI_AREAS library tables iterators objects stamps envelope log bad_input concurrency)

  # The switches unset, except DONOTUSE_ENABLEKSSGEN for the cases named compute_enabled_*.
  set(kova_capi_stamps_enabled "")
  foreach(var IN LISTS KOVA_SWITCHES)
    if(var STREQUAL "DONOTUSE_ENABLEKSSGEN")
      list(APPEND kova_capi_stamps_enabled "${var}=set:1")
    else()
      list(APPEND kova_capi_stamps_enabled "${var}=unset:")
    endif()
  endforeach()

  foreach(area IN LISTS KOVA_CAPI_AREAS)
    set(source ${KOVA_CAPI_TESTS}/${area}_test.c)
    set(target kova_capi_${area}_tests)
    add_executable(${target} ${source})
    set_target_properties(${target} PROPERTIES C_STANDARD 11 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
    target_compile_definitions(${target} PRIVATE
      KOVA_TEST_DOCUMENTS="${CMAKE_CURRENT_SOURCE_DIR}/data/documents"
      KOVA_EXAMPLE_DOCUMENTS="${PROJECT_SOURCE_DIR}/examples/documents"
      KOVA_EXPECTED_VERSION="${PROJECT_VERSION}")
    target_link_libraries(${target} PRIVATE KOVAMappingServices::kovamapping_c)

    # The cases are the lines "TEST(name)" of the source.
    file(STRINGS ${source} case_lines REGEX "^TEST\\([a-z0-9_]+\\)")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    foreach(line IN LISTS case_lines)
      string(REGEX REPLACE "^TEST\\(([a-z0-9_]+)\\).*" "\\1" case "${line}")
      set(name capi.${area}.${case})
      add_test(NAME ${name} COMMAND ${target} ${case})
      if(case MATCHES "^compute_enabled_")
        set_tests_properties(${name} PROPERTIES ENVIRONMENT_MODIFICATION "${kova_capi_stamps_enabled}")
      else()
        set_tests_properties(${name} PROPERTIES ENVIRONMENT_MODIFICATION "${KOVA_UNSET_SWITCHES}")
      endif()
      set_tests_properties(${name} PROPERTIES TIMEOUT 60)
    endforeach()
  endforeach()

  # Python loads the installed library by its SONAME. Not in the sanitizer builds: their runtimes
  # cannot be loaded into the interpreter after it has started.
  if(NOT KOVA_SANITIZE AND NOT KOVA_TSAN)
    add_test(NAME capi.ctypes_smoke
      COMMAND bash ${KOVA_CAPI_TESTS}/ctypes_smoke_test.sh ${PROJECT_BINARY_DIR} ${KOVA_CAPI_TESTS}/ctypes_smoke.py)
    set_tests_properties(capi.ctypes_smoke PROPERTIES ENVIRONMENT_MODIFICATION "${KOVA_UNSET_SWITCHES}")
  endif()
endif()

# The example C host runs through its tasks and ends with status 0.
if(TARGET c_host)
  add_test(NAME examples.c_host COMMAND c_host)
  set_tests_properties(examples.c_host PROPERTIES ENVIRONMENT_MODIFICATION "${KOVA_UNSET_SWITCHES}")
endif()
