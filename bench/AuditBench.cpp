// What `kova-mapping audit` costs beside the library reading the same documents, in one process:
// each iteration runs the tool's audit (RunAudit, its report written to /dev/null) on one thread and
// on two, and the library reading every document on one thread (ReadInput and
// TranslateToMappingTable, as a host reading files does), in turn, so that the machine's drift
// touches them alike; the library's reading on two threads gives the machine's own speed-up.
//
// Counters: NAME_ns_per_document for each way, speedup_2_jobs (the rate of -j 2 over -j 1),
// audit_over_library (the time of -j 1 over the library's reading; the audit also walks the folder,
// checks what it reads and summarises) and library_speedup_2_threads (the library's own reading on
// two threads over one: what the machine gives two threads at the time of the run).
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "AuditFolder.h"
#include "Commands.h"
#include "Documents.h"
#include "Io.h"

namespace {

using Clock = std::chrono::steady_clock;

kova::bench::AuditFolder* gFolder = nullptr;

double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

double ToolAudit(const std::string& folder, int jobs) {
  kova::tool::AuditOptions options;
  options.paths = {folder};
  options.jobs = jobs;
  options.progress = false;
  options.output = "/dev/null";
  const Clock::time_point start = Clock::now();
  if (kova::tool::RunAudit(options) != 0) throw std::runtime_error("a generated document did not read");
  return Since(start);
}

// The library reading every document, on threads taking the next document in turn.
double LibraryRead(const std::vector<std::string>& paths, int threads) {
  const Clock::time_point start = Clock::now();
  if (kova::bench::ReadWithLibrary(paths, threads) != paths.size()) {
    throw std::runtime_error("a generated document did not read");
  }
  return Since(start);
}

void BM_AuditSideBySide(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const std::vector<std::string> paths = gFolder->Paths(count);
  const std::string folder = gFolder->Folder().string();
  double oneJob = 0;
  double twoJobs = 0;
  double library = 0;
  double libraryTwoThreads = 0;
  try {
    for (auto _ : state) {
      const double first = ToolAudit(folder, 1);
      twoJobs += ToolAudit(folder, 2);
      library += LibraryRead(paths, 1);
      libraryTwoThreads += LibraryRead(paths, 2);
      oneJob += first;
      state.SetIterationTime(first);
    }
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  const double iterations = static_cast<double>(state.iterations());
  const double documents = static_cast<double>(count) * iterations;
  state.counters["audit_1_job_ns_per_document"] = oneJob * 1e9 / documents;
  state.counters["audit_2_jobs_ns_per_document"] = twoJobs * 1e9 / documents;
  state.counters["library_ns_per_document"] = library * 1e9 / documents;
  state.counters["library_2_threads_ns_per_document"] = libraryTwoThreads * 1e9 / documents;
  state.counters["library_speedup_2_threads"] = library / libraryTwoThreads;
  state.counters["speedup_2_jobs"] = oneJob / twoJobs;
  state.counters["audit_over_library"] = oneJob / library;
}

}  // namespace

// The audit walks the whole folder, which holds exactly the documents of the run: the sizes go up.
BENCHMARK(BM_AuditSideBySide)
    ->ArgName("documents")
    ->Arg(500)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  kova::bench::AuditFolder folder;
  gFolder = &folder;
  benchmark::RunSpecifiedBenchmarks();
  gFolder = nullptr;
  benchmark::Shutdown();
  return 0;
}
