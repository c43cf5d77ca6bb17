# Mapping documents read with the diagnostic log on, their lines compared whole.
kova_env_test(kova_document_reader_tests SOURCES env/DocumentReader_test.cpp SET ActivateKOVALogger)
