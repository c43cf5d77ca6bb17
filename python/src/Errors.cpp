// kovamapping.Error, raised from C++: the class is defined in Python (kovamapping._error) and
// looked up once, when the extension is imported.
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdio>
#include <cstring>

#include "Binding.h"
#include "Status.h"
#include "Text.h"

namespace kova::python {

namespace {

// kovamapping._error.Error; a new reference kept for the life of the process.
PyObject* gErrorClass = nullptr;

}  // namespace

void BindErrors(py::module_& module) {
  py::object errorClass = py::module_::import("kovamapping._error").attr("Error");
  gErrorClass = errorClass.release().ptr();
  module.attr("Error") = py::handle(gErrorClass);
}

void RaiseError(std::string_view what, HRESULT status, const std::vector<std::string>& reasons) {
  std::string message(what);
  if (!message.empty()) message += ": ";
  message += "error " + tool::FormatStatus(status);
  for (std::size_t i = 0; i < reasons.size(); ++i) {
    message += i == 0 ? ": " : "; ";
    message += reasons[i];
  }
  py::list messages;
  for (const std::string& reason : reasons) messages.append(py::str(reason));
  py::object error = py::handle(gErrorClass)(message, UnsignedStatus(status), messages);
  PyErr_SetObject(gErrorClass, error.ptr());
  throw py::error_already_set();
}

void RaiseToolError(const std::exception& error, const py::object& filename) {
  const auto* toolError = dynamic_cast<const tool::ToolError*>(&error);
  if (toolError != nullptr && toolError->osError() != 0) {
    // OSError(errno, strerror, filename) makes the subclass of the error number
    // (FileNotFoundError, IsADirectoryError, PermissionError, ...).
    py::object raised = py::handle(PyExc_OSError)(toolError->osError(), std::strerror(toolError->osError()), filename);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(raised.ptr())), raised.ptr());
    throw py::error_already_set();
  }
  const HRESULT status = toolError != nullptr ? toolError->status() : E_FAIL;
  py::list messages;
  messages.append(py::str(error.what()));
  py::object raised = py::handle(gErrorClass)(py::str(error.what()), UnsignedStatus(status), messages);
  PyErr_SetObject(gErrorClass, raised.ptr());
  throw py::error_already_set();
}

bool ValidUtf8(std::string_view bytes, ZANUnicodeString& text) {
  // The library's string keeps valid UTF-8 as it is and replaces what is not.
  text = ZANUnicodeString(bytes);
  return text.View() == bytes;
}

ByteSource::ByteSource(const py::object& source) : buffer_(py::reinterpret_borrow<py::buffer>(source).request()) {
  if (PyBuffer_IsContiguous(buffer_.view(), 'C') != 0) {
    view_ = std::string_view(static_cast<const char*>(buffer_.ptr),
                             static_cast<std::size_t>(buffer_.size * buffer_.itemsize));
    return;
  }
  buffer_ = py::buffer_info();
  copy_ = py::reinterpret_steal<py::object>(PyBytes_FromObject(source.ptr()));
  if (!copy_) throw py::error_already_set();
  view_ = std::string_view(PyBytes_AS_STRING(copy_.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(copy_.ptr())));
}

void RaiseNotUtf8(std::string_view bytes) {
  const std::size_t offset = tool::FindInvalidUtf8(bytes).value_or(0);
  PyObject* error = PyUnicodeDecodeError_Create("utf-8", bytes.data(), static_cast<Py_ssize_t>(bytes.size()),
                                                static_cast<Py_ssize_t>(offset), static_cast<Py_ssize_t>(offset + 1),
                                                "not UTF-8: invalid byte");
  if (error != nullptr) {
    PyErr_SetObject(PyExc_UnicodeDecodeError, error);
    Py_DECREF(error);
  }
  throw py::error_already_set();
}

}  // namespace kova::python
