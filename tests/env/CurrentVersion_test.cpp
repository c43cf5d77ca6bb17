// The current document version is fixed when the library is loaded.
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

int NewTableVersion() {
  KOVAMappingTable table;
  return KOVAPrivateAccess::GetPrivate(table)->GetVersion();
}

TEST(CurrentVersionDefault, IsTwelve) {
  EXPECT_EQ(KOVAMappingPrivateTable::GetCurrentVersion(), 12);
  EXPECT_EQ(NewTableVersion(), 12);
  // Setting the variable after load changes nothing.
  ASSERT_EQ(setenv("RollBackMappingVersion", "1", 1), 0);
  EXPECT_EQ(NewTableVersion(), 12);
}

TEST(CurrentVersionRolledBack, IsElevenWhenRollBackMappingVersionWasSetAtLoad) {
  EXPECT_EQ(KOVAMappingPrivateTable::GetCurrentVersion(), 11);
  EXPECT_EQ(NewTableVersion(), 11);
  ASSERT_EQ(unsetenv("RollBackMappingVersion"), 0);
  EXPECT_EQ(NewTableVersion(), 11);
}

}  // namespace
