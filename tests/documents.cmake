# Mapping documents read with the diagnostic log on, their lines compared whole.
kova_env_test(kova_document_reader_tests SOURCES env/DocumentReader_test.cpp SET ActivateKOVALogger)
kova_env_test(kova_document_writer_tests SOURCES env/DocumentWriterSwitches_test.cpp
              FILTER WriterRolledBack SET RollBackMappingVersion)
kova_env_test(kova_document_writer_tests SOURCES env/DocumentWriterSwitches_test.cpp
              FILTER WriterRolledBackAndCompressed SET RollBackMappingVersion IPLX_ACTIVATE_MAPPING_COMPRESSION)
kova_env_test(kova_document_writer_tests SOURCES env/DocumentWriterSwitches_test.cpp
              FILTER WriterCompressed SET IPLX_ACTIVATE_MAPPING_COMPRESSION)
# The document reader against a reader written only with the JSON object getters, log on (the
# input and the table printed) and log off.
kova_env_test(kova_reader_differential_tests SOURCES env/ReaderDifferential_test.cpp SET ActivateKOVALogger)
kova_env_test(kova_reader_differential_tests SOURCES env/ReaderDifferential_test.cpp
              AS kova_reader_differential_tests.LogOff)
target_link_libraries(kova_document_writer_tests PRIVATE KOVAMappingServices::generator)
target_link_libraries(kova_reader_differential_tests PRIVATE KOVAMappingServices::generator)

# Hostile documents: truncated, deeply nested, huge, ill-formed, lying envelopes.
find_package(ZLIB REQUIRED)
kova_env_test(kova_hostile_input_tests SOURCES env/HostileInput_test.cpp)
target_link_libraries(kova_hostile_input_tests PRIVATE ZLIB::ZLIB)
