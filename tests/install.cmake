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
