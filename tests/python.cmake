# The Python package kovamapping: its pytest suite (tests/python), one ctest entry per test file
# (python.<file>), run by the package's interpreter on the build tree's package, with
# DONOTUSE_ENABLEKSSGEN set (stamp computation is enabled when the library loads) and the other
# switches unset; and python.install, the package installed into a scratch prefix and imported
# from there. The tests that need the kova-mapping tool find it in KOVA_MAPPING_TOOL.
if(TARGET _kovamapping)
  set(kova_python_env "PYTHONPATH=set:${PROJECT_BINARY_DIR}/python" "PYTHONDONTWRITEBYTECODE=set:1")
  foreach(var IN LISTS KOVA_SWITCHES)
    if(var STREQUAL "DONOTUSE_ENABLEKSSGEN")
      list(APPEND kova_python_env "${var}=set:1")
    else()
      list(APPEND kova_python_env "${var}=unset:")
    endif()
  endforeach()
  if(TARGET kova-mapping)
    list(APPEND kova_python_env "KOVA_MAPPING_TOOL=set:$<TARGET_FILE:kova-mapping>")
  endif()
  list(APPEND kova_python_env "KOVA_EXAMPLES_DIR=set:${PROJECT_SOURCE_DIR}/examples/documents"
       "KOVA_TEST_DATA_DIR=set:${CMAKE_CURRENT_SOURCE_DIR}/data")

  file(GLOB KOVA_PYTHON_TEST_FILES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/python/test_*.py)
  foreach(file IN LISTS KOVA_PYTHON_TEST_FILES)
    get_filename_component(name ${file} NAME_WE)
    string(REGEX REPLACE "^test_" "" name ${name})
    add_test(NAME python.${name}
      COMMAND ${Python3_EXECUTABLE} -m pytest -q -p no:cacheprovider ${file}
      WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/python)
    set_tests_properties(python.${name} PROPERTIES ENVIRONMENT_MODIFICATION "${kova_python_env}" TIMEOUT 300)
  endforeach()

  add_test(NAME python.install
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/python_install_test.sh ${PROJECT_BINARY_DIR} ${Python3_EXECUTABLE})
  set_tests_properties(python.install PROPERTIES ENVIRONMENT_MODIFICATION "${KOVA_UNSET_SWITCHES};LD_LIBRARY_PATH=unset:;PYTHONPATH=unset:")
endif()
