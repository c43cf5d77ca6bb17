# The exceptions that may leave the library, and many threads at once. The concurrency tests are
# also the ones the ThreadSanitizer build (tsan preset) runs.
kova_env_test(kova_host_exceptions_tests SOURCES env/HostExceptions_test.cpp
              SET ActivateKOVALogger DONOTUSE_ENABLEKSSGEN)
kova_env_test(kova_concurrency_tests SOURCES env/Concurrency_test.cpp
              SET ActivateKOVALogger DONOTUSE_ENABLEKSSGEN FILTER ConcurrentFirstUse)
kova_env_test(kova_concurrency_tests SOURCES env/Concurrency_test.cpp SET DONOTUSE_ENABLEKSSGEN FILTER ConcurrentWork)
target_link_libraries(kova_concurrency_tests PRIVATE KOVAMappingServices::generator)
