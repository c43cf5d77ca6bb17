// Environment lookup of the platform.
//
// Returns a copy of the value. Safe from several threads at once as long as nothing changes the
// environment (setenv, putenv) meanwhile.
#ifndef KOVAMAPPINGSERVICES_ZANENVIRONMENT_H_
#define KOVAMAPPINGSERVICES_ZANENVIRONMENT_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <optional>

// The value of the process environment variable name, or nothing when it does not exist.
// A variable that exists is "set", whatever its value (the empty text included).
KOVA_EXPORT std::optional<ZANUnicodeString> ZANGetEnv(const char* name);

#endif  // KOVAMAPPINGSERVICES_ZANENVIRONMENT_H_
