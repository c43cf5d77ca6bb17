# Process-level tests of the compression service and the compressed envelope.

set(KOVA_ENVELOPE_ENV ${CMAKE_CURRENT_SOURCE_DIR}/env)

# The prefix search against std::regex, and the load-time compression switch (set, unset, empty).
kova_env_test(kova_envelope_internals
  SOURCES ${KOVA_ENVELOPE_ENV}/EnvelopeInternals_test.cpp ${PROJECT_SOURCE_DIR}/serialisation/CompressionSwitch.cpp
  FILTER EnvelopePrefixMatch)
kova_env_test(kova_envelope_internals SET IPLX_ACTIVATE_MAPPING_COMPRESSION FILTER CompressionSwitchOn)
kova_env_test(kova_envelope_internals FILTER CompressionSwitchOff)
add_test(NAME kova_envelope_internals.CompressionSwitchEmpty
         COMMAND kova_envelope_internals --gtest_filter=CompressionSwitchEmpty.*)
set(kova_envelope_empty_switch "")
foreach(var IN LISTS KOVA_SWITCHES)
  if(var STREQUAL "IPLX_ACTIVATE_MAPPING_COMPRESSION")
    list(APPEND kova_envelope_empty_switch "${var}=set:")
  else()
    list(APPEND kova_envelope_empty_switch "${var}=unset:")
  endif()
endforeach()
set_tests_properties(kova_envelope_internals.CompressionSwitchEmpty
  PROPERTIES ENVIRONMENT_MODIFICATION "${kova_envelope_empty_switch}")

# Log lines, at version 12 and under the roll-back switch (version 11).
kova_env_test(kova_envelope_log SOURCES ${KOVA_ENVELOPE_ENV}/EnvelopeLog_test.cpp
  SET ActivateKOVALogger FILTER EnvelopeLog)
kova_env_test(kova_envelope_log SET ActivateKOVALogger RollBackMappingVersion FILTER EnvelopeLogRollBack)

# Allocation failures inside the compression library and of the base64 text.
kova_env_test(kova_envelope_allocation SOURCES ${KOVA_ENVELOPE_ENV}/EnvelopeAllocation_test.cpp
  SET ActivateKOVALogger FILTER EnvelopeAllocationFailure)
kova_env_test(kova_envelope_allocation FILTER EnvelopeBase64Failure)
target_link_libraries(kova_envelope_allocation PRIVATE PkgConfig::LIBDEFLATE)

# Exchange with zlib itself.
kova_env_test(kova_envelope_zlib SOURCES ${KOVA_ENVELOPE_ENV}/EnvelopeZlib_test.cpp)
target_link_libraries(kova_envelope_zlib PRIVATE ZLIB::ZLIB)

# Damaged streams: the service's and the envelope's answers against zlib's uncompress.
kova_env_test(kova_envelope_damage SOURCES ${KOVA_ENVELOPE_ENV}/EnvelopeDamage_test.cpp)
target_link_libraries(kova_envelope_damage PRIVATE ZLIB::ZLIB)
