// What hosts do with a table between reading and writing it, step by step, on tables read from
// generated documents of 10k, 100k and 1M objects in both shapes:
//   lookup         find an instance by kOVA id;
//   sync           find an instance by kOVA id, set a new Plexo id and a new versioned stamp;
//   rename         set a new kOVA id on an object taken from GetContent(), then find it by it;
//   list-and-find  GetReferences(), one reference's GetInstances(), then find an instance by Plexo id;
//   two-tables     change the Plexo id of an instance of a small table, then find an instance of the
//                  large one;
//   remove-readd   remove a reference (with its instances) and add it back;
//   threads        two threads, each with its own table, each running sync.
// Each runs on the library ("library/..."), on a model written the straightforward way
// ("plain/...", bench/PlainModel.h) and, for lookup at 10k and 100k, on the walk that defines the
// answers ("walk/lookup"). One iteration is one step; compare the steps of one size within one run.
// Only calls that every version of the library offers are used, so the same source measures an
// earlier build beside this one.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "BenchDocuments.h"
#include "PlainModel.h"

namespace {

using kova::bench::GeneratedDocument;
using kova::bench::PlainTable;
using kova::bench::Shape;

// Two versioned stamps of the stored length, set in turn.
const ZANUnicodeString kStamps[2] = {ZANUnicodeString("V3:q1w2e3r4t5y6u7i8o9p0a1s2d3f4g5h6j7k8l9z0xcv="),
                                     ZANUnicodeString("V2:Z1X2C3V4B5N6M7L8K9J0H1G2F3D4S5A6P7O8I9U0ytr=")};

// A table read from a generated document, with the ids the steps use and the orders they go in.
struct Fixture {
  KOVAMappingTable table;
  std::unique_ptr<PlainTable> plain;
  // Every instance, in document order: its ids now, and the other Plexo id each sync pass sets.
  std::vector<ZANUnicodeString> instanceKova;
  std::vector<ZANUnicodeString> instancePlexo[2];
  std::vector<std::string> plainKova;
  std::vector<std::string> plainPlexo[2];
  std::vector<std::uint32_t> instanceOrder;
  std::vector<std::uint32_t> referenceOrder;
  // Every reference's Plexo id, in document order, and the number of objects.
  std::vector<ZANUnicodeString> referencePlexo;
  std::size_t objects = 0;
  // For rename: every object of GetContent(), whether it is a reference, and its two kOVA ids.
  std::vector<KOVAMappingObject> content;
  std::vector<bool> isReference;
  std::vector<ZANUnicodeString> contentKova[2];
  std::vector<std::string> plainContentKova[2];
  std::vector<std::shared_ptr<kova::bench::PlainObject>> plainContent;
  std::vector<std::uint32_t> contentOrder;
  std::size_t next = 0;
  int pass = 0;
};

std::vector<std::uint32_t> Shuffled(std::size_t count, std::uint32_t seed) {
  std::vector<std::uint32_t> order(count);
  for (std::size_t i = 0; i < count; ++i) order[i] = static_cast<std::uint32_t>(i);
  std::shuffle(order.begin(), order.end(), std::mt19937(seed));
  return order;
}

std::unique_ptr<Fixture> MakeFixture(Shape shape, std::size_t objects, bool plain, bool content) {
  auto f = std::make_unique<Fixture>();
  const GeneratedDocument& doc = kova::bench::CachedBenchDocument(shape, objects);
  if (KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString::FromValidUTF8(doc.text), ZANBaseUnknown(),
                                                 f->table) != S_OK) {
    return nullptr;
  }
  // Copies of the content: neither call hands out a vector of the table.
  const std::vector<KOVAMappingInstance> instances = f->table.GetInstances();
  for (const KOVAMappingInstance& instance : instances) {
    f->instanceKova.push_back(instance.GetKOVAID());
    f->instancePlexo[0].push_back(instance.GetPlexoID());
    f->instancePlexo[1].push_back(ZANUnicodeString("~") + instance.GetPlexoID());
  }
  for (const std::string& id : doc.referencePlexoIds) f->referencePlexo.push_back(ZANUnicodeString::FromValidUTF8(id));
  f->objects = doc.objects;
  f->instanceOrder = Shuffled(f->instanceKova.size(), 7);
  f->referenceOrder = Shuffled(f->referencePlexo.size(), 11);
  if (plain || content) {
    // Each element of the content is the next instance, or else a reference (generated ids are
    // unique).
    f->content = f->table.GetContent();
    std::size_t next = 0;
    for (const KOVAMappingObject& object : f->content) {
      const bool instance = next < instances.size() && object.GetKOVAID() == instances[next].GetKOVAID();
      f->isReference.push_back(!instance);
      if (instance) ++next;
    }
  }
  if (plain) {
    f->plain = std::make_unique<PlainTable>(f->content, f->isReference);
    for (std::size_t i = 0; i < f->instanceKova.size(); ++i) {
      f->plainKova.push_back(f->instanceKova[i].ConvertToChar());
      f->plainPlexo[0].push_back(f->instancePlexo[0][i].ConvertToChar());
      f->plainPlexo[1].push_back(f->instancePlexo[1][i].ConvertToChar());
    }
  }
  if (content) {
    for (const KOVAMappingObject& object : f->content) {
      f->contentKova[0].push_back(object.GetKOVAID());
      f->contentKova[1].push_back(ZANUnicodeString("~") + object.GetKOVAID());
    }
    f->contentOrder = Shuffled(f->content.size(), 13);
    if (plain) {
      for (const auto& reference : f->plain->references) {
        f->plainContent.push_back(reference);
        for (const auto& instance : reference->instances) f->plainContent.push_back(instance);
      }
      for (std::size_t i = 0; i < f->content.size(); ++i) {
        f->plainContentKova[0].push_back(f->contentKova[0][i].ConvertToChar());
        f->plainContentKova[1].push_back(f->contentKova[1][i].ConvertToChar());
      }
    }
  }
  // The indexes are made by the first look-ups, before any step is timed.
  KOVAMappingInstance instance;
  KOVAMappingReference reference;
  f->table.GetInstanceFromKOVAId(f->instanceKova.empty() ? ZANUnicodeString() : f->instanceKova[0], instance);
  f->table.GetReferenceFromKOVAId("", reference);
  return f;
}

// One fixture per benchmark (and thread), kept while Google Benchmark calls the same benchmark
// again with more iterations; the fixture of the previous benchmark is let go.
Fixture* FixtureFor(const benchmark::State& state, const char* name, bool plain, bool content) {
  using Key = std::tuple<std::string, std::int64_t, std::int64_t>;
  static std::map<int, std::pair<Key, std::unique_ptr<Fixture>>> byThread;
  static std::mutex lock;
  const Key key{name, state.range(0), state.range(1)};
  std::lock_guard<std::mutex> guard(lock);
  auto& slot = byThread[state.thread_index()];
  if (!slot.second || slot.first != key) {
    slot.second.reset();
    slot.second = MakeFixture(kova::bench::ShapeNumbered(state.range(0)), static_cast<std::size_t>(state.range(1)),
                              plain, content);
    slot.first = key;
  }
  return slot.second.get();
}

// The next position of an order, turning the pass over at its end.
std::uint32_t Step(Fixture& f, const std::vector<std::uint32_t>& order) {
  const std::uint32_t at = order[f.next];
  if (++f.next == order.size()) {
    f.next = 0;
    f.pass ^= 1;
  }
  return at;
}

void Finish(benchmark::State& state, const Fixture& f) {
  state.SetItemsProcessed(state.iterations());
  state.counters["objects"] = benchmark::Counter(static_cast<double>(f.objects), benchmark::Counter::kAvgThreads);
}

#define KOVA_FIXTURE(plain, content)                              \
  Fixture* fixture = FixtureFor(state, __func__, plain, content); \
  if (fixture == nullptr || fixture->instanceKova.empty()) {      \
    state.SkipWithError("no table");                              \
    return;                                                       \
  }                                                               \
  Fixture& f = *fixture

// --- The library ----------------------------------------------------------------------------------

void LibraryLookup(benchmark::State& state) {
  KOVA_FIXTURE(false, false);
  KOVAMappingInstance found;
  for (auto _ : state) {
    if (f.table.GetInstanceFromKOVAId(f.instanceKova[Step(f, f.instanceOrder)], found) != S_OK) {
      state.SkipWithError("not found");
    }
  }
  Finish(state, f);
}

void LibrarySyncSteps(benchmark::State& state, Fixture& f) {
  KOVAMappingInstance found;
  for (auto _ : state) {
    const int pass = f.pass;
    const std::uint32_t at = Step(f, f.instanceOrder);
    if (f.table.GetInstanceFromKOVAId(f.instanceKova[at], found) != S_OK) state.SkipWithError("not found");
    found.SetPlexoID(f.instancePlexo[pass ^ 1][at]);
    found.SetKSStamp(kStamps[pass]);
  }
}

void LibrarySync(benchmark::State& state) {
  KOVA_FIXTURE(false, false);
  LibrarySyncSteps(state, f);
  Finish(state, f);
}

void LibraryThreads(benchmark::State& state) {
  KOVA_FIXTURE(false, false);
  LibrarySyncSteps(state, f);
  Finish(state, f);
}

void LibraryRename(benchmark::State& state) {
  KOVA_FIXTURE(false, true);
  KOVAMappingInstance instance;
  KOVAMappingReference reference;
  for (auto _ : state) {
    const int pass = f.pass;
    const std::uint32_t at = Step(f, f.contentOrder);
    const ZANUnicodeString& id = f.contentKova[pass ^ 1][at];
    f.content[at].SetKOVAID(id);
    const HRESULT status =
        f.isReference[at] ? f.table.GetReferenceFromKOVAId(id, reference) : f.table.GetInstanceFromKOVAId(id, instance);
    if (status != S_OK) state.SkipWithError("not found");
  }
  Finish(state, f);
}

void LibraryListAndFind(benchmark::State& state) {
  KOVA_FIXTURE(false, false);
  KOVAMappingInstance found;
  std::size_t nextReference = 0;
  for (auto _ : state) {
    std::vector<KOVAMappingReference>& references = f.table.GetReferences();
    std::vector<KOVAMappingInstance>& instances = references[f.referenceOrder[nextReference]].GetInstances();
    benchmark::DoNotOptimize(instances.data());
    if (++nextReference == f.referenceOrder.size()) nextReference = 0;
    if (f.table.GetInstanceFromPlexoId(f.instancePlexo[0][Step(f, f.instanceOrder)], found) != S_OK) {
      state.SkipWithError("not found");
    }
  }
  Finish(state, f);
}

void LibraryTwoTables(benchmark::State& state) {
  KOVA_FIXTURE(false, false);
  static const std::unique_ptr<Fixture> small = MakeFixture(Shape::kTenPerReference, 110, false, false);
  KOVAMappingInstance found;
  KOVAMappingInstance other;
  std::size_t nextSmall = 0;
  int smallPass = 0;
  for (auto _ : state) {
    if (small->table.GetInstanceFromKOVAId(small->instanceKova[nextSmall], other) != S_OK) state.SkipWithError("small");
    other.SetPlexoID(small->instancePlexo[smallPass ^ 1][nextSmall]);
    if (++nextSmall == small->instanceKova.size()) {
      nextSmall = 0;
      smallPass ^= 1;
    }
    if (f.table.GetInstanceFromKOVAId(f.instanceKova[Step(f, f.instanceOrder)], found) != S_OK) {
      state.SkipWithError("not found");
    }
  }
  Finish(state, f);
}

void LibraryRemoveReadd(benchmark::State& state) {
  KOVA_FIXTURE(false, false);
  const std::size_t count = f.referencePlexo.size();
  std::mt19937 random(3);
  KOVAMappingReference reference;
  for (auto _ : state) {
    if (f.table.GetReferenceFromPlexoId(f.referencePlexo[random() % count], reference) != S_OK ||
        f.table.RemoveReference(reference) != S_OK || f.table.AddReference(reference) != S_OK) {
      state.SkipWithError("remove or add failed");
    }
  }
  Finish(state, f);
}

// --- The plain model ------------------------------------------------------------------------------

void PlainLookup(benchmark::State& state) {
  KOVA_FIXTURE(true, false);
  for (auto _ : state) {
    auto found = f.plain->FindInstanceByKova(f.plainKova[Step(f, f.instanceOrder)]);
    if (!found) state.SkipWithError("not found");
    benchmark::DoNotOptimize(found);
  }
  Finish(state, f);
}

void PlainSyncSteps(benchmark::State& state, Fixture& f) {
  for (auto _ : state) {
    const int pass = f.pass;
    const std::uint32_t at = Step(f, f.instanceOrder);
    auto found = f.plain->FindInstanceByKova(f.plainKova[at]);
    if (!found) state.SkipWithError("not found");
    f.plain->SetPlexo(*found, f.plainPlexo[pass ^ 1][at]);
    found->stamp = kStamps[pass].ConvertToChar();
  }
}

void PlainSync(benchmark::State& state) {
  KOVA_FIXTURE(true, false);
  PlainSyncSteps(state, f);
  Finish(state, f);
}

void PlainThreads(benchmark::State& state) {
  KOVA_FIXTURE(true, false);
  PlainSyncSteps(state, f);
  Finish(state, f);
}

void PlainRename(benchmark::State& state) {
  KOVA_FIXTURE(true, true);
  for (auto _ : state) {
    const int pass = f.pass;
    const std::uint32_t at = Step(f, f.contentOrder);
    const std::string& id = f.plainContentKova[pass ^ 1][at];
    bool found;
    if (f.isReference[at]) {
      auto& reference = static_cast<kova::bench::PlainReference&>(*f.plainContent[at]);
      f.plain->SetKova(reference, id);
      found = f.plain->FindReferenceByKova(id) != nullptr;
    } else {
      auto& instance = static_cast<kova::bench::PlainInstance&>(*f.plainContent[at]);
      f.plain->SetKova(instance, id);
      found = f.plain->FindInstanceByKova(id) != nullptr;
    }
    if (!found) state.SkipWithError("not found");
  }
  Finish(state, f);
}

void PlainListAndFind(benchmark::State& state) {
  KOVA_FIXTURE(true, false);
  std::size_t nextReference = 0;
  for (auto _ : state) {
    const auto& references = f.plain->references;
    const auto& instances = references[f.referenceOrder[nextReference]]->instances;
    benchmark::DoNotOptimize(instances.data());
    if (++nextReference == f.referenceOrder.size()) nextReference = 0;
    auto found = f.plain->FindInstanceByPlexo(f.plainPlexo[0][Step(f, f.instanceOrder)]);
    if (!found) state.SkipWithError("not found");
    benchmark::DoNotOptimize(found);
  }
  Finish(state, f);
}

void PlainTwoTables(benchmark::State& state) {
  KOVA_FIXTURE(true, false);
  static const std::unique_ptr<Fixture> small = MakeFixture(Shape::kTenPerReference, 110, true, false);
  std::size_t nextSmall = 0;
  int smallPass = 0;
  for (auto _ : state) {
    auto other = small->plain->FindInstanceByKova(small->plainKova[nextSmall]);
    if (!other) state.SkipWithError("small");
    small->plain->SetPlexo(*other, small->plainPlexo[smallPass ^ 1][nextSmall]);
    if (++nextSmall == small->plainKova.size()) {
      nextSmall = 0;
      smallPass ^= 1;
    }
    auto found = f.plain->FindInstanceByKova(f.plainKova[Step(f, f.instanceOrder)]);
    if (!found) state.SkipWithError("not found");
    benchmark::DoNotOptimize(found);
  }
  Finish(state, f);
}

void PlainRemoveReadd(benchmark::State& state) {
  KOVA_FIXTURE(true, false);
  const std::size_t count = f.plain->references.size();
  std::mt19937 random(3);
  for (auto _ : state) {
    std::shared_ptr<kova::bench::PlainReference> reference = f.plain->references[random() % count];
    f.plain->RemoveReference(*reference);
    f.plain->AddReference(reference);
  }
  Finish(state, f);
}

// --- The walk that defines the answers ----------------------------------------------------------

void WalkLookup(benchmark::State& state) {
  KOVA_FIXTURE(false, false);
  for (auto _ : state) {
    const ZANUnicodeString& id = f.instanceKova[Step(f, f.instanceOrder)];
    const KOVAMappingInstance* found = nullptr;
    for (KOVAMappingReference& reference : f.table.GetReferences()) {
      for (const KOVAMappingInstance& instance : reference.GetInstances()) {
        if (instance.GetKOVAID() == id) {
          found = &instance;
          break;
        }
      }
      if (found != nullptr) break;
    }
    if (found == nullptr) state.SkipWithError("not found");
    benchmark::DoNotOptimize(found);
  }
  Finish(state, f);
}

void AllSizes(benchmark::internal::Benchmark* b) {
  for (int shape : {0, 1})
    for (int objects : {10000, 100000, 1000000}) b->Args({shape, objects});
  b->ArgNames({"shape", "objects"});
}

void WalkSizes(benchmark::internal::Benchmark* b) {
  for (int shape : {0, 1})
    for (int objects : {10000, 100000}) b->Args({shape, objects});
  b->ArgNames({"shape", "objects"});
}

void Register() {
  const std::pair<const char*, void (*)(benchmark::State&)> workflows[] = {
      {"library/lookup", LibraryLookup},
      {"plain/lookup", PlainLookup},
      {"library/sync", LibrarySync},
      {"plain/sync", PlainSync},
      {"library/rename", LibraryRename},
      {"plain/rename", PlainRename},
      {"library/list-and-find", LibraryListAndFind},
      {"plain/list-and-find", PlainListAndFind},
      {"library/two-tables", LibraryTwoTables},
      {"plain/two-tables", PlainTwoTables},
      {"library/remove-readd", LibraryRemoveReadd},
      {"plain/remove-readd", PlainRemoveReadd},
  };
  for (const auto& [name, function] : workflows) benchmark::RegisterBenchmark(name, function)->Apply(AllSizes);
  benchmark::RegisterBenchmark("library/threads", LibraryThreads)->Apply(AllSizes)->Threads(2);
  benchmark::RegisterBenchmark("plain/threads", PlainThreads)->Apply(AllSizes)->Threads(2);
  benchmark::RegisterBenchmark("walk/lookup", WalkLookup)->Apply(WalkSizes);
}

}  // namespace

int main(int argc, char** argv) {
  Register();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
