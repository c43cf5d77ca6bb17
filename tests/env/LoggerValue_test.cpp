// Any value of "ActivateKOVALogger" switches the log on, even "0", "false" or the empty text.
#include <KOVAMappingServices/KOVALogger.h>

#include <gtest/gtest.h>

#include <cstdlib>

TEST(LoggerSwitchValue, AnyValueSwitchesTheLogOn) {
  const char* value = std::getenv("ActivateKOVALogger");
  ASSERT_NE(value, nullptr);
  EXPECT_TRUE(KOVALogger::IsActive()) << "value: '" << value << "'";
}
