#include <KOVAMappingServices/KOVALogger.h>

#include <KOVAMappingServices/ZANEnvironment.h>

#include <iostream>
#include <string>

bool KOVALogger::IsActive() {
  // Read once, at the first call, under the thread-safe initialisation of a local static.
  static const bool active = ZANGetEnv("ActivateKOVALogger").has_value();
  return active;
}

void KOVALogger::log(ZANUnicodeString message, ZANUnicodeString context) {
  std::string line;
  line.reserve(12 + context.GetLengthInByte() + 2 + message.GetLengthInByte() + 1);
  line.append("[PrdKOVALog]");
  if (!context.IsEmpty()) {
    line.push_back('[');
    line.append(context.View());
    line.push_back(']');
  }
  line.append(message.View());
  line.push_back('\n');
  std::cout.write(line.data(), static_cast<std::streamsize>(line.size()));
  std::cout.flush();
}
