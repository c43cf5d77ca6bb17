#include <KOVAMappingServices/ZANBaseUnknown.h>

ZANComponent::~ZANComponent() = default;
