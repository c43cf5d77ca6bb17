// The logger switch is read from the environment once, at the first IsActive call.
#include <KOVAMappingServices/KOVALogger.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(LoggerSwitchUnset, StaysOffEvenWhenTheVariableIsSetLater) {
  ASSERT_EQ(std::getenv("ActivateKOVALogger"), nullptr);
  EXPECT_FALSE(KOVALogger::IsActive());
  ASSERT_EQ(setenv("ActivateKOVALogger", "1", 1), 0);
  EXPECT_FALSE(KOVALogger::IsActive());
}

TEST(LoggerSwitchSet, IsOnAndStaysOnWhenTheVariableIsRemovedLater) {
  ASSERT_NE(std::getenv("ActivateKOVALogger"), nullptr);
  EXPECT_TRUE(KOVALogger::IsActive());
  ASSERT_EQ(unsetenv("ActivateKOVALogger"), 0);
  EXPECT_TRUE(KOVALogger::IsActive());
}

}  // namespace
