// What the parts of the _kovamapping extension share: the conversion of texts between Python and
// the library, the raising of kovamapping.Error, and the registration of each part.
#ifndef KOVA_PYTHON_BINDING_H_
#define KOVA_PYTHON_BINDING_H_

#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Python str <-> ZANUnicodeString. A str is taken as its UTF-8 form (a str holding a lone
// surrogate has none: UnicodeEncodeError); a text is given back as a str.
namespace pybind11::detail {
template <>
struct type_caster<ZANUnicodeString> {
  PYBIND11_TYPE_CASTER(ZANUnicodeString, const_name("str"));

  bool load(handle source, bool) {
    if (!PyUnicode_Check(source.ptr())) return false;
    Py_ssize_t size = 0;
    const char* data = PyUnicode_AsUTF8AndSize(source.ptr(), &size);
    if (data == nullptr) throw error_already_set();
    value = ZANUnicodeString::FromValidUTF8(std::string_view(data, static_cast<std::size_t>(size)));
    return true;
  }

  static handle cast(const ZANUnicodeString& text, return_value_policy, handle) {
    const std::string_view view = text.View();
    PyObject* result = PyUnicode_DecodeUTF8(view.data(), static_cast<Py_ssize_t>(view.size()), nullptr);
    if (result == nullptr) throw error_already_set();
    return result;
  }
};
}  // namespace pybind11::detail

namespace kova::python {

namespace py = pybind11;

// Raises kovamapping.Error: message "<what>: error 0x<status>: <reason>; <reason>" (or without
// what when it is empty), .status the status as an unsigned number, .messages the reasons.
[[noreturn]] void RaiseError(std::string_view what, HRESULT status, const std::vector<std::string>& reasons);
// The Python exception of an error of the tool's code: OSError (of the subclass its error number
// makes, naming filename) for a file that could not be read or written, otherwise
// kovamapping.Error with its message and status.
[[noreturn]] void RaiseToolError(const std::exception& error, const py::object& filename = py::none());

// The status as an unsigned number, as Python shows statuses.
inline unsigned long UnsignedStatus(HRESULT status) {
  return static_cast<unsigned long>(static_cast<std::uint32_t>(status));
}

// The text of bytes when they are UTF-8 (false otherwise); needs no GIL.
bool ValidUtf8(std::string_view bytes, ZANUnicodeString& text);
// Raises UnicodeDecodeError for bytes that are not UTF-8, naming the first bad byte, as
// bytes.decode does.
[[noreturn]] void RaiseNotUtf8(std::string_view bytes);

// The bytes of a bytes-like object, in their logical order, held for as long as this lives (GIL
// held when it ends). A buffer that is one C-contiguous block is used where it lies; any other
// (a strided or reversed memoryview) does not hold the bytes in that order, so they are copied,
// as bytes(source) copies them.
class ByteSource {
 public:
  explicit ByteSource(const py::object& source);
  std::string_view View() const { return view_; }

 private:
  py::buffer_info buffer_;
  py::object copy_;
  std::string_view view_;
};

// Registration of each part of the module.
void BindErrors(py::module_& module);
void BindObjects(py::module_& module);
void BindTables(py::module_& module);
void BindDocuments(py::module_& module);
void BindStamps(py::module_& module);
void BindDiff(py::module_& module);
void BindAudit(py::module_& module);

}  // namespace kova::python

#endif  // KOVA_PYTHON_BINDING_H_
