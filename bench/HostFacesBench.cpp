// What the ways a host reaches the library cost, side by side in one run:
//  - reading and writing the large generated documents with the C++ calls alone, with a
//    capture of failure reasons alive on the thread (as the tool and the C API run), and with a
//    capture of every line (which makes the library build its printed documents and dumps);
//  - the same reading and writing through the C API;
//  - one field getter of a mapping object, through the C++ handle and through the C API.
// Compare Capture and CApi against Cpp of the same arguments.
#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "DocumentGenerator.h"

namespace {

using kova::bench::GeneratedDocument;
using kova::bench::Shape;

const GeneratedDocument& Document(std::size_t objects) {
  static std::map<std::size_t, std::unique_ptr<GeneratedDocument>> cache;
  auto& slot = cache[objects];
  if (!slot) slot = std::make_unique<GeneratedDocument>(kova::bench::GenerateDocument(Shape::TenPerReference, objects));
  return *slot;
}

void SetCounters(benchmark::State& state, const GeneratedDocument& doc) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * doc.text.size()));
  state.counters["ns_per_object"] = benchmark::Counter(
      static_cast<double>(doc.objects) * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// How the C++ calls run: alone, or with a capture alive on the thread.
enum class Face { kCpp, kReasonsCapture, kEverythingCapture };

// A capture is neither copied nor moved: it is made in place.
void StartCapture(Face face, std::optional<KOVALogCapture>& capture) {
  if (face == Face::kReasonsCapture) capture.emplace(KOVALogCapture::Wants::kReasons);
  if (face == Face::kEverythingCapture) capture.emplace(KOVALogCapture::Wants::kEverything);
}

void ReadCpp(benchmark::State& state, Face face) {
  const GeneratedDocument& doc = Document(static_cast<std::size_t>(state.range(0)));
  const ZANUnicodeString text = ZANUnicodeString::FromValidUTF8(doc.text);
  std::optional<KOVALogCapture> capture;
  StartCapture(face, capture);
  for (auto _ : state) {
    KOVAMappingTable table;
    if (KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table) != S_OK) {
      state.SkipWithError("reading failed");
      break;
    }
    state.PauseTiming();  // neither the table's destruction nor the lines kept are part of reading
    { KOVAMappingTable gone = std::move(table); }
    if (capture) capture->Clear();
    state.ResumeTiming();
  }
  SetCounters(state, doc);
}

void WriteCpp(benchmark::State& state, Face face) {
  const GeneratedDocument& doc = Document(static_cast<std::size_t>(state.range(0)));
  KOVAMappingTable table;
  if (KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString::FromValidUTF8(doc.text), ZANBaseUnknown(), table) !=
      S_OK) {
    state.SkipWithError("reading failed");
    return;
  }
  std::optional<KOVALogCapture> capture;
  StartCapture(face, capture);
  for (auto _ : state) {
    ZANUnicodeString text = KOVAMappingParser::TranslateToString(table);
    benchmark::DoNotOptimize(text);
    if (capture) {
      state.PauseTiming();
      capture->Clear();
      state.ResumeTiming();
    }
  }
  SetCounters(state, doc);
}

void BM_ReadCpp(benchmark::State& state) { ReadCpp(state, Face::kCpp); }
void BM_ReadReasonsCapture(benchmark::State& state) { ReadCpp(state, Face::kReasonsCapture); }
void BM_ReadEverythingCapture(benchmark::State& state) { ReadCpp(state, Face::kEverythingCapture); }
void BM_WriteCpp(benchmark::State& state) { WriteCpp(state, Face::kCpp); }
void BM_WriteReasonsCapture(benchmark::State& state) { WriteCpp(state, Face::kReasonsCapture); }
void BM_WriteEverythingCapture(benchmark::State& state) { WriteCpp(state, Face::kEverythingCapture); }

void BM_ReadCApi(benchmark::State& state) {
  const GeneratedDocument& doc = Document(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    kova_table* table = kova_table_new();
    if (kova_table_read(table, doc.text.data(), doc.text.size()) != KOVA_S_OK) {
      state.SkipWithError("reading failed");
      kova_table_free(table);
      break;
    }
    state.PauseTiming();
    kova_table_free(table);
    state.ResumeTiming();
  }
  SetCounters(state, doc);
}

void BM_WriteCApi(benchmark::State& state) {
  const GeneratedDocument& doc = Document(static_cast<std::size_t>(state.range(0)));
  kova_table* table = kova_table_new();
  if (kova_table_read(table, doc.text.data(), doc.text.size()) != KOVA_S_OK) {
    state.SkipWithError("reading failed");
    kova_table_free(table);
    return;
  }
  for (auto _ : state) {
    char* text = nullptr;
    size_t length = 0;
    if (kova_table_write(table, -1, &text, &length) != KOVA_S_OK) state.SkipWithError("writing failed");
    benchmark::DoNotOptimize(text);
    kova_free(text);
  }
  kova_table_free(table);
  SetCounters(state, doc);
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

BENCHMARK(BM_ReadCpp)->Apply(LargeDocuments);
BENCHMARK(BM_ReadReasonsCapture)->Apply(LargeDocuments);
BENCHMARK(BM_ReadEverythingCapture)->Apply(LargeDocuments);
BENCHMARK(BM_ReadCApi)->Apply(LargeDocuments);
BENCHMARK(BM_WriteCpp)->Apply(LargeDocuments);
BENCHMARK(BM_WriteReasonsCapture)->Apply(LargeDocuments);
BENCHMARK(BM_WriteEverythingCapture)->Apply(LargeDocuments);
BENCHMARK(BM_WriteCApi)->Apply(LargeDocuments);
BENCHMARK(BM_GetKovaIdCpp);
BENCHMARK(BM_GetKovaIdCApi);
BENCHMARK(BM_GetIsLocalCpp);
BENCHMARK(BM_GetIsLocalCApi);

BENCHMARK_MAIN();
