// Failing allocations. EnvelopeAllocationFailure (with "ActivateKOVALogger" set) makes the
// compression library's own allocations fail; EnvelopeBase64Failure lowers the address-space limit
// so that only the base64 text of a large document cannot be allocated.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/ZANSysCompression.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include "tests/env/EnvelopeTestUtil.h"
#include "tests/support/StdoutCapture.h"

#include <libdeflate.h>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

namespace {

using kova::test::LogLines;
using kova::test::PayloadOf;

std::atomic<bool> gRefuse{false};
std::atomic<int> gRefused{0};

void* TestMalloc(std::size_t size) {
  if (gRefuse.load()) {
    ++gRefused;
    return nullptr;
  }
  return std::malloc(size);
}

void TestFree(void* p) { std::free(p); }

// Installed while the process starts, before any compression state exists.
const bool gAllocatorInstalled = [] {
  libdeflate_set_memory_allocator(TestMalloc, TestFree);
  return true;
}();

// Runs work on a new thread, which has no compression state of its own yet.
void OnFreshThread(const std::function<void()>& work) {
  std::thread thread(work);
  thread.join();
}

struct Refusing {
  Refusing() {
    gRefused = 0;
    gRefuse = true;
  }
  ~Refusing() { gRefuse = false; }
  Refusing(const Refusing&) = delete;
  Refusing& operator=(const Refusing&) = delete;
};

TEST(EnvelopeAllocationFailure, ServiceReportsOutOfMemoryThenRecovers) {
  ASSERT_TRUE(gAllocatorInstalled);
  OnFreshThread([] {
    const std::string data = "some bytes to compress";
    unsigned char target[256];
    std::uint64_t length = sizeof target;
    {
      Refusing refusing;
      EXPECT_EQ(ZANSysCompress(reinterpret_cast<const unsigned char*>(data.data()), data.size(), target, length),
                ZANZ_E_OUTOFMEMORY);
      EXPECT_EQ(length, 0u);
      std::uint64_t produced = 64;
      unsigned char out[64];
      EXPECT_EQ(ZANSysUncompress(target, 10, out, produced), ZANZ_E_OUTOFMEMORY);
      EXPECT_EQ(produced, 0u);
      EXPECT_GE(gRefused.load(), 2);
    }
    length = sizeof target;
    ASSERT_EQ(ZANSysCompress(reinterpret_cast<const unsigned char*>(data.data()), data.size(), target, length), S_OK);
    std::string back(data.size(), '\0');
    std::uint64_t produced = back.size();
    EXPECT_EQ(ZANSysUncompress(target, length, reinterpret_cast<unsigned char*>(back.data()), produced), S_OK);
    EXPECT_EQ(back, data);
  });
}

TEST(EnvelopeAllocationFailure, DecompressionOutOfMemoryIsLoggedByName) {
  ZANUnicodeString envelope;
  {
    kova::test::StdoutCapture quiet;
    ASSERT_EQ(KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString("{\"version\":12}"), envelope), S_OK);
  }
  const std::string payload = PayloadOf(envelope.ConvertToChar());
  OnFreshThread([&] {
    ZANUnicodeString text = envelope;
    kova::test::StdoutCapture capture;
    HRESULT status = S_OK;
    {
      Refusing refusing;
      status = KOVAMappingParser::TryDecompressMT(text);
      EXPECT_GE(gRefused.load(), 1);
    }
    const std::string log = capture.Stop();
    EXPECT_EQ(status, ZANZ_E_OUTOFMEMORY);
    EXPECT_EQ(text.ConvertToChar(), payload);
    EXPECT_EQ(log, LogLines({"DECOMPRESSION", "ZANZ_E_OUTOFMEMORY"}));
  });
}

TEST(EnvelopeAllocationFailure, FailedCompressionStillBuildsTheEnvelope) {
  OnFreshThread([] {
    ZANUnicodeString out;
    kova::test::StdoutCapture capture;
    HRESULT status = E_FAIL;
    {
      Refusing refusing;
      status = KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString("hello"), out);
      EXPECT_GE(gRefused.load(), 1);
    }
    const std::string log = capture.Stop();
    // The base64 text of the empty result succeeds, and that is the status returned.
    EXPECT_EQ(status, S_OK);
    EXPECT_EQ(out.ConvertToChar(), "V12:5:");
    EXPECT_EQ(log, LogLines({"COMPRESSION FAILED",
                             "PRESSED SIZE IS: ", "COMPRESSED SIZE IS: ", "COMPRESSED STRING:", "V12:5:"}));
    // Such an envelope does not open.
    ZANUnicodeString text = out;
    kova::test::StdoutCapture second;
    EXPECT_EQ(KOVAMappingParser::TryDecompressMT(text), ZANZ_E_BADDATA);
    EXPECT_EQ(second.Stop(), LogLines({"DECOMPRESSION", "ZANZ_E_BADDATA"}));
  });
}

#if !defined(__SANITIZE_ADDRESS__)
// Lowers the soft address-space limit for its lifetime.
class AddressSpaceLimit {
 public:
  explicit AddressSpaceLimit(rlim_t bytes) {
    getrlimit(RLIMIT_AS, &saved_);
    rlimit lowered = saved_;
    lowered.rlim_cur = bytes;
    applied_ = setrlimit(RLIMIT_AS, &lowered) == 0;
  }
  ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &saved_); }
  AddressSpaceLimit(const AddressSpaceLimit&) = delete;
  AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;
  bool Applied() const { return applied_; }

 private:
  rlimit saved_{};
  bool applied_ = false;
};

// Address space of one large allocation: its header, rounded up to pages, and a page to spare.
std::uint64_t Pages(std::uint64_t bytes) { return (bytes + 16 + 4095) / 4096 * 4096 + 4096; }
#endif

TEST(EnvelopeBase64Failure, FailedEncodingReturnsTheConverterStatusAndKeepsOut) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "AddressSanitizer reserves address space beyond any limit this test can set";
#else
  // 32 MB of bytes 1..127: about seven bits each, so the base64 text (4/3 of the compressed size)
  // is larger than the UTF-8 copy that is released before it is allocated.
  std::string alphabet;
  for (int c = 1; c < 128; ++c) alphabet.push_back(static_cast<char>(c));
  const ZANUnicodeString document(kova::test::RandomText(32u << 20, alphabet, 9));
  const std::uint64_t n = document.GetLengthInByte();

  ZANUnicodeString first;
  ASSERT_EQ(KOVAMappingParser::CompressMTWithPrefix(document, first), S_OK);  // also warms this thread up
  const std::uint64_t base64Size = PayloadOf(first.ConvertToChar()).size();
  ASSERT_GT(base64Size, n + (4u << 20)) << "the base64 text must outgrow the released copy";
  first = ZANUnicodeString();

  ZANUnicodeString out("kept");
  HRESULT status = S_OK;
  {
    // Room for the UTF-8 copy and the compression target next to what exists now, plus a margin
    // for small allocations, but not for the base64 text once the copy is gone.
    const std::uint64_t now = kova::test::ProcStatusBytes("VmSize");
    ASSERT_GT(now, 0u);
    AddressSpaceLimit limit(static_cast<rlim_t>(now + Pages(n + 1) + Pages(ZANSysCompressBound(n)) + (1u << 20)));
    ASSERT_TRUE(limit.Applied());
    status = KOVAMappingParser::CompressMTWithPrefix(document, out);
  }
  EXPECT_EQ(status, ZANZ_E_OUTOFMEMORY);
  EXPECT_EQ(out.ConvertToChar(), "V12:" + std::to_string(n) + ":kept");
#endif
}

}  // namespace
