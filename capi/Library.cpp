// The library itself: its version, the memory it hands out, the last messages.
#include <KOVAMappingServices/kova_mapping.h>

#include <cstdlib>

#include "Boundary.h"

extern "C" {

const char* kova_version(void) { return KOVA_C_VERSION; }

void kova_free(void* memory) { std::free(memory); }

const char* kova_last_messages(void) { return kova::capi::LastMessages(); }

}  // extern "C"
