// Peak memory of reading one generated document:
//   kova_bench_peak_memory <shape 0|1> <objects> [keep|hand-over]
// Writes the document to a file, then runs itself again on that file, so that the measuring process
// holds nothing but the text before it reads. With "keep" (the default) the caller keeps its text
// and TranslateToMappingTable gets a copy of it; with "hand-over" the caller moves its text into
// the call, which the by-value parameter allows. Prints one line:
//   shape objects text_bytes peak_delta_bytes ratio mode
// where peak_delta_bytes is the growth of the peak resident set (ru_maxrss) while reading, table
// included, and ratio is (text_bytes + peak_delta_bytes) / text_bytes: the peak over the text.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "BenchDocuments.h"

namespace {

long MaxRssBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss * 1024L;
}

int Measure(const char* path, const char* label, bool handOver) {
  std::string text;
  {
    std::ifstream in(path, std::ios::binary);
    in.seekg(0, std::ios::end);
    text.resize(static_cast<std::size_t>(in.tellg()));
    in.seekg(0);
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
  }
  ZANUnicodeString document = ZANUnicodeString::FromValidUTF8(std::move(text));
  const std::size_t bytes = document.GetLengthInByte();
  const long before = MaxRssBytes();
  KOVAMappingTable table;
  const HRESULT status = handOver
                             ? KOVAMappingParser::TranslateToMappingTable(std::move(document), ZANBaseUnknown(), table)
                             : KOVAMappingParser::TranslateToMappingTable(document, ZANBaseUnknown(), table);
  if (status != S_OK) return 2;
  const long after = MaxRssBytes();
  const double size = static_cast<double>(bytes);
  std::printf("%s %zu %ld %.2f %s\n", label, bytes, after - before, (size + static_cast<double>(after - before)) / size,
              handOver ? "hand-over" : "keep");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 5 && std::string(argv[1]) == "--measure") return Measure(argv[2], argv[3], std::string(argv[4]) == "1");
  const bool handOver = argc == 4 && std::string(argv[3]) == "hand-over";
  if (argc != 3 && !(argc == 4 && (handOver || std::string(argv[3]) == "keep"))) {
    std::fprintf(stderr, "usage: %s <shape 0|1> <objects> [keep|hand-over]\n", argv[0]);
    return 1;
  }
  const kova::bench::Shape shape = kova::bench::ShapeNumbered(std::atoll(argv[1]));
  const std::size_t objects = std::strtoull(argv[2], nullptr, 10);
  const std::string path = "/tmp/kova_peak_" + std::to_string(getpid()) + ".json";
  {
    const kova::bench::GeneratedDocument doc = kova::bench::MakeBenchDocument(shape, objects);
    std::ofstream(path, std::ios::binary) << doc.text;
  }
  const std::string label = std::string(kova::generator::ShapeName(shape)) + " " + std::to_string(objects);
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    execl("/proc/self/exe", argv[0], "--measure", path.c_str(), label.c_str(), handOver ? "1" : "0",
          static_cast<char*>(nullptr));
    _exit(3);
  }
  int status = 0;
  waitpid(child, &status, 0);
  std::remove(path.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : 4;
}
