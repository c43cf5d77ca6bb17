// Documents: read, to_json, write, and the envelope (pack, unpack). The library's work runs
// without the GIL; what it reads from Python objects (a str's UTF-8 form, a buffer) stays alive and
// unchanged meanwhile because the call holds them.
#include <KOVAMappingServices/KOVAMappingTable.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "Binding.h"
#include "Documents.h"
#include "Io.h"
#include "Status.h"
#include "WriteGate.h"
#include "platform/HugePages.h"

namespace kova::python {

namespace {

// The "-" of the tool's file functions means standard input or output; a file of that name is "./-".
// The empty name, standard output to them too, names no file: FileNotFoundError, as open() says. A
// name holding a NUL would name another file (the part before the NUL): ValueError, as open() says.
std::string FilePath(const py::object& path) {
  std::string name = py::str(py::module_::import("os").attr("fsdecode")(path));
  if (name.empty()) {
    errno = ENOENT;
    PyErr_SetFromErrnoWithFilenameObject(PyExc_OSError, path.ptr());
    throw py::error_already_set();
  }
  if (name.find('\0') != std::string::npos) throw py::value_error("embedded null byte");
  return name == "-" ? "./-" : name;
}

// The table of a read, or kovamapping.Error with the read's status and reasons.
py::object TableOrError(tool::DocumentRead& read, const std::string& what) {
  if (!read.Ok()) RaiseError(what, read.status, read.Reasons());
  return py::cast(std::move(read.table));
}

tool::DocumentRead ReadText(const py::str& source) {
  Py_ssize_t size = 0;
  const char* data = PyUnicode_AsUTF8AndSize(source.ptr(), &size);
  if (data == nullptr) throw py::error_already_set();
  py::gil_scoped_release released;
  return tool::ReadDocument(ZANUnicodeString::FromValidUTF8(std::string_view(data, static_cast<std::size_t>(size))));
}

py::object Read(const py::object& source) {
  if (py::isinstance<py::str>(source)) {
    tool::DocumentRead read = ReadText(source);
    return TableOrError(read, "");
  }
  if (PyObject_CheckBuffer(source.ptr())) {
    const ByteSource held(source);
    const std::string_view bytes = held.View();
    bool valid = false;
    tool::DocumentRead read;
    {
      py::gil_scoped_release released;
      ZANUnicodeString text;
      valid = ValidUtf8(bytes, text);
      if (valid) read = tool::ReadDocument(std::move(text));
    }
    if (!valid) RaiseNotUtf8(bytes);
    return TableOrError(read, "");
  }
  if (py::hasattr(source, "__fspath__")) {
    const std::string path = FilePath(source);
    tool::DocumentRead read;
    try {
      py::gil_scoped_release released;
      read = tool::ReadDocument(tool::ReadInput(path));
    } catch (const tool::ToolError& error) {
      RaiseToolError(error, source);
    }
    return TableOrError(read, path);
  }
  throw py::type_error(
      "read: source must be a str (the document's text), bytes (its UTF-8 text) or an "
      "os.PathLike (its file), not " +
      std::string(Py_TYPE(source.ptr())->tp_name));
}

tool::DocumentForm FormOf(bool compress) {
  return compress ? tool::DocumentForm::kEnvelope : tool::DocumentForm::kPlain;
}

// The table's document, written without the GIL; a copy of the table keeps its content alive.
ZANUnicodeString Written(KOVAMappingTable& table, bool compress) {
  KOVAMappingTable shared(table);
  WriteGate::Writing writing;
  py::gil_scoped_release released;
  return tool::WriteDocument(shared, FormOf(compress), "table");
}

// The str of a written document. Documents are ASCII but for the texts they hold: an ASCII text
// is copied into a new str as it is (without the GIL; its pages advised to be huge, as the C API's
// copies are, which saves most of the page faults of a large fresh buffer); any other is decoded.
py::object DocumentString(const ZANUnicodeString& document) {
  const std::string_view text = document.View();
  bool ascii = true;
  {
    py::gil_scoped_release released;
    ascii = std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  }
  if (!ascii) return py::cast(document);
  PyObject* result = PyUnicode_New(static_cast<Py_ssize_t>(text.size()), 127);
  if (result == nullptr) throw py::error_already_set();
  {
    py::gil_scoped_release released;
    void* data = PyUnicode_DATA(result);
    kova::json::AdviseHugePages(data, text.size());
    std::memcpy(data, text.data(), text.size());
  }
  return py::reinterpret_steal<py::object>(result);
}

py::object ToJson(KOVAMappingTable& table, bool compress) {
  try {
    return DocumentString(Written(table, compress));
  } catch (const tool::ToolError& error) {
    RaiseToolError(error);
  }
}

void Write(KOVAMappingTable& table, const py::object& path, bool compress) {
  const std::string target = FilePath(path);
  try {
    KOVAMappingTable shared(table);
    WriteGate::Writing writing;
    py::gil_scoped_release released;
    const ZANUnicodeString document = tool::WriteDocument(shared, FormOf(compress), "table");
    tool::Output out(target);
    out.Write(document.View());
    out.Commit();
  } catch (const tool::ToolError& error) {
    RaiseToolError(error, path);
  }
}

template <class Work>
py::object EnvelopeCall(const ZANUnicodeString& text, Work work) {
  try {
    ZANUnicodeString result;
    {
      py::gil_scoped_release released;
      result = work(text);
    }
    return py::cast(std::move(result));
  } catch (const tool::ToolError& error) {
    RaiseToolError(error);
  }
}

}  // namespace

void BindDocuments(py::module_& module) {
  module.def("read", &Read, py::arg("source"), R"(Reads a mapping document into a new Table.

source is the document's text (a str; a str is always text, never a path), its UTF-8 bytes, or an
os.PathLike naming its file. Versions 6 to 12, plain JSON or the compressed envelope.

Raises Error with .status and .messages (the reader's reasons, as kova-mapping check gives them)
when the document is refused or is not UTF-8, OSError (FileNotFoundError, IsADirectoryError,
PermissionError, ...) when the file cannot be read, TypeError for any other source.)");

  auto table = py::reinterpret_borrow<py::class_<KOVAMappingTable>>(module.attr("Table"));
  table.def("to_json", &ToJson, py::kw_only(), py::arg("compress") = false,
            "The document of the table at the current version, as the library writes it: compact JSON, or "
            "the compressed envelope with compress=True (whatever IPLX_ACTIVATE_MAPPING_COMPRESSION says).");
  table.def("write", &Write, py::arg("path"), py::kw_only(), py::arg("compress") = false,
            "Writes to_json(compress=...) to the file at path, atomically: a temporary file beside it, renamed "
            "over it when complete. On failure (OSError) an existing file is left as it was.");

  module.def(
      "pack",
      [](const ZANUnicodeString& text) {
        return EnvelopeCall(text, [](const ZANUnicodeString& in) { return tool::PackText(in, "text"); });
      },
      py::arg("text"),
      "The compressed envelope of text: \"V<current version>:<size>:\" and the base64 of its zlib stream.");
  module.def(
      "unpack",
      [](const ZANUnicodeString& text) {
        return EnvelopeCall(text, [](const ZANUnicodeString& in) { return tool::UnpackText(in, "text"); });
      },
      py::arg("text"),
      "The text held by an envelope. Raises Error with the status when text is not an envelope or it does not open.");
}

}  // namespace kova::python
