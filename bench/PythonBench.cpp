// What the Python package kovamapping costs beside the C++ calls it stands on, measured in one
// process: an embedded interpreter imports the package of this build (<build>/python), and each
// benchmark runs the C++ way and the Python way of the same work in turn within every iteration,
// so that the machine's drift touches them alike.
//
//  - BM_Read: KOVAMappingParser::TranslateToMappingTable of the generated document against
//    kovamapping.read of the same text, given as a str and as bytes;
//  - BM_Write: KOVAMappingParser::TranslateToString against Table.to_json(), on the same table;
//  - BM_Iterate: every object of a table with its kOVA id read (`for o in table: o.kova_id`),
//    against the same walk in C++ and against the Python loop alone (`for o in table: pass`);
//  - BM_Audit: kovamapping.audit of generated documents on disk, on one worker and on two,
//    against the same reads in C++ on one thread and on two.
//
// The counters NAME_ns_per_object (NAME_ns_per_document for the audit) are the time of each way
// per object; NAME_x the time of each way over the first one's. The time of an iteration is that
// of the first way. The goals of the package are checked by bench/python_report.py.
#include <KOVAGenerator/DocumentText.h>
#include <KOVAGenerator/Options.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <benchmark/benchmark.h>
#include <pybind11/embed.h>
#include <pybind11/stl.h>
#include <stdlib.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "AuditFolder.h"
#include "BenchDocuments.h"

#ifndef KOVA_PYTHON_PACKAGE_PARENT
#error "KOVA_PYTHON_PACKAGE_PARENT names the folder holding the kovamapping package of the build"
#endif

namespace {

namespace py = pybind11;
namespace fs = std::filesystem;

using kova::bench::GeneratedDocument;
using Clock = std::chrono::steady_clock;

double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// The loops timed on the Python side, written as a user of the package writes them.
constexpr char kPythonHelpers[] = R"(
import kovamapping

def walk_kova_ids(table):
    for o in table:
        o.kova_id

def walk_only(table):
    for o in table:
        pass

def audit_all(paths, workers):
    ok = 0
    for record in kovamapping.audit(paths, workers=workers):
        ok += record.ok
    return ok
)";

// The package and the helpers above, made once the interpreter runs and dropped before it stops.
struct PythonSide {
  py::module_ package = py::module_::import("kovamapping");
  py::dict helpers;

  PythonSide() {
    helpers["__builtins__"] = py::module_::import("builtins");
    py::exec(kPythonHelpers, helpers);
  }

  py::object Helper(const char* name) const { return helpers[name]; }
};

PythonSide* gPython = nullptr;

// --- Running several ways side by side ----------------------------------------------------------

// One way of doing the work: its name in the counters, and the call that does it once and returns
// the time of the work alone (false in ok when it went wrong).
struct Way {
  const char* name;
  std::function<double(bool& ok)> once;
};

// Runs every way once untimed (what stays from one call to the next is in place), then, in every
// iteration, each way once, in an order that turns from one iteration to the next. The time of an
// iteration is the first way's. Sets the counters NAME_ns_per_UNIT (the time of each way per unit
// of work), NAME_x (its time over the first way's) and UNITs (how many units one call does).
void SideBySide(benchmark::State& state, std::vector<Way>& ways, std::size_t units, const std::string& unit) {
  std::vector<double> total(ways.size(), 0.0);
  for (Way& way : ways) {
    bool ok = false;
    way.once(ok);
    if (!ok) {
      state.SkipWithError((std::string(way.name) + " failed").c_str());
      return;
    }
  }
  std::size_t turn = 0;
  for (auto _ : state) {
    for (std::size_t k = 0; k < ways.size(); ++k) {
      const std::size_t w = (k + turn) % ways.size();
      bool ok = false;
      const double elapsed = ways[w].once(ok);
      if (!ok) state.SkipWithError((std::string(ways[w].name) + " failed").c_str());
      total[w] += elapsed;
      if (w == 0) state.SetIterationTime(elapsed);
    }
    ++turn;
  }
  const double calls = static_cast<double>(state.iterations()) * static_cast<double>(units);
  for (std::size_t w = 0; w < ways.size(); ++w) {
    state.counters[std::string(ways[w].name) + "_ns_per_" + unit] = total[w] / calls * 1e9;
    if (w > 0) state.counters[std::string(ways[w].name) + "_x"] = total[w] / total[0];
  }
  state.counters[unit + "s"] = static_cast<double>(units);
}

// Runs body, turning a Python exception into the benchmark's error.
template <class Body>
void Guarded(benchmark::State& state, Body body) {
  try {
    body();
  } catch (const py::error_already_set& error) {
    state.SkipWithError(error.what());
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
  }
}

const GeneratedDocument& DocumentOf(const benchmark::State& state) {
  return kova::bench::CachedBenchDocument(kova::bench::ShapeNumbered(state.range(0)),
                                          static_cast<std::size_t>(state.range(1)));
}

// --- Reading and writing ------------------------------------------------------------------------

// A table of the document read with kovamapping.read, checked to hold every object.
py::object ReadWithPython(const py::object& source, std::size_t objects, bool& ok) {
  py::object table = gPython->package.attr("read")(source);
  ok = py::len(table) == objects;
  return table;
}

void BM_Read(benchmark::State& state) {
  Guarded(state, [&] {
    const GeneratedDocument& doc = DocumentOf(state);
    const ZANUnicodeString text = ZANUnicodeString::FromValidUTF8(doc.text);
    const py::str pyText(doc.text);
    const py::bytes pyBytes(doc.text);
    // The text is given by value to the C++ call, so each read copies it, as the package does
    // from the str's or the bytes' UTF-8. Tables are freed once the time is taken.
    const auto python = [&](const py::object& source) {
      return [&doc, &source](bool& ok) {
        const Clock::time_point start = Clock::now();
        py::object table = ReadWithPython(source, doc.objects, ok);
        const double elapsed = Since(start);
        table = py::none();
        return elapsed;
      };
    };
    std::vector<Way> ways = {
        {"cxx",
         [&](bool& ok) {
           KOVAMappingTable table;
           const Clock::time_point start = Clock::now();
           ok = KOVAMappingParser::TranslateToMappingTable(text, ZANBaseUnknown(), table) == S_OK;
           return Since(start);
         }},
        {"python_str", python(pyText)},
        {"python_bytes", python(pyBytes)},
    };
    SideBySide(state, ways, doc.objects, "object");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * doc.text.size()));
  });
}

void BM_Write(benchmark::State& state) {
  Guarded(state, [&] {
    const GeneratedDocument& doc = DocumentOf(state);
    bool ok = false;
    // One table for both: the one Python holds, reached from C++ through the package's binding.
    const py::object pyTable = ReadWithPython(py::str(doc.text), doc.objects, ok);
    if (!ok) throw std::runtime_error("kovamapping.read did not give every object");
    KOVAMappingTable& table = pyTable.cast<KOVAMappingTable&>();
    const ZANUnicodeString expected = KOVAMappingParser::TranslateToString(table);
    if (pyTable.attr("to_json")().cast<std::string>() != expected.View()) {
      throw std::runtime_error("Table.to_json() differs from TranslateToString");
    }
    std::vector<Way> ways = {
        {"cxx",
         [&](bool& written) {
           const Clock::time_point start = Clock::now();
           ZANUnicodeString out = KOVAMappingParser::TranslateToString(table);
           const double elapsed = Since(start);
           written = out.View().size() == expected.View().size();
           return elapsed;
         }},
        {"python",
         [&](bool& written) {
           const Clock::time_point start = Clock::now();
           py::object out = pyTable.attr("to_json")();
           const double elapsed = Since(start);
           written = static_cast<std::size_t>(PyUnicode_GET_LENGTH(out.ptr())) == expected.View().size();
           return elapsed;
         }},
    };
    SideBySide(state, ways, doc.objects, "object");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * expected.View().size()));
  });
}

// --- Walking a table ----------------------------------------------------------------------------

void BM_Iterate(benchmark::State& state) {
  Guarded(state, [&] {
    const GeneratedDocument& doc = DocumentOf(state);
    bool ok = false;
    const py::object pyTable = ReadWithPython(py::str(doc.text), doc.objects, ok);
    if (!ok) throw std::runtime_error("kovamapping.read did not give every object");
    const KOVAMappingTable& table = pyTable.cast<KOVAMappingTable&>();
    const auto python = [&](const char* helper) {
      return [&pyTable, function = gPython->Helper(helper)](bool& done) {
        const Clock::time_point start = Clock::now();
        function(pyTable);
        done = true;
        return Since(start);
      };
    };
    std::vector<Way> ways = {
        {"python", python("walk_kova_ids")},
        {"cxx",
         [&](bool& done) {
           std::size_t seen = 0;
           const Clock::time_point start = Clock::now();
           for (const KOVAMappingReference& reference : table.GetReferences()) {
             ZANUnicodeString id = reference.GetKOVAID();
             benchmark::DoNotOptimize(id);
             ++seen;
             for (const KOVAMappingInstance& instance : reference.GetInstances()) {
               ZANUnicodeString instanceId = instance.GetKOVAID();
               benchmark::DoNotOptimize(instanceId);
               ++seen;
             }
           }
           const double elapsed = Since(start);
           done = seen == doc.objects;
           return elapsed;
         }},
        {"python_loop_only", python("walk_only")},
    };
    SideBySide(state, ways, doc.objects, "object");
  });
}

// --- Auditing documents on disk -----------------------------------------------------------------

kova::bench::AuditFolder* gAuditFolder = nullptr;

void BM_Audit(benchmark::State& state) {
  Guarded(state, [&] {
    const auto count = static_cast<std::size_t>(state.range(0));
    const std::vector<std::string> paths = gAuditFolder->Paths(count);
    const py::list pyPaths = py::cast(paths);
    const py::object auditAll = gPython->Helper("audit_all");
    const auto python = [&](int workers) {
      return [&, workers](bool& ok) {
        const Clock::time_point start = Clock::now();
        const auto good = auditAll(pyPaths, workers).cast<std::size_t>();
        const double elapsed = Since(start);
        ok = good == count;
        return elapsed;
      };
    };
    // The same reads in C++ on threads (no Python at all): what the machine gives two threads at
    // the time of the run, the yardstick of the package's speed-up.
    const auto cxx = [&](int threads) {
      return [&, threads](bool& ok) {
        const Clock::time_point start = Clock::now();
        ok = kova::bench::ReadWithLibrary(paths, threads) == count;
        return Since(start);
      };
    };
    std::vector<Way> ways = {
        {"python_1_worker", python(1)},
        {"python_2_workers", python(2)},
        {"cxx_1_thread", cxx(1)},
        {"cxx_2_threads", cxx(2)},
    };
    SideBySide(state, ways, count, "document");
    // The goal: the rate on two workers over the rate on one.
    state.counters["speedup_2_workers"] = state.counters["python_1_worker_ns_per_document"].value /
                                          state.counters["python_2_workers_ns_per_document"].value;
    state.counters["cxx_speedup_2_threads"] =
        state.counters["cxx_1_thread_ns_per_document"].value / state.counters["cxx_2_threads_ns_per_document"].value;
  });
}

void Documents(benchmark::internal::Benchmark* b) {
  for (int shape : {0, 1}) {
    for (int objects : {10000, 100000, 1000000}) b->Args({shape, objects});
  }
  b->ArgNames({"shape", "objects"})->Unit(benchmark::kMillisecond)->UseManualTime();
}

}  // namespace

BENCHMARK(BM_Read)->Apply(Documents);
BENCHMARK(BM_Write)->Apply(Documents);
BENCHMARK(BM_Iterate)->Apply(Documents);
BENCHMARK(BM_Audit)->ArgName("documents")->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseManualTime();

namespace {

int Run(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  int status = 0;
  {
    py::scoped_interpreter interpreter;
    kova::bench::AuditFolder folder;
    gAuditFolder = &folder;
    try {
      py::module_::import("sys").attr("path").attr("insert")(0, KOVA_PYTHON_PACKAGE_PARENT);
      PythonSide python;
      gPython = &python;
      benchmark::RunSpecifiedBenchmarks();
    } catch (const py::error_already_set& error) {
      std::cerr << "kova_bench_python: " << error.what() << "\n";
      status = 1;
    }
    gPython = nullptr;
    gAuditFolder = nullptr;
  }
  benchmark::Shutdown();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kova_bench_python: %s\n", error.what());
    return 1;
  }
}
