// The documents the audit benchmarks read from disk: generated documents of about a hundred objects
// each (ten references of nine instances, part names, as `kova-mapping generate --references 10
// --instances 9 --seed N` writes them), in a temporary folder made at the first use and removed
// when the folder object ends. Not thread-safe: one thread asks for the paths. And the library's
// own reading of them, the yardstick of the audits.
#ifndef KOVA_BENCH_AUDITFOLDER_H_
#define KOVA_BENCH_AUDITFOLDER_H_

#include <KOVAGenerator/DocumentText.h>
#include <KOVAGenerator/Options.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <stdlib.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace kova::bench {

class AuditFolder {
 public:
  AuditFolder() = default;
  AuditFolder(const AuditFolder&) = delete;
  AuditFolder& operator=(const AuditFolder&) = delete;
  ~AuditFolder() {
    if (!folder_.empty()) {
      std::error_code ignored;
      std::filesystem::remove_all(folder_, ignored);
    }
  }

  // The folder, made at the first use.
  const std::filesystem::path& Folder() {
    if (folder_.empty()) {
      std::string pattern = (std::filesystem::temp_directory_path() / "kova-bench-audit-XXXXXX").string();
      if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a temporary folder");
      folder_ = pattern;
    }
    return folder_;
  }

  // The paths of the first count documents, written when missing; the folder holds no others.
  std::vector<std::string> Paths(std::size_t count) {
    const std::filesystem::path& folder = Folder();
    while (paths_.size() < count) {
      kova::generator::Options options;
      options.shape = kova::generator::Shape::kGrid;
      options.references = 10;
      options.instances = 9;
      options.seed = static_cast<std::uint32_t>(paths_.size() + 1);
      const std::string path = (folder / ("document-" + std::to_string(paths_.size()) + ".json")).string();
      std::ofstream out(path, std::ios::binary);
      kova::generator::WriteDocument(options, [&](std::string_view piece) {
        out.write(piece.data(), static_cast<std::streamsize>(piece.size()));
      });
      if (!out) throw std::runtime_error("cannot write " + path);
      paths_.push_back(path);
    }
    return {paths_.begin(), paths_.begin() + static_cast<std::ptrdiff_t>(count)};
  }

 private:
  std::filesystem::path folder_;
  std::vector<std::string> paths_;
};

// Reads every document with the library (TranslateToMappingTable of the file's text, as a host
// reading files does) on threads taking the next document in turn; the number that read.
inline std::size_t ReadWithLibrary(const std::vector<std::string>& paths, int threads) {
  std::atomic<std::size_t> next{0};
  std::atomic<std::size_t> good{0};
  const auto work = [&] {
    for (std::size_t i = next++; i < paths.size(); i = next++) {
      std::ifstream in(paths[i], std::ios::binary | std::ios::ate);
      std::string text(static_cast<std::size_t>(in.tellg()), '\0');
      in.seekg(0);
      in.read(text.data(), static_cast<std::streamsize>(text.size()));
      KOVAMappingTable table;
      if (KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString::FromValidUTF8(std::move(text)), ZANBaseUnknown(),
                                                     table) == S_OK) {
        ++good;
      }
    }
  };
  std::vector<std::thread> others;
  for (int t = 1; t < threads; ++t) others.emplace_back(work);
  work();
  for (std::thread& thread : others) thread.join();
  return good;
}

}  // namespace kova::bench

#endif  // KOVA_BENCH_AUDITFOLDER_H_
