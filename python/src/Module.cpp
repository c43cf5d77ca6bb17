// _kovamapping: the extension module under the kovamapping package.
#include "Binding.h"

PYBIND11_MODULE(_kovamapping, module) {
  module.doc() = "The C++ core of the kovamapping package; import kovamapping instead.";
  kova::python::BindErrors(module);
  kova::python::BindObjects(module);
  kova::python::BindTables(module);
  kova::python::BindDocuments(module);
  kova::python::BindStamps(module);
  kova::python::BindDiff(module);
  kova::python::BindAudit(module);
  module.attr("__version__") = KOVA_PYTHON_VERSION;
}
