# Process-level tests of the switches read once per process.
kova_env_test(kova_logger_switch_tests SOURCES env/LoggerSwitch_test.cpp FILTER LoggerSwitchUnset)
kova_env_test(kova_logger_switch_tests SOURCES env/LoggerSwitch_test.cpp FILTER LoggerSwitchSet SET ActivateKOVALogger)
kova_env_test(kova_current_version_tests SOURCES env/CurrentVersion_test.cpp FILTER CurrentVersionDefault)
kova_env_test(kova_current_version_tests SOURCES env/CurrentVersion_test.cpp FILTER CurrentVersionRolledBack
              SET RollBackMappingVersion)

# Values that read as "off" in other conventions still switch the log on.
add_executable(kova_logger_value_tests env/LoggerValue_test.cpp)
target_link_libraries(kova_logger_value_tests PRIVATE kova_test_support GTest::gtest_main)
foreach(value IN ITEMS "0" "false" "")
  set(name "kova_logger_value_tests.value_${value}")
  add_test(NAME "${name}" COMMAND kova_logger_value_tests)
  set_tests_properties("${name}" PROPERTIES ENVIRONMENT_MODIFICATION "ActivateKOVALogger=set:${value}")
endforeach()
# Captures of the diagnostic lines while the environment switch is set.
kova_env_test(kova_log_capture_switch_tests SOURCES env/LogCaptureSwitch_test.cpp
              SET ActivateKOVALogger DONOTUSE_ENABLEKSSGEN)
