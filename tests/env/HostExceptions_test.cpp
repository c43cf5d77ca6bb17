// The exceptions a host must expect from the library, one test each: the decimal conversion
// failures of an envelope's size field (std::out_of_range, std::invalid_argument), the platform's
// null-handle error (ZANNullVarError) from the stamp computation, and allocation failure
// (std::bad_alloc). Runs with "DONOTUSE_ENABLEKSSGEN" and "ActivateKOVALogger" set.
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnowledge.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "tests/env/StampObjects.h"
#include "tests/support/StdoutCapture.h"

namespace {

TEST(HostExceptions, SwitchesAreAsRegistered) { ASSERT_TRUE(KOVALogger::IsActive()); }

TEST(HostExceptions, SizeBeyond32BitsRaisesOutOfRangeAndKeepsTheText) {
  for (const std::string input :
       {"V12:2147483648:eJwDAAAAAAE=", "V12:99999999999999999999999999999:abc", "{\"x\":\"V12:4294967296:\"}"}) {
    ZANUnicodeString text(input);
    EXPECT_THROW(KOVAMappingParser::TryDecompressMT(text), std::out_of_range) << input;
    EXPECT_EQ(text.ConvertToChar(), input);
  }
}

TEST(HostExceptions, SizeWithoutDigitsRaisesInvalidArgumentAndKeepsTheText) {
  // The size is read from position 4 of the prefix: a one-digit version and a one-digit size
  // leave no digits there.
  for (const std::string input : {"V9:1:abcd", "{\"V1:2:\":0}"}) {
    ZANUnicodeString text(input);
    EXPECT_THROW(KOVAMappingParser::TryDecompressMT(text), std::invalid_argument) << input;
    EXPECT_EQ(text.ConvertToChar(), input);
  }
}

TEST(HostExceptions, ConversionFailuresLeaveTheReaderBeforeTheTableIsTouched) {
  const ZANBaseUnknown owner(std::make_shared<ZANComponent>());
  KOVAMappingTable table;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(-42);
  kova::test::StdoutCapture capture;
  EXPECT_THROW(
      KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString("V12:2147483648:eJwDAAAAAAE="), owner, table),
      std::out_of_range);
  EXPECT_THROW(KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString("V9:1:abcd"), owner, table),
               std::invalid_argument);
  EXPECT_EQ(capture.Stop(), "");
  EXPECT_FALSE(table.GetOwner() == owner);
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(table)->GetVersion(), -42);
  EXPECT_TRUE(table.GetReferences().empty());
}

TEST(HostExceptions, NullObjectRaisesTheNullHandleError) {
  ZANUnicodeString stamp = "kept";
  EXPECT_THROW(KOVASynchroStampServices::ComputeKOVASynchroStamp(ZANBaseUnknown_var(), {"Mass"}, stamp),
               ZANNullVarError);
  EXPECT_EQ(stamp.ConvertToChar(), "kept");
}

TEST(HostExceptions, NullParameterInTheMapRaisesTheNullHandleErrorWhenLogging) {
  ZANUnicodeString stamp = "kept";
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes = kova::test::WorkedExampleAttributes();
  attributes["Null"] = nullptr;
  kova::test::StdoutCapture capture;
  EXPECT_THROW(KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp), ZANNullVarError);
  capture.Stop();
  EXPECT_EQ(stamp.ConvertToChar(), "kept");
}

TEST(HostExceptions, DeclaredSizeBeyondTheAddressSpaceRaisesBadAlloc) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers' allocators report exhaustion themselves instead of raising std::bad_alloc";
#else
  // In a child process, whose address space is limited to what it uses now plus 256 MiB: the
  // envelope declares 2147483647 bytes, which the reader allocates at once.
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    long pages = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
      if (std::fscanf(statm, "%ld", &pages) != 1) pages = 0;
      std::fclose(statm);
    }
    limit.rlim_cur = static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (256u << 20);
    if (pages == 0 || setrlimit(RLIMIT_AS, &limit) != 0) _exit(3);
    const int devnull = ::open("/dev/null", O_WRONLY);
    if (devnull >= 0) dup2(devnull, 1);
    ZANUnicodeString text("V12:2147483647:eJwDAAAAAAE=");
    try {
      KOVAMappingParser::TryDecompressMT(text);
    } catch (const std::bad_alloc&) {
      _exit(text.ConvertToChar() == "eJwDAAAAAAE=" ? 0 : 4);  // the prefix was already removed
    } catch (...) {
      _exit(2);
    }
    _exit(1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0) << "1: no exception, 2: another exception, 3: no limit, 4: text";
#endif
}

}  // namespace
