# Packaging: exported symbols, and a consumer project built against the installed package.
add_test(NAME install.exports
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/exports_test.sh $<TARGET_FILE:KOVAMappingServices>)
set(KOVA_INSTALL_CONSUMER_FLAGS "")
if(KOVA_SANITIZE)
  set(KOVA_INSTALL_CONSUMER_FLAGS "-fsanitize=address,undefined")
endif()
add_test(NAME install.consumer
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/consumer_test.sh ${PROJECT_BINARY_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/install/consumer
          "${KOVA_INSTALL_CONSUMER_FLAGS}")
