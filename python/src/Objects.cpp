// Reference and Instance: Python objects holding the library's handles, so that they share their
// object with the table, the reference that lists it and every other handle, as C++ handles do.
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <climits>
#include <cstdint>
#include <string>

#include "Binding.h"
#include "WriteGate.h"

namespace kova::python {

namespace {

template <class Handle>
std::int32_t StampVersionOf(const Handle& handle) {
  return KOVAPrivateAccess::GetPrivate(handle)->GetKSSVersion();
}

// A 32-bit signed number, or ValueError naming what it is for.
std::int32_t Int32(const py::int_& value, const char* what) {
  int overflow = 0;
  const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
  if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
  if (overflow != 0 || number < INT32_MIN || number > INT32_MAX) {
    throw py::value_error(std::string(what) + " must be a 32-bit signed number, not " +
                          py::repr(value).cast<std::string>());
  }
  return static_cast<std::int32_t>(number);
}

py::object NotImplemented() { return py::reinterpret_borrow<py::object>(Py_NotImplemented); }

// work(handle) for a Reference or an Instance, otherwise the answer for any other object.
template <class Result, class Work>
Result WithMappingObject(const py::object& other, Result otherwise, Work work) {
  if (py::isinstance<KOVAMappingReference>(other)) return work(other.cast<const KOVAMappingReference&>());
  if (py::isinstance<KOVAMappingInstance>(other)) return work(other.cast<const KOVAMappingInstance&>());
  return otherwise;
}

// "Reference(kova_id='A', plexo_id='P', stamp='abc', stamp_version=2)"
template <class Handle>
std::string Repr(const char* kind, const Handle& handle) {
  std::string text(kind);
  text += "(kova_id=" + py::repr(py::cast(handle.GetKOVAID())).template cast<std::string>();
  text += ", plexo_id=" + py::repr(py::cast(handle.GetPlexoID())).template cast<std::string>();
  const auto object = KOVAPrivateAccess::GetPrivate(handle);
  text += ", stamp=" + py::repr(py::cast(object->GetKSStamp())).template cast<std::string>();
  text += ", stamp_version=" + std::to_string(object->GetKSSVersion()) + ")";
  return text;
}

// The members both kinds share. The either-id rule decides equality between any two mapping
// objects, whatever their kinds; objects are therefore not hashable.
template <class Handle>
void BindCommon(py::class_<Handle>& cls, const char* kind) {
  cls.def_property(
         "kova_id", [](const Handle& self) { return self.GetKOVAID(); },
         [](Handle& self, const ZANUnicodeString& value) {
           WriteGate::BeforeChange();
           self.SetKOVAID(value);
         },
         "The CAD system's id.")
      .def_property(
          "plexo_id", [](const Handle& self) { return self.GetPlexoID(); },
          [](Handle& self, const ZANUnicodeString& value) {
            WriteGate::BeforeChange();
            self.SetPlexoID(value);
          },
          "The platform's id.")
      .def_property(
          "stamp", [](const Handle& self) { return KOVAPrivateAccess::GetPrivate(self)->GetKSStamp(); },
          [](Handle& self, const ZANUnicodeString& value) {
            WriteGate::BeforeChange();
            self.SetKSStamp(value);
          },
          "The synchro stamp, stored without its version prefix. Assigning a versioned text (\"V2:abc\", "
          "\"V0KSS:abc\") sets stamp_version and stores the rest; an unversioned text keeps stamp_version. "
          "Only one digit of a version is read: \"V12:abc\" is stored as \":abc\" with version 1.")
      .def_property(
          "stamp_version", [](const Handle& self) { return StampVersionOf(self); },
          [](Handle& self, const py::int_& value) {
            const std::int32_t version = Int32(value, "stamp_version");
            WriteGate::BeforeChange();
            KOVAPrivateAccess::GetPrivate(self)->SetKSSVersion(version);
          },
          "The version of the stamp's rule: 0 derived from a CE stamp, 1 not set explicitly, 2 set explicitly, "
          "3 for a new object, -1 when no stamp was found; stored as given.")
      .def_property(
          "custom_data", [](const Handle& self) { return self.GetCustomData(); },
          [](Handle& self, const ZANUnicodeString& value) {
            WriteGate::BeforeChange();
            self.SetCustomData(value);
          },
          "Free text of the host; the text \"null\" stands for none and is not written.")
      .def_property(
          "is_local", [](const Handle& self) { return self.GetIsLocal(); },
          [](Handle& self, const py::object& value) {
            if (!PyBool_Check(value.ptr())) {
              throw py::type_error("is_local must be a bool, not " + std::string(Py_TYPE(value.ptr())->tp_name));
            }
            WriteGate::BeforeChange();
            KOVAPrivateAccess::GetPrivate(self)->SetIsLocal(value.ptr() == Py_True);
          },
          "Whether the object is local to the CAD system. A table's one reference that is not local is its "
          "root.")
      .def(
          "shares",
          [](const Handle& self, const py::object& other) {
            const void* object = KOVAPrivateAccess::GetPrivate(self).get();
            return WithMappingObject(other, false, [object](const auto& handle) {
              return static_cast<const void*>(KOVAPrivateAccess::GetPrivate(handle).get()) == object;
            });
          },
          py::arg("other"),
          "Whether both Python objects hold the same mapping object, so that a change through one is seen "
          "through the other.")
      .def(
          "__eq__",
          [](const Handle& self, const py::object& other) -> py::object {
            return WithMappingObject(other, NotImplemented(),
                                     [&self](const auto& handle) -> py::object { return py::bool_(self == handle); });
          },
          py::is_operator())
      .def(
          "__ne__",
          [](const Handle& self, const py::object& other) -> py::object {
            return WithMappingObject(other, NotImplemented(), [&self](const auto& handle) -> py::object {
              return py::bool_(!(self == handle));
            });
          },
          py::is_operator())
      .def("__repr__", [kind](const Handle& self) { return Repr(kind, self); });
  cls.attr("__hash__") = py::none();
}

}  // namespace

void BindObjects(py::module_& module) {
  py::class_<KOVAMappingReference> reference(module, "Reference", R"(A reference: a part or assembly definition.

Reference(kova_id, plexo_id, stamp="", custom_data="null", is_local=False)

A Reference holds a mapping object shared with the table and every other handle on it: a change
made through one is seen through all, and the object outlives its table.)");
  reference.def(py::init([](const ZANUnicodeString& kovaId, const ZANUnicodeString& plexoId,
                            const ZANUnicodeString& stamp, const ZANUnicodeString& customData, bool isLocal) {
                  return KOVAMappingReference(kovaId, plexoId, stamp, customData, isLocal);
                }),
                py::arg("kova_id"), py::arg("plexo_id"), py::arg("stamp") = ZANUnicodeString(),
                py::arg("custom_data") = ZANUnicodeString("null"), py::arg("is_local").noconvert() = false);
  BindCommon(reference, "Reference");

  py::class_<KOVAMappingInstance> instance(module, "Instance",
                                           R"(An instance: an occurrence of a reference inside another.

Instance(kova_id, plexo_id, ref_id, stamp="", custom_data="null", is_local=False)

ref_id is the kOVA id of the reference it instantiates; it is kept as given, not checked.)");
  instance.def(
      py::init([](const ZANUnicodeString& kovaId, const ZANUnicodeString& plexoId, const ZANUnicodeString& refId,
                  const ZANUnicodeString& stamp, const ZANUnicodeString& customData,
                  bool isLocal) { return KOVAMappingInstance(kovaId, plexoId, stamp, refId, customData, isLocal); }),
      py::arg("kova_id"), py::arg("plexo_id"), py::arg("ref_id"), py::arg("stamp") = ZANUnicodeString(),
      py::arg("custom_data") = ZANUnicodeString("null"), py::arg("is_local").noconvert() = false);
  BindCommon(instance, "Instance");
  instance.def_property(
      "ref_id", [](const KOVAMappingInstance& self) { return self.GetRefID(); },
      [](KOVAMappingInstance& self, const ZANUnicodeString& value) {
        WriteGate::BeforeChange();
        self.SetRefID(value);
      },
      "The kOVA id of the reference this instance instantiates.");
}

}  // namespace kova::python
