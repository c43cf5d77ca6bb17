// audit PATH...: many documents checked in parallel threads of this process, then a summary.
//
// The documents are found as they are needed (directories are walked lazily, standard input is read
// line by line), given to an OrderedPool that runs ahead by a bounded window, and reported in the
// order they were found: a hundred thousand documents take no more memory or file descriptors
// than a few hundred.
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Commands.h"
#include "DocumentCheck.h"
#include "Io.h"
#include "OrderedPool.h"
#include "Status.h"
#include "Text.h"

namespace kova::tool {

namespace {

namespace fs = std::filesystem;

// One document to check, or an input that gave none (a directory without documents, a path that
// cannot be listed), reported as a failure of its own.
struct Found {
  std::string path;
  std::optional<std::string> problem;  // set for an input that is not a document
};

// The documents named by the paths, one at a time: files as they are, directories walked depth
// first in name order for the files whose name matches one of the patterns (symbolic links to
// directories are not followed, so links cannot make loops), "-" read as a list of paths, one a
// line. Each directory's entries are listed when it is reached, so memory follows the widest
// directory, not the whole tree.
class DocumentFinder {
 public:
  DocumentFinder(std::vector<std::string> paths, std::vector<std::string> patterns)
      : paths_(std::move(paths)), patterns_(std::move(patterns)) {}

  std::optional<Found> Next() {
    for (;;) {
      if (!walk_.empty()) {
        if (std::optional<Found> found = NextInWalk()) return found;
        continue;
      }
      std::optional<std::string> path = NextPath();
      if (!path) return std::nullopt;
      std::error_code error;
      if (fs::is_directory(fs::status(*path, error)) && !error) {
        root_ = *path;
        foundUnderRoot_ = 0;
        if (std::optional<Found> problem = Enter(*path)) return problem;
        continue;
      }
      // Files, and paths that are missing or unreadable: the check says what is wrong with them.
      return Found{*path, std::nullopt};
    }
  }

 private:
  std::optional<std::string> NextPath() {
    for (;;) {
      if (readingStandardInput_) {
        std::string line;
        if (std::getline(std::cin, line)) {
          if (!line.empty() && line.back() == '\r') line.pop_back();
          if (line.empty()) continue;
          return line;
        }
        readingStandardInput_ = false;
      }
      if (next_ >= paths_.size()) return std::nullopt;
      std::string path = paths_[next_++];
      if (path == "-") {
        if (standardInputUsed_) throw ToolError("-: standard input can be read only once");
        standardInputUsed_ = true;
        readingStandardInput_ = true;
        continue;
      }
      return path;
    }
  }

  bool Matches(const fs::path& path) const {
    const std::string name = path.filename().string();
    return std::any_of(patterns_.begin(), patterns_.end(),
                       [&](const std::string& pattern) { return fnmatch(pattern.c_str(), name.c_str(), 0) == 0; });
  }

  // Lists a directory onto the walk, in name order; a directory that cannot be listed is reported.
  std::optional<Found> Enter(const fs::path& directory) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error)) {
      entries.push_back(it->path());
    }
    if (error) return Found{directory.string(), directory.string() + ": cannot list (" + error.message() + ")"};
    std::sort(entries.begin(), entries.end(), std::greater<>());  // the first name last, taken first
    walk_.push_back(std::move(entries));
    return std::nullopt;
  }

  std::optional<Found> NextInWalk() {
    while (!walk_.empty()) {
      if (walk_.back().empty()) {
        walk_.pop_back();
        continue;
      }
      const fs::path path = std::move(walk_.back().back());
      walk_.back().pop_back();
      std::error_code error;
      const fs::file_status own = fs::symlink_status(path, error);
      if (!error && fs::is_directory(own)) {
        if (std::optional<Found> problem = Enter(path)) return problem;
        continue;
      }
      if (!Matches(path)) continue;
      ++foundUnderRoot_;
      return Found{path.string(), std::nullopt};
    }
    if (foundUnderRoot_ == 0) return Found{root_, root_ + ": no documents"};
    return std::nullopt;
  }

  std::vector<std::string> paths_;
  std::vector<std::string> patterns_;
  std::size_t next_ = 0;
  bool readingStandardInput_ = false;
  bool standardInputUsed_ = false;
  std::vector<std::vector<fs::path>> walk_;  // the entries still to visit of each open directory
  std::string root_;                         // the directory given
  std::size_t foundUnderRoot_ = 0;
};

struct Checked {
  std::string path;
  DocumentSummary summary;
};

Checked CheckFound(const Found& found, const AuditOptions& options) {
  Checked checked{found.path, {}};
  if (found.problem) {
    checked.summary.inputError = true;
    checked.summary.messages.push_back(*found.problem);
    return checked;
  }
  // A file larger than the limit is not read at all.
  struct stat info {};
  if (stat(found.path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
      static_cast<std::uint64_t>(info.st_size) > options.maxSize) {
    checked.summary.inputError = true;
    checked.summary.messages.push_back(found.path + ": too large (" + std::to_string(info.st_size) +
                                       " bytes; the limit is " + std::to_string(options.maxSize) + ")");
    return checked;
  }
  DocumentCheckOptions checkOptions;
  checkOptions.stamps = options.stamps;
  checked.summary = CheckFile(found.path, checkOptions);
  return checked;
}

// A one-line progress bar on standard error: documents done, rate, and the time left once the
// number of documents is known.
class Progress {
 public:
  explicit Progress(bool shown) : shown_(shown), start_(Clock::now()), last_(start_) {}

  void Update(std::size_t done, std::size_t failed, std::optional<std::size_t> total) {
    if (!shown_) return;
    const Clock::time_point now = Clock::now();
    if (now - last_ < std::chrono::milliseconds(100)) return;
    last_ = now;
    Show(done, failed, total, now);
  }

  void Finish(std::size_t done, std::size_t failed) {
    if (!shown_) return;
    Show(done, failed, done, Clock::now());
    std::cerr << '\n';
    std::cerr.flush();
  }

 private:
  using Clock = std::chrono::steady_clock;

  void Show(std::size_t done, std::size_t failed, std::optional<std::size_t> total, Clock::time_point now) {
    const double seconds = std::max(std::chrono::duration<double>(now - start_).count(), 1e-9);
    const double rate = static_cast<double>(done) / seconds;
    char line[256];
    if (total && *total > 0) {
      constexpr int kWidth = 30;
      const auto filled = static_cast<int>(kWidth * static_cast<double>(done) / static_cast<double>(*total));
      const std::string bar = std::string(static_cast<std::size_t>(filled), '#') +
                              std::string(static_cast<std::size_t>(kWidth - filled), '.');
      const double left = rate > 0 ? static_cast<double>(*total - done) / rate : 0;
      std::snprintf(line, sizeof line, "\raudit [%s] %zu/%zu, %zu failed, %.0f docs/s, ETA %.0f s ", bar.c_str(), done,
                    *total, failed, rate, left);
    } else {
      std::snprintf(line, sizeof line, "\raudit %zu documents, %zu failed, %.0f docs/s ", done, failed, rate);
    }
    std::cerr << line;
    std::cerr.flush();
  }

  bool shown_;
  Clock::time_point start_;
  Clock::time_point last_;
};

// What the summary counts.
struct Totals {
  std::size_t documents = 0;
  std::size_t ok = 0;
  std::size_t references = 0;
  std::size_t instances = 0;
  std::size_t oddStamps = 0;
  // Failures grouped by status (or none) and first message, with their counts.
  std::map<std::pair<std::string, std::string>, std::size_t> groups;
  std::vector<std::pair<double, std::string>> slowest;  // the slowest documents, slowest first

  static constexpr std::size_t kSlowest = 5;

  void Add(const Checked& checked) {
    const DocumentSummary& summary = checked.summary;
    ++documents;
    references += summary.references;
    instances += summary.instances;
    oddStamps += summary.oddStamps.size();
    if (summary.ok) {
      ++ok;
    } else {
      const std::string status = summary.status ? FormatStatus(*summary.status) : std::string("-");
      std::string first = summary.messages.empty() ? std::string() : summary.messages.front();
      // An input's own message starts with its path: group on the reason alone.
      if (summary.inputError && first.compare(0, checked.path.size() + 2, checked.path + ": ") == 0) {
        first.erase(0, checked.path.size() + 2);
      }
      ++groups[{status, first}];
    }
    if (summary.inputError) return;
    slowest.emplace_back(summary.seconds, checked.path);
    std::sort(slowest.begin(), slowest.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    if (slowest.size() > kSlowest) slowest.pop_back();
  }

  std::string Text() const {
    std::string text = "summary: " + std::to_string(documents) + " documents, " + std::to_string(ok) + " ok, " +
                       std::to_string(documents - ok) + " failed; " + std::to_string(references) + " references, " +
                       std::to_string(instances) + " instances";
    text += oddStamps > 0 ? ", " + std::to_string(oddStamps) + " stamps not in a known form\n" : "\n";
    if (!groups.empty()) {
      text += "failures by status and first message:\n";
      for (const auto& [key, count] : SortedGroups()) {
        text += "  " + std::to_string(count) + "  " + key.first + "  " + OneLine(key.second) + "\n";
      }
    }
    if (!slowest.empty()) {
      text += "slowest:\n";
      for (const auto& [seconds, path] : slowest) {
        char time[32];
        std::snprintf(time, sizeof time, "%.3f s", seconds);
        text += "  " + std::string(time) + "  " + OneLine(path) + "\n";
      }
    }
    return text;
  }

  std::string Record() const {
    std::vector<std::string> failures;
    for (const auto& [key, count] : SortedGroups()) {
      JsonLine group;
      if (key.first == "-") {
        group.Null("status");
      } else {
        group.String("status", key.first);
      }
      failures.push_back(group.String("message", key.second).Number("count", static_cast<std::int64_t>(count)).Text());
    }
    std::vector<std::string> slow;
    for (const auto& [seconds, path] : slowest)
      slow.push_back(JsonLine().String("file", path).Real("seconds", seconds).Text());
    return JsonLine()
        .Bool("summary", true)
        .Number("documents", static_cast<std::int64_t>(documents))
        .Number("ok", static_cast<std::int64_t>(ok))
        .Number("failed", static_cast<std::int64_t>(documents - ok))
        .Number("references", static_cast<std::int64_t>(references))
        .Number("instances", static_cast<std::int64_t>(instances))
        .Number("odd_stamps", static_cast<std::int64_t>(oddStamps))
        .Raw("failures", JsonArray(failures))
        .Raw("slowest", JsonArray(slow))
        .Text();
  }

  // The groups, the most frequent first (then by status and message).
  std::vector<std::pair<std::pair<std::string, std::string>, std::size_t>> SortedGroups() const {
    std::vector<std::pair<std::pair<std::string, std::string>, std::size_t>> sorted(groups.begin(), groups.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    return sorted;
  }
};

// The text lines of one document: its failure as check shows it, and its odd stamps.
std::string TextLines(const Checked& checked) {
  std::string text;
  const DocumentSummary& summary = checked.summary;
  if (!summary.ok)
    text += summary.inputError ? OneLine(SummaryText(summary)) + "\n"
                               : OneLine(checked.path) + ": " + SummaryText(summary) + "\n";
  for (const OddStamp& stamp : summary.oddStamps) {
    text += OneLine(checked.path) + ": " + (stamp.isInstance ? "instance " : "reference ") + ShowValue(stamp.kovaId) +
            ": stamp " + ShowValue(stamp.stamp) + " (version " + std::to_string(stamp.version) + "): " + stamp.problem +
            "\n";
  }
  return text;
}

}  // namespace

int RunAudit(const AuditOptions& options) {
  std::vector<std::string> patterns = options.globs;
  if (patterns.empty()) patterns = {"*.json", "*.envelope"};
  DocumentFinder finder(options.paths, patterns);
  const std::size_t threads =
      options.jobs > 0 ? static_cast<std::size_t>(options.jobs) : std::max(1U, std::thread::hardware_concurrency());
  Output out(options.output);
  Progress progress(options.progress.value_or(isatty(STDERR_FILENO) == 1));
  OrderedPool<Found, Checked> pool(threads, 8 * threads + 32,
                                   [&options](const Found& found) { return CheckFound(found, options); });
  Totals totals;
  bool found = true;
  while (found || pool.Outstanding() > 0) {
    while (found && pool.HasRoom()) {
      std::optional<Found> next = finder.Next();
      found = next.has_value();
      if (found) pool.Submit(std::move(*next));
    }
    std::optional<Checked> checked = pool.Next();
    if (!checked) continue;
    totals.Add(*checked);
    if (options.json) {
      out.Write(SummaryRecord(checked->path, checked->summary, options.stamps, true).Text() + "\n");
    } else {
      out.Write(TextLines(*checked));
    }
    progress.Update(totals.documents, totals.documents - totals.ok,
                    found ? std::nullopt : std::optional<std::size_t>(totals.documents + pool.Outstanding()));
  }
  progress.Finish(totals.documents, totals.documents - totals.ok);
  out.Write(options.json ? totals.Record() + "\n" : totals.Text());
  out.Commit();
  return totals.ok == totals.documents ? 0 : 1;
}

}  // namespace kova::tool
