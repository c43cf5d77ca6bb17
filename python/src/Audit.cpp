// _AuditRun: many documents checked by threads of their own, without the GIL, their results handed
// to Python in the order the documents were given, with the meaning of kova-mapping audit and check
// (DocumentCheck). Destroying the run stops its threads after the documents they are reading.
#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Binding.h"
#include "DocumentCheck.h"
#include "OrderedPool.h"
#include "Status.h"

namespace kova::python {

namespace {

constexpr std::size_t kMaxWorkers = 1024;

struct Source {
  std::string path;  // the file to read, when data is not given
  std::string data;  // the document's bytes
  bool isPath = false;
};

tool::DocumentSummary Check(const Source& source) {
  const tool::DocumentCheckOptions options;
  return source.isPath ? tool::CheckFile(source.path, options) : tool::CheckBytes(source.data, options);
}

// The documents of one audit, checked by a pool of threads that runs ahead of Python by a bounded
// window; waiting for the next result releases the GIL.
class AuditRun {
 public:
  AuditRun(py::list names, std::vector<Source> sources, std::size_t workers)
      : names_(std::move(names)), sources_(std::move(sources)), pool_(workers, 16 * workers + 64, Check) {}

  py::tuple Next() {
    while (next_ < sources_.size() && pool_.HasRoom()) pool_.Submit(std::move(sources_[next_++]));
    std::optional<tool::DocumentSummary> summary;
    {
      py::gil_scoped_release released;
      summary = pool_.Next();
    }
    if (!summary) throw py::stop_iteration();
    const py::object name = names_[taken_++];
    py::list messages;
    for (const std::string& message : summary->messages) messages.append(py::str(message));
    const py::object none = py::none();
    return py::make_tuple(name, summary->ok, summary->status ? py::cast(UnsignedStatus(*summary->status)) : none,
                          messages, summary->ok ? py::cast(summary->version) : none, summary->references,
                          summary->instances, summary->root ? py::cast(*summary->root) : none, summary->seconds);
  }

  std::size_t Size() const { return sources_.size(); }

 private:
  py::list names_;
  std::vector<Source> sources_;  // each moved to the pool when submitted
  std::size_t next_ = 0;         // the next source to submit
  std::size_t taken_ = 0;        // results given to Python
  tool::OrderedPool<Source, tool::DocumentSummary> pool_;
};

// The sources of (name, data) pairs: data None for a path, else the document's bytes.
std::vector<Source> SourcesOf(const py::list& items, py::list& names) {
  std::vector<Source> sources;
  sources.reserve(items.size());
  const py::object fsdecode = py::module_::import("os").attr("fsdecode");
  for (const py::handle item : items) {
    const auto pair = py::reinterpret_borrow<py::tuple>(item);
    names.append(pair[0]);
    Source source;
    const py::object data = pair[1];
    if (data.is_none()) {
      source.isPath = true;
      source.path = py::str(fsdecode(pair[0]));
      // A name holding a NUL would name another file: ValueError, as open() says.
      if (source.path.find('\0') != std::string::npos) throw py::value_error("embedded null byte");
      // "-" is standard input to the tool's reader; a file of that name is "./-".
      if (source.path == "-") source.path = "./-";
    } else {
      source.data = std::string(ByteSource(data).View());
    }
    sources.push_back(std::move(source));
  }
  return sources;
}

}  // namespace

void BindAudit(py::module_& module) {
  py::class_<AuditRun>(module, "_AuditRun")
      .def(py::init([](const py::list& items, std::size_t workers) {
             py::list names;
             std::vector<Source> sources = SourcesOf(items, names);
             // The pool starts every thread it is asked for, and a thread it cannot start ends the
             // process: no more than the documents, nor than kova-mapping audit --jobs allows (1024).
             const std::size_t threads =
                 std::min({std::max<std::size_t>(workers, 1), std::max<std::size_t>(sources.size(), 1), kMaxWorkers});
             return std::make_unique<AuditRun>(std::move(names), std::move(sources), threads);
           }),
           py::arg("items"), py::arg("workers"))
      .def("__iter__", [](AuditRun& self) -> AuditRun& { return self; })
      .def("__next__", &AuditRun::Next)
      .def("__len__", &AuditRun::Size);
}

}  // namespace kova::python
