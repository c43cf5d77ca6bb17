// What the ways a host reaches the library cost:
//  - reading and writing the large generated documents with the C++ calls alone, with a
//    capture of failure reasons alive on the thread (as the tool and the C API run), with a
//    capture of every line (which makes the library build its printed documents and dumps), and
//    through the C API. The four run in turn within each iteration, and the ratios to the C++
//    calls alone are the counters *_x: the machine's drift touches all four alike;
//  - one field getter of a mapping object, through the C++ handle and through the C API.
#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <iterator>
#include <optional>
#include <string>

#include "BenchDocuments.h"

namespace {

using kova::bench::GeneratedDocument;

const GeneratedDocument& Document(std::size_t objects) {
  return kova::bench::CachedBenchDocument(kova::bench::Shape::kTenPerReference, objects);
}

void SetCounters(benchmark::State& state, const GeneratedDocument& doc) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * doc.text.size()));
  state.counters["ns_per_object"] =
      benchmark::Counter(static_cast<double>(doc.objects) * 1e-9,
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// How a document is read or written: the C++ calls alone, with a capture alive on the thread, or
// through the C API.
enum class Face { kCpp, kReasonsCapture, kEverythingCapture, kCApi };
constexpr Face kFaces[] = {Face::kCpp, Face::kReasonsCapture, Face::kEverythingCapture, Face::kCApi};
constexpr const char* kRatioNames[] = {"", "reasons_capture_x", "everything_capture_x", "c_api_x"};

// A capture is neither copied nor moved: it is made in place.
void StartCapture(Face face, std::optional<KOVALogCapture>& capture) {
  if (face == Face::kReasonsCapture) capture.emplace(KOVALogCapture::Wants::kReasons);
  if (face == Face::kEverythingCapture) capture.emplace(KOVALogCapture::Wants::kEverything);
}

using Clock = std::chrono::steady_clock;

// Reads the document once the given way; returns the time of the read alone (not of freeing the
// table nor of the capture's lines).
double ReadOnce(Face face, const std::string& text, const ZANUnicodeString& unicode, bool& ok) {
  if (face == Face::kCApi) {
    kova_table* table = kova_table_new();
    const Clock::time_point start = Clock::now();
    ok = kova_table_read(table, text.data(), text.size()) == KOVA_S_OK;
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    kova_table_free(table);
    return elapsed;
  }
  std::optional<KOVALogCapture> capture;
  StartCapture(face, capture);
  KOVAMappingTable table;
  const Clock::time_point start = Clock::now();
  ok = KOVAMappingParser::TranslateToMappingTable(unicode, ZANBaseUnknown(), table) == S_OK;
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double WriteOnce(Face face, KOVAMappingTable& table, kova_table* cTable, bool& ok) {
  if (face == Face::kCApi) {
    char* text = nullptr;
    const Clock::time_point start = Clock::now();
    ok = kova_table_write(cTable, -1, &text, nullptr) == KOVA_S_OK;
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    kova_free(text);
    return elapsed;
  }
  std::optional<KOVALogCapture> capture;
  StartCapture(face, capture);
  const Clock::time_point start = Clock::now();
  ZANUnicodeString text = KOVAMappingParser::TranslateToString(table);
  const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
  ok = !text.IsEmpty();
  return elapsed;
}

// Runs every face once per iteration, in an order that turns from one iteration to the next, so
// that all of them meet the same state of the machine. The benchmark's time is that of the C++
// calls alone; each other face is reported as its time over that one (name_x).
template <class Once>
void SideBySide(benchmark::State& state, const GeneratedDocument& doc, Once once) {
  double total[std::size(kFaces)] = {};
  for (const Face face : kFaces) {  // untimed: what stays from one call to the next is in place
    bool ok = false;
    once(face, ok);
  }
  std::size_t turn = 0;
  for (auto _ : state) {
    for (std::size_t k = 0; k < std::size(kFaces); ++k) {
      const std::size_t f = (k + turn) % std::size(kFaces);
      bool ok = false;
      const double elapsed = once(kFaces[f], ok);
      if (!ok) state.SkipWithError("the document was not read or written");
      total[f] += elapsed;
      if (kFaces[f] == Face::kCpp) state.SetIterationTime(elapsed);
    }
    ++turn;
  }
  for (std::size_t f = 1; f < std::size(kFaces); ++f) state.counters[kRatioNames[f]] = total[f] / total[0];
  SetCounters(state, doc);
}

void BM_ReadSideBySide(benchmark::State& state) {
  const GeneratedDocument& doc = Document(static_cast<std::size_t>(state.range(0)));
  const ZANUnicodeString unicode = ZANUnicodeString::FromValidUTF8(doc.text);
  SideBySide(state, doc, [&](Face face, bool& ok) { return ReadOnce(face, doc.text, unicode, ok); });
}

void BM_WriteSideBySide(benchmark::State& state) {
  const GeneratedDocument& doc = Document(static_cast<std::size_t>(state.range(0)));
  KOVAMappingTable table;
  kova_table* cTable = kova_table_new();
  if (KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString::FromValidUTF8(doc.text), ZANBaseUnknown(), table) !=
          S_OK ||
      kova_table_read(cTable, doc.text.data(), doc.text.size()) != KOVA_S_OK) {
    state.SkipWithError("reading failed");
  } else {
    SideBySide(state, doc, [&](Face face, bool& ok) { return WriteOnce(face, table, cTable, ok); });
  }
  kova_table_free(cTable);
}

// --- One getter ------------------------------------------------------------------------------

constexpr char kId[] = "3F2504E0-4F89-11D3-9A0C-0305E82C3301";  // a typical kOVA id

void BM_GetKovaIdCpp(benchmark::State& state) {
  KOVAMappingReference reference;
  reference.SetKOVAID(kId);
  for (auto _ : state) {
    ZANUnicodeString id = reference.GetKOVAID();
    benchmark::DoNotOptimize(id.CastToCharPtr());
  }
}

void BM_GetKovaIdCApi(benchmark::State& state) {
  kova_object* reference = kova_reference_new();
  kova_object_set_kova_id(reference, kId, KOVA_NUL_TERMINATED);
  for (auto _ : state) {
    size_t length = 0;
    const char* id = kova_object_kova_id(reference, &length);
    benchmark::DoNotOptimize(id);
    benchmark::DoNotOptimize(length);
  }
  kova_object_release(reference);
}

void BM_GetIsLocalCpp(benchmark::State& state) {
  KOVAMappingReference reference;
  for (auto _ : state) benchmark::DoNotOptimize(reference.GetIsLocal());
}

void BM_GetIsLocalCApi(benchmark::State& state) {
  kova_object* reference = kova_reference_new();
  for (auto _ : state) benchmark::DoNotOptimize(kova_object_is_local(reference));
  kova_object_release(reference);
}

void LargeDocuments(benchmark::internal::Benchmark* b) {
  for (int objects : {100000, 1000000}) b->Arg(objects);
  b->ArgName("objects")->Unit(benchmark::kMillisecond);
}

}  // namespace

BENCHMARK(BM_ReadSideBySide)->Apply(LargeDocuments)->UseManualTime();
BENCHMARK(BM_WriteSideBySide)->Apply(LargeDocuments)->UseManualTime();
BENCHMARK(BM_GetKovaIdCpp);
BENCHMARK(BM_GetKovaIdCApi);
BENCHMARK(BM_GetIsLocalCpp);
BENCHMARK(BM_GetIsLocalCApi);

BENCHMARK_MAIN();
