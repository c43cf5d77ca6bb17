// Benchmarks of KOVAMappingServices: reading and writing documents against simdjson's DOM parse,
// linear scaling of tables, look-ups, the compressed envelope against zlib, and stamps.
//
// Figures are meant as ratios within one run: compare BM_Read against BM_SimdjsonParse of the same
// document, per-object times of 1M against 10k objects, the envelope against zlib.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnowledge.h>

#include <benchmark/benchmark.h>
#include <simdjson.h>
#include <zlib.h>

#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include "BenchDocuments.h"
#include "StampAttributes.h"

namespace {

using kova::bench::GeneratedDocument;
using kova::bench::Shape;

const GeneratedDocument& Document(Shape shape, std::size_t objects) {
  return kova::bench::CachedBenchDocument(shape, objects);
}

Shape ShapeOf(const benchmark::State& state) { return kova::bench::ShapeNumbered(state.range(0)); }

void SetObjectCounters(benchmark::State& state, const GeneratedDocument& doc) {
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * doc.objects));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * doc.text.size()));
  state.counters["objects"] = static_cast<double>(doc.objects);
  state.counters["ns_per_object"] =
      benchmark::Counter(static_cast<double>(doc.objects) * 1e-9,
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// --- Goal 1: reading and writing against simdjson ---------------------------------------------

void BM_SimdjsonParse(benchmark::State& state) {
  const GeneratedDocument& doc = Document(ShapeOf(state), static_cast<std::size_t>(state.range(1)));
  // One parser for the whole run, as simdjson is meant to be used; one untimed parse first sizes
  // its buffers, so that the figure is the parse itself.
  static simdjson::dom::parser parser;
  const simdjson::padded_string padded(doc.text);
  if (parser.parse(padded).error() != simdjson::SUCCESS) state.SkipWithError("simdjson parse failed");
  for (auto _ : state) {
    simdjson::dom::element root;
    if (parser.parse(padded).get(root) != simdjson::SUCCESS) state.SkipWithError("simdjson parse failed");
    benchmark::DoNotOptimize(root);
  }
  SetObjectCounters(state, doc);
}

void BM_Read(benchmark::State& state) {
  const GeneratedDocument& doc = Document(ShapeOf(state), static_cast<std::size_t>(state.range(1)));
  const ZANUnicodeString text = ZANUnicodeString::FromValidUTF8(doc.text);
  // One untimed read first, as simdjson gets its untimed parse: what stays from one read to the
  // next (the thread's parser, memory the allocator keeps) is in place when timing starts.
  {
    KOVAMappingTable table;
    if (KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table) != S_OK) {
      state.SkipWithError("reading failed");
      return;
    }
  }
  for (auto _ : state) {
    KOVAMappingTable table;
    if (KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table) != S_OK) {
      state.SkipWithError("reading failed");
      break;
    }
    state.PauseTiming();  // the table's destruction is not part of reading
    { KOVAMappingTable gone = std::move(table); }
    state.ResumeTiming();
  }
  SetObjectCounters(state, doc);
}

void BM_Write(benchmark::State& state) {
  const GeneratedDocument& doc = Document(ShapeOf(state), static_cast<std::size_t>(state.range(1)));
  KOVAMappingTable table;
  if (KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString::FromValidUTF8(doc.text), ZANBaseUnknown(), table) !=
      S_OK) {
    state.SkipWithError("reading failed");
    return;
  }
  for (auto _ : state) {
    ZANUnicodeString text = KOVAMappingParser::TranslateToString(table);
    benchmark::DoNotOptimize(text);
  }
  SetObjectCounters(state, doc);
}

// --- Goal 2: linear scaling of insertion and look-ups -----------------------------------------

// Inserting through the table's own members (AddReference, AddInstance), without the parser.
void BM_Insert(benchmark::State& state) {
  const Shape shape = ShapeOf(state);
  const auto objects = static_cast<std::size_t>(state.range(1));
  for (auto _ : state) {
    state.PauseTiming();
    KOVAMappingTable table;
    std::vector<KOVAMappingReference> references;
    std::vector<KOVAMappingInstance> instances;
    const std::size_t refCount = shape == Shape::kOneReference ? 1 : (objects + 10) / 11;
    references.reserve(refCount);
    instances.reserve(objects);
    for (std::size_t r = 0; r < refCount; ++r) {
      references.emplace_back(ZANUnicodeString("R" + std::to_string(r)), ZANUnicodeString("PR" + std::to_string(r)),
                              "V3:stamp", "null", r != 0);
    }
    for (std::size_t i = 0; i + refCount < objects; ++i) {
      instances.emplace_back(ZANUnicodeString("I" + std::to_string(i)), ZANUnicodeString("PI" + std::to_string(i)),
                             "V3:stamp", "R", "null", false);
    }
    state.ResumeTiming();
    std::size_t next = 0;
    for (std::size_t r = 0; r < refCount; ++r) {
      if (table.AddReference(references[r]) != S_OK) state.SkipWithError("AddReference failed");
      const std::size_t count =
          shape == Shape::kOneReference ? instances.size() : std::min<std::size_t>(10, instances.size() - next);
      for (std::size_t i = 0; i < count; ++i) {
        if (table.AddInstance(instances[next++], references[r]) != S_OK) state.SkipWithError("AddInstance failed");
      }
    }
    state.PauseTiming();
    {
      KOVAMappingTable gone = std::move(table);
      references.clear();
      instances.clear();
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * objects));
  state.counters["ns_per_object"] = benchmark::Counter(
      static_cast<double>(objects) * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// One look-up per iteration, cycling through every id of the table in a shuffled order.
template <bool kInstance>
void BM_Lookup(benchmark::State& state) {
  const GeneratedDocument& doc = Document(Shape::kTenPerReference, static_cast<std::size_t>(state.range(0)));
  KOVAMappingTable table;
  if (KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString::FromValidUTF8(doc.text), ZANBaseUnknown(), table) !=
      S_OK) {
    state.SkipWithError("reading failed");
    return;
  }
  const std::vector<std::string>& source = kInstance ? doc.instanceKovaIds : doc.referencePlexoIds;
  std::vector<ZANUnicodeString> ids;
  ids.reserve(source.size());
  for (const std::string& id : source) ids.push_back(ZANUnicodeString::FromValidUTF8(id));
  std::shuffle(ids.begin(), ids.end(), std::mt19937(7));
  std::size_t next = 0;
  KOVAMappingInstance instance;
  KOVAMappingReference reference;
  // A table makes its instance index at its first instance look-up: that one and a few more are
  // made before timing, so that the figure is the steady cost per look-up.
  for (int warm = 0; warm < 16; ++warm) {
    table.GetInstanceFromKOVAId(ids[0], instance);
    table.GetReferenceFromPlexoId(ids[0], reference);
  }
  for (auto _ : state) {
    HRESULT status;
    if constexpr (kInstance) {
      status = table.GetInstanceFromKOVAId(ids[next], instance);
    } else {
      status = table.GetReferenceFromPlexoId(ids[next], reference);
    }
    if (status != S_OK) state.SkipWithError("look-up failed");
    if (++next == ids.size()) next = 0;
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["table_objects"] = static_cast<double>(doc.objects);
}

void BM_LookupInstanceFromKOVAId(benchmark::State& state) { BM_Lookup<true>(state); }
void BM_LookupReferenceFromPlexoId(benchmark::State& state) { BM_Lookup<false>(state); }

// --- Goal 3: the envelope against zlib level 6 ------------------------------------------------

void BM_ZlibCompress(benchmark::State& state) {
  const GeneratedDocument& doc = Document(Shape::kTenPerReference, static_cast<std::size_t>(state.range(0)));
  std::vector<unsigned char> out(compressBound(doc.text.size()));
  uLongf length = 0;
  for (auto _ : state) {
    length = out.size();
    if (compress2(out.data(), &length, reinterpret_cast<const Bytef*>(doc.text.data()), doc.text.size(), 6) != Z_OK)
      state.SkipWithError("compress failed");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * doc.text.size()));
  state.counters["out_bytes"] = static_cast<double>(length);
  // What an envelope of this stream would hold: base64 (4/3) plus a prefix of a few bytes.
  state.counters["out_bytes_base64"] = static_cast<double>((length + 2) / 3 * 4);
}

void BM_ZlibUncompress(benchmark::State& state) {
  const GeneratedDocument& doc = Document(Shape::kTenPerReference, static_cast<std::size_t>(state.range(0)));
  std::vector<unsigned char> packed(compressBound(doc.text.size()));
  uLongf packedLength = packed.size();
  compress2(packed.data(), &packedLength, reinterpret_cast<const Bytef*>(doc.text.data()), doc.text.size(), 6);
  std::vector<unsigned char> out(doc.text.size());
  for (auto _ : state) {
    uLongf length = out.size();
    if (uncompress(out.data(), &length, packed.data(), packedLength) != Z_OK) state.SkipWithError("uncompress failed");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * doc.text.size()));
}

void BM_CompressMTWithPrefix(benchmark::State& state) {
  const GeneratedDocument& doc = Document(Shape::kTenPerReference, static_cast<std::size_t>(state.range(0)));
  const ZANUnicodeString text = ZANUnicodeString::FromValidUTF8(doc.text);
  ZANUnicodeString envelope;
  for (auto _ : state) {
    if (KOVAMappingParser::CompressMTWithPrefix(text, envelope) != S_OK) state.SkipWithError("compression failed");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * doc.text.size()));
  state.counters["out_bytes"] = static_cast<double>(envelope.GetLengthInByte());
}

void BM_TryDecompressMT(benchmark::State& state) {
  const GeneratedDocument& doc = Document(Shape::kTenPerReference, static_cast<std::size_t>(state.range(0)));
  ZANUnicodeString envelope;
  KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString::FromValidUTF8(doc.text), envelope);
  for (auto _ : state) {
    state.PauseTiming();
    ZANUnicodeString text = envelope;
    state.ResumeTiming();
    if (KOVAMappingParser::TryDecompressMT(text) != S_OK) state.SkipWithError("decompression failed");
    state.PauseTiming();
    { ZANUnicodeString gone = std::move(text); }
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * doc.text.size()));
}

// --- Goal 5: stamps of a map of 20 attributes -------------------------------------------------

void BM_StampMap20(benchmark::State& state) {
  const auto attributes = kova::bench::TwentyAttributes();
  ZANUnicodeString stamp;
  for (auto _ : state) {
    if (KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp) != S_OK) {
      state.SkipWithError("stamp refused: run with DONOTUSE_ENABLEKSSGEN set");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations());
}

// The generator writes what the library's writer writes: checked once before anything is timed.
void CheckGenerator() {
  for (Shape shape : {Shape::kOneReference, Shape::kTenPerReference}) {
    const GeneratedDocument doc = kova::bench::MakeBenchDocument(shape, 1000, 99);
    KOVAMappingTable table;
    if (KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString::FromValidUTF8(doc.text), ZANBaseUnknown(),
                                                   table) != S_OK)
      throw std::runtime_error("generated document not read");
    if (KOVAMappingParser::TranslateToString(table).View() != doc.text)
      throw std::runtime_error("generated document differs from the writer's text");
  }
}

void ShapeSizes(benchmark::internal::Benchmark* b) {
  for (int shape : {0, 1})
    for (int objects : {10000, 100000, 1000000}) b->Args({shape, objects});
  b->ArgNames({"shape", "objects"});
}

void Sizes(benchmark::internal::Benchmark* b) {
  for (int objects : {10000, 100000, 1000000}) b->Arg(objects);
  b->ArgName("objects");
}

}  // namespace

BENCHMARK(BM_SimdjsonParse)->Apply(ShapeSizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Read)->Apply(ShapeSizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Write)->Apply(ShapeSizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Insert)->Apply(ShapeSizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LookupInstanceFromKOVAId)->Apply(Sizes);
BENCHMARK(BM_LookupReferenceFromPlexoId)->Apply(Sizes);
BENCHMARK(BM_ZlibCompress)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CompressMTWithPrefix)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZlibUncompress)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TryDecompressMT)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StampMap20);

int main(int argc, char** argv) {
  CheckGenerator();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
