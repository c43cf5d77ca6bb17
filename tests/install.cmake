# Packaging: exported symbols, and a consumer project built against the installed package.
# install.exports: the shared library exports its public API and nothing else (the fuzz preset,
# which builds it static, has no tests).
add_test(NAME install.exports
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/exports_test.sh $<TARGET_FILE:KOVAMappingServices>
          ${PROJECT_SOURCE_DIR}/include/KOVAMappingServices ${PROJECT_SOURCE_DIR}/cmake/KOVAMappingServices.map)
# install.exports_c: the C library exports kova_* functions only, every one its header declares.
# Its directory may be added after this one, so the test is added once the whole project is read.
function(kova_add_exports_c_test)
  if(TARGET kovamapping_c)
    add_test(NAME install.exports_c
      COMMAND ${PROJECT_SOURCE_DIR}/tests/install/exports_test.sh $<TARGET_FILE:kovamapping_c>
              ${PROJECT_SOURCE_DIR}/include/KOVAMappingServices/kova_mapping.h)
  endif()
endfunction()
cmake_language(DEFER DIRECTORY ${PROJECT_SOURCE_DIR} CALL kova_add_exports_c_test)
set(KOVA_CONSUMER_FLAGS "")
if(KOVA_SANITIZE)
  set(KOVA_CONSUMER_FLAGS "-fsanitize=address,undefined")
endif()
add_test(NAME install.consumer
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/consumer_test.sh ${PROJECT_BINARY_DIR}
          ${CMAKE_CURRENT_SOURCE_DIR}/install/consumer "${KOVA_CONSUMER_FLAGS}")
add_test(NAME install.readme_example
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/readme_example_test.sh ${PROJECT_SOURCE_DIR}/README.md
          ${PROJECT_SOURCE_DIR}/include $<TARGET_FILE:KOVAMappingServices> ${CMAKE_CXX_COMPILER} "${KOVA_CONSUMER_FLAGS}")

# install.debian_packages: `cpack -G DEB` in this build tree makes the Debian packages
# (cmake/Packaging.cmake); tests/install/debian_packages_test.sh checks their fields, contents and
# dependencies and unpacks each into a scratch root, where the tool runs, the Python package
# imports and consumers build against the development files. Needs dpkg-deb and dpkg-shlibdeps
# (dpkg-dev); not in the sanitizer builds, whose libraries no one packages. Added once the whole
# project is read, as it looks at the targets of every directory (the switches to unset are passed
# as they are now: the call runs in the top directory's scope).
function(kova_add_debian_packages_test unset_switches)
  find_program(KOVA_DPKG_DEB dpkg-deb)
  find_program(KOVA_DPKG_SHLIBDEPS dpkg-shlibdeps)
  if(NOT KOVA_DPKG_DEB OR NOT KOVA_DPKG_SHLIBDEPS OR KOVA_SANITIZE OR KOVA_TSAN OR KOVA_BUILD_FUZZERS)
    return()
  endif()
  set(with_c_api 0)
  set(with_tool 0)
  set(with_manpage 0)
  set(python "")
  if(TARGET kovamapping_c)
    set(with_c_api 1)
  endif()
  if(TARGET kova-mapping)
    set(with_tool 1)
  endif()
  if(KOVA_MANPAGE)
    set(with_manpage 1)
  endif()
  if(TARGET _kovamapping)
    set(python ${Python3_EXECUTABLE})
  endif()
  add_test(NAME install.debian_packages
    COMMAND ${PROJECT_SOURCE_DIR}/tests/install/debian_packages_test.sh ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
  set_tests_properties(install.debian_packages PROPERTIES TIMEOUT 600
    ENVIRONMENT_MODIFICATION "${unset_switches};LD_LIBRARY_PATH=unset:;PYTHONPATH=unset:"
    ENVIRONMENT "KOVA_VERSION=${PROJECT_VERSION};KOVA_LIBDIR=${CMAKE_INSTALL_LIBDIR};KOVA_DOCDIR=${CMAKE_INSTALL_DOCDIR};KOVA_DATADIR=${CMAKE_INSTALL_DATADIR};KOVA_MANDIR=${CMAKE_INSTALL_MANDIR};KOVA_PYTHON_DIR=${KOVA_PYTHON_INSTALL_DIR};KOVA_WITH_C_API=${with_c_api};KOVA_WITH_TOOL=${with_tool};KOVA_WITH_MANPAGE=${with_manpage};KOVA_PYTHON=${python};KOVA_CMAKE=${CMAKE_COMMAND};KOVA_CPACK=${CMAKE_CPACK_COMMAND}")
endfunction()
cmake_language(EVAL CODE
  "cmake_language(DEFER DIRECTORY [[${PROJECT_SOURCE_DIR}]] CALL kova_add_debian_packages_test [[${KOVA_UNSET_SWITCHES}]])")
