#include "serialisation/CompressionSwitch.h"

#include <KOVAMappingServices/ZANEnvironment.h>

namespace {

// Read once, while the library is loaded; never again.
const bool kCompressionSwitch = ZANGetEnv("IPLX_ACTIVATE_MAPPING_COMPRESSION").has_value();

}  // namespace

bool kova::CompressionSwitchOn() noexcept { return kCompressionSwitch; }
