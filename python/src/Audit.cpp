// _AuditRun: many documents checked by threads of its own, without the GIL, their results handed
// to Python in the order the documents were given.
//
// Workers take documents in order and may run ahead of the consumer by a bounded window, so a
// long run holds a bounded number of results (and no more than one open file a worker). Waiting
// for the next result releases the GIL. Destroying the run stops the workers after the documents
// they are reading.
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Binding.h"
#include "Documents.h"
#include "Io.h"
#include "Status.h"
#include "Text.h"

namespace kova::python {

namespace {

struct Source {
  py::object name;   // as given: a path, a name, or None
  std::string path;  // the file to read, when data is not given
  std::string data;  // the document's bytes
  bool isPath = false;
};

struct Result {
  bool ok = false;
  std::optional<HRESULT> status;  // none when the file could not be read
  std::vector<std::string> messages;
  std::int32_t version = 0;
  std::size_t references = 0;
  std::size_t instances = 0;
  std::optional<std::string> root;
  double seconds = 0;
};

Result Check(const Source& source) {
  const auto start = std::chrono::steady_clock::now();
  Result result;
  ZANUnicodeString text;
  bool readable = true;
  if (source.isPath) {
    try {
      text = ZANUnicodeString::FromValidUTF8(tool::ReadInput(source.path));
    } catch (const tool::ToolError& error) {
      readable = false;
      if (error.osError() == 0) result.status = error.status();
      result.messages.emplace_back(error.what());
    }
  } else if (!ValidUtf8(source.data, text)) {
    readable = false;
    result.status = ZAN_E_INVALIDDATA;
    result.messages.push_back("not UTF-8 (invalid byte at offset " +
                              std::to_string(tool::FindInvalidUtf8(source.data).value_or(0)) + ")");
  }
  if (readable) {
    tool::DocumentRead read = tool::ReadDocument(std::move(text));
    result.ok = read.Ok();
    result.status = read.status;
    result.messages = read.Reasons();
    if (result.ok) {
      result.version = tool::RecordedVersion(read.table);
      const auto& references = std::as_const(read.table).GetReferences();
      result.references = references.size();
      for (const auto& reference : references) result.instances += reference.GetInstances().size();
      result.root = tool::RootId(read.table);
    }
  }
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return result;
}

class AuditRun {
 public:
  AuditRun(std::vector<Source> sources, std::size_t workers)
      : sources_(std::move(sources)), results_(sources_.size()), window_(std::max<std::size_t>(64, 16 * workers)) {
    const std::size_t count = std::min(std::max<std::size_t>(workers, 1), std::max<std::size_t>(sources_.size(), 1));
    threads_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) threads_.emplace_back([this] { Work(); });
  }

  ~AuditRun() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      stop_ = true;
    }
    room_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }

  AuditRun(const AuditRun&) = delete;
  AuditRun& operator=(const AuditRun&) = delete;

  // The next result in the order of the sources (waiting without the GIL), or StopIteration.
  py::tuple Next() {
    if (next_ >= sources_.size()) throw py::stop_iteration();
    Result result;
    {
      py::gil_scoped_release released;
      std::unique_lock<std::mutex> lock(mutex_);
      ready_.wait(lock, [this] { return results_[next_].has_value(); });
      result = std::move(*results_[next_]);
      results_[next_].reset();
      ++next_;
    }
    room_.notify_all();
    const Source& source = sources_[next_ - 1];
    py::list messages;
    for (const std::string& message : result.messages) messages.append(py::str(message));
    const auto orNone = [&](auto value) { return result.ok ? py::cast(value) : py::none().cast<py::object>(); };
    return py::make_tuple(source.name, result.ok,
                          result.status ? py::cast(UnsignedStatus(*result.status)) : py::none().cast<py::object>(),
                          messages, orNone(result.version), result.references, result.instances,
                          result.root ? py::cast(*result.root) : py::none().cast<py::object>(), result.seconds);
  }

  std::size_t Size() const { return sources_.size(); }

 private:
  void Work() {
    for (;;) {
      std::size_t index = 0;
      {
        std::unique_lock<std::mutex> lock(mutex_);
        room_.wait(lock, [this] { return stop_ || taken_ >= sources_.size() || taken_ < next_ + window_; });
        if (stop_ || taken_ >= sources_.size()) return;
        index = taken_++;
      }
      Result result = Check(sources_[index]);
      {
        std::lock_guard<std::mutex> lock(mutex_);
        results_[index] = std::move(result);
      }
      ready_.notify_all();
    }
  }

  std::vector<Source> sources_;
  std::vector<std::optional<Result>> results_;
  const std::size_t window_;
  std::mutex mutex_;
  std::condition_variable ready_;  // a result arrived
  std::condition_variable room_;   // the consumer took one, or the run stops
  std::size_t taken_ = 0;          // sources given to workers
  std::size_t next_ = 0;           // results given to Python (changed with the lock held)
  bool stop_ = false;
  std::vector<std::thread> threads_;  // last: started when everything else is ready
};

std::vector<Source> SourcesOf(const py::list& items) {
  std::vector<Source> sources;
  sources.reserve(items.size());
  for (const py::handle item : items) {
    const auto pair = py::reinterpret_borrow<py::tuple>(item);
    Source source;
    source.name = py::reinterpret_borrow<py::object>(pair[0]);
    const py::object data = pair[1];
    if (data.is_none()) {
      source.isPath = true;
      source.path = py::str(py::module_::import("os").attr("fsdecode")(source.name));
      if (source.path == "-") source.path = "./-";
    } else {
      const py::buffer_info buffer = py::reinterpret_borrow<py::buffer>(data).request();
      source.data.assign(static_cast<const char*>(buffer.ptr), static_cast<std::size_t>(buffer.size * buffer.itemsize));
    }
    sources.push_back(std::move(source));
  }
  return sources;
}

}  // namespace

void BindAudit(py::module_& module) {
  py::class_<AuditRun>(module, "_AuditRun")
      .def(py::init([](const py::list& items, std::size_t workers) {
             return std::make_unique<AuditRun>(SourcesOf(items), workers);
           }),
           py::arg("items"), py::arg("workers"))
      .def("__iter__", [](AuditRun& self) -> AuditRun& { return self; })
      .def("__next__", &AuditRun::Next)
      .def("__len__", &AuditRun::Size);
}

}  // namespace kova::python
