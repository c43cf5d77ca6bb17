#include <KOVAMappingServices/KOVAMappingPrivateTable.h>

#include <KOVAMappingServices/ZANEnvironment.h>

namespace {

// The document version of this process, fixed when the library is loaded.
const std::int32_t kCurrentVersion = ZANGetEnv("RollBackMappingVersion").has_value() ? 11 : 12;

}  // namespace

std::int32_t KOVAMappingPrivateTable::GetCurrentVersion() { return kCurrentVersion; }
