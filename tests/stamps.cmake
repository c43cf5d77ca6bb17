# Stamp computation: the load-time switch is read once per process, so each environment gets its
# own process (one gtest suite each).
set(KOVA_STAMP_TEST_SOURCES
  ${CMAKE_CURRENT_SOURCE_DIR}/env/StampCompute_test.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/env/StampFirstUse_test.cpp)

kova_env_test(kova_stamp_tests SOURCES ${KOVA_STAMP_TEST_SOURCES} SET DONOTUSE_ENABLEKSSGEN FILTER StampEnabled)
kova_env_test(kova_stamp_tests SOURCES ${KOVA_STAMP_TEST_SOURCES} FILTER StampDisabled)
kova_env_test(kova_stamp_tests SOURCES ${KOVA_STAMP_TEST_SOURCES} SET ActivateKOVALogger FILTER StampDisabledLogged)
kova_env_test(kova_stamp_tests SOURCES ${KOVA_STAMP_TEST_SOURCES} SET ActivateKOVALogger DONOTUSE_ENABLEKSSGEN
              FILTER StampLogged)
kova_env_test(kova_stamp_tests SOURCES ${KOVA_STAMP_TEST_SOURCES} SET DONOTUSE_ENABLEKSSGEN FILTER StampFirstUse)
kova_env_test(kova_stamp_tests SOURCES ${KOVA_STAMP_TEST_SOURCES} FILTER DictionaryFirstUse)
