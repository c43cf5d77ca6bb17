// Table, its live views (table.references, reference.instances) and the iterations over them.
//
// Views read the table or reference each time they are used, so they follow every change. An
// iteration works on a snapshot of the list taken when it starts: changes made while iterating
// neither stop it nor move it (the objects are shared, so changes of their fields are seen).
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Binding.h"
#include "WriteGate.h"

namespace kova::python {

namespace {

// The table's references, read without handing anything out for change (so that the table's
// look-ups keep what they know).
const std::vector<KOVAMappingReference>& ReferencesOf(const KOVAMappingTable& table) { return table.GetReferences(); }
const std::vector<KOVAMappingInstance>& InstancesOf(const KOVAMappingReference& reference) {
  return reference.GetInstances();
}

std::size_t ObjectCount(const KOVAMappingTable& table) {
  std::size_t count = 0;
  for (const KOVAMappingReference& reference : ReferencesOf(table)) count += 1 + InstancesOf(reference).size();
  return count;
}

// An index of a sequence of size items, Python style (negative from the end); IndexError outside.
std::size_t Position(std::ptrdiff_t index, std::size_t size, const char* what) {
  const auto count = static_cast<std::ptrdiff_t>(size);
  if (index < 0) index += count;
  if (index < 0 || index >= count) throw py::index_error(std::string(what) + " index out of range");
  return static_cast<std::size_t>(index);
}

// The items of a list taken at one moment, handed out one by one.
template <class Handle>
struct Snapshot {
  std::vector<Handle> items;
  std::size_t next = 0;
};

// Every object in document order: each reference followed by its instances.
struct ContentSnapshot {
  std::vector<KOVAMappingReference> references;
  std::vector<KOVAMappingInstance> instances;  // all of them, reference by reference
  std::vector<std::size_t> counts;             // the instances of each reference
  std::size_t reference = 0;                   // the reference being walked
  std::size_t instance = 0;                    // the next instance in instances
  std::size_t left = 0;                        // instances of the current reference still to give
  bool started = false;                        // the current reference was given

  explicit ContentSnapshot(const KOVAMappingTable& table) : references(ReferencesOf(table)) {
    counts.reserve(references.size());
    for (const KOVAMappingReference& item : references) {
      const std::vector<KOVAMappingInstance>& list = InstancesOf(item);
      counts.push_back(list.size());
      instances.insert(instances.end(), list.begin(), list.end());
    }
  }

  py::object Next() {
    while (reference < references.size()) {
      if (!started) {
        started = true;
        left = counts[reference];
        return py::cast(references[reference]);
      }
      if (left > 0) {
        --left;
        return py::cast(instances[instance++]);
      }
      ++reference;
      started = false;
    }
    throw py::stop_iteration();
  }
};

// table.references: the table's references as they are now.
struct ReferencesView {
  py::object owner;  // the Python table, kept alive
  KOVAMappingTable* table;
};

// reference.instances: the reference's instances as they are now.
struct InstancesView {
  KOVAMappingReference reference;
};

template <class Handle>
void BindSnapshot(py::module_& module, const char* name) {
  py::class_<Snapshot<Handle>>(module, name)
      .def("__iter__", [](Snapshot<Handle>& self) -> Snapshot<Handle>& { return self; })
      .def("__next__",
           [](Snapshot<Handle>& self) {
             if (self.next >= self.items.size()) throw py::stop_iteration();
             return self.items[self.next++];
           })
      .def("__length_hint__", [](const Snapshot<Handle>& self) { return self.items.size() - self.next; });
}

// The sequence members of a view over a vector of handles (list is how to reach it now).
template <class View, class List>
void BindSequence(py::class_<View>& cls, List list, const char* what) {
  using Handle = typename std::decay_t<decltype(list(std::declval<View&>()))>::value_type;
  cls.def("__len__", [list](View& self) { return list(self).size(); })
      .def("__getitem__",
           [list, what](View& self, std::ptrdiff_t index) {
             const auto& items = list(self);
             return items[Position(index, items.size(), what)];
           })
      .def("__getitem__",
           [list](View& self, const py::slice& slice) {
             const auto& items = list(self);
             std::size_t start = 0, stop = 0, step = 0, length = 0;
             if (!slice.compute(items.size(), &start, &stop, &step, &length)) throw py::error_already_set();
             py::list result(length);
             for (std::size_t i = 0; i < length; ++i, start += step) result[i] = py::cast(items[start]);
             return result;
           })
      .def("__iter__",
           [list](View& self) {
             return Snapshot<Handle>{list(self), 0};
           })
      .def("__contains__",
           [list](View& self, const py::object& item) {
             if (!py::isinstance<Handle>(item)) return false;
             const Handle& wanted = item.cast<const Handle&>();
             for (const Handle& handle : list(self)) {
               if (handle == wanted) return true;
             }
             return false;
           })
      .def("__bool__", [list](View& self) { return !list(self).empty(); })
      .def("__repr__", [list, what](View& self) {
        return "<" + std::string(what) + " of " + std::to_string(list(self).size()) + ">";
      });
}

// The table's reference that is the same as the given one (the either-id rule), if any.
bool HasSameReference(KOVAMappingTable& table, const KOVAMappingReference& reference) {
  for (const KOVAMappingReference& stored : ReferencesOf(table)) {
    if (stored == reference) return true;
  }
  return false;
}

[[noreturn]] void Refused(const char* what, const std::string& reason) { RaiseError(what, E_FAIL, {reason}); }

void AddReference(KOVAMappingTable& table, KOVAMappingReference& reference) {
  WriteGate::BeforeChange();
  if (ZANSucceeded(table.AddReference(reference))) return;
  if (HasSameReference(table, reference)) {
    Refused("add_reference", "the table holds a reference with the same kOVA id or Plexo id");
  }
  Refused("add_reference", "the table has a root already: a second reference that is not local is refused");
}

void AddInstance(KOVAMappingTable& table, KOVAMappingInstance& instance, KOVAMappingReference& under) {
  WriteGate::BeforeChange();
  if (ZANSucceeded(table.AddInstance(instance, under))) return;
  if (!HasSameReference(table, under)) Refused("add_instance", "the reference is not in the table");
  Refused("add_instance", "the reference holds an instance with the same kOVA id or Plexo id");
}

void Remove(KOVAMappingTable& table, const py::object& item, const py::object& under) {
  WriteGate::BeforeChange();
  if (py::isinstance<KOVAMappingReference>(item)) {
    if (!under.is_none()) throw py::type_error("remove: under is for instances only");
    auto reference = item.cast<KOVAMappingReference>();
    if (ZANFailed(table.RemoveReference(reference))) Refused("remove", "the reference is not in the table");
    return;
  }
  if (!py::isinstance<KOVAMappingInstance>(item)) {
    throw py::type_error("remove: a Reference or an Instance is expected, not " +
                         std::string(Py_TYPE(item.ptr())->tp_name));
  }
  auto instance = item.cast<KOVAMappingInstance>();
  if (!under.is_none()) {
    if (!py::isinstance<KOVAMappingReference>(under)) {
      throw py::type_error("remove: under must be a Reference, not " + std::string(Py_TYPE(under.ptr())->tp_name));
    }
    auto reference = under.cast<KOVAMappingReference>();
    if (ZANFailed(table.RemoveInstance(instance, reference))) {
      Refused("remove", "the instance is not under that reference of the table");
    }
    return;
  }
  // The reference holding it: the one that holds this very object, else the first whose instances
  // include the same instance (instance ids are unique under one reference only, so an earlier
  // reference may hold an instance the same as this object).
  const void* object = KOVAPrivateAccess::GetPrivate(instance).get();
  std::optional<KOVAMappingReference> holder;
  for (const KOVAMappingReference& stored : ReferencesOf(table)) {
    const std::vector<KOVAMappingInstance>& held = InstancesOf(stored);
    if (std::any_of(held.begin(), held.end(), [object](const KOVAMappingInstance& other) {
          return KOVAPrivateAccess::GetPrivate(other).get() == object;
        })) {
      holder = stored;
      break;
    }
    if (!holder && std::find(held.begin(), held.end(), instance) != held.end()) holder = stored;
  }
  if (holder && ZANSucceeded(table.RemoveInstance(instance, *holder))) return;
  Refused("remove", "the instance is not in the table");
}

py::object Find(KOVAMappingTable& table, const std::optional<ZANUnicodeString>& kovaId,
                const std::optional<ZANUnicodeString>& plexoId) {
  if (kovaId.has_value() == plexoId.has_value()) throw py::type_error("find: give exactly one of kova_id and plexo_id");
  WriteGate::BeforeChange();  // look-ups may build the table's index
  KOVAMappingReference reference;
  KOVAMappingInstance instance;
  if (kovaId) {
    if (ZANSucceeded(table.GetReferenceFromKOVAId(*kovaId, reference))) return py::cast(reference);
    if (ZANSucceeded(table.GetInstanceFromKOVAId(*kovaId, instance))) return py::cast(instance);
  } else {
    if (ZANSucceeded(table.GetReferenceFromPlexoId(*plexoId, reference))) return py::cast(reference);
    if (ZANSucceeded(table.GetInstanceFromPlexoId(*plexoId, instance))) return py::cast(instance);
  }
  return py::none();
}

}  // namespace

void BindTables(py::module_& module) {
  BindSnapshot<KOVAMappingReference>(module, "_ReferenceIterator");
  BindSnapshot<KOVAMappingInstance>(module, "_InstanceIterator");
  py::class_<ContentSnapshot>(module, "_ObjectIterator")
      .def("__iter__", [](ContentSnapshot& self) -> ContentSnapshot& { return self; })
      .def("__next__", &ContentSnapshot::Next);

  py::class_<ReferencesView> references(module, "References",
                                        "The table's references, in table order: a live, read-only sequence.");
  BindSequence(
      references,
      [](ReferencesView& self) -> const std::vector<KOVAMappingReference>& { return ReferencesOf(*self.table); },
      "References");
  py::class_<InstancesView> instances(module, "Instances",
                                      "A reference's instances, in order: a live, read-only sequence.");
  BindSequence(
      instances,
      [](InstancesView& self) -> const std::vector<KOVAMappingInstance>& { return InstancesOf(self.reference); },
      "Instances");

  auto reference = py::reinterpret_borrow<py::class_<KOVAMappingReference>>(module.attr("Reference"));
  reference.def_property_readonly(
      "instances", [](const KOVAMappingReference& self) { return InstancesView{self}; },
      "The reference's instances, in order: a live, read-only sequence of Instance.");

  py::class_<KOVAMappingTable> table(module, "Table", R"(A mapping table: references, each with its instances.

Table() is empty, at the current document version; kovamapping.read gives the table of a document.
Identity follows the either-id rule (same kOVA id, or else same Plexo id) and a table holds at most
one reference that is not local, its root. A table and its objects are used by one thread at a
time; iterating takes a snapshot, so changes made meanwhile do not disturb it.)");
  table.def(py::init<>())
      .def_property_readonly(
          "version", [](KOVAMappingTable& self) { return KOVAPrivateAccess::GetPrivate(self)->GetVersion(); },
          "The document version the table was read with, or the current version (12, or 11 under "
          "RollBackMappingVersion) for a new table.")
      .def_property_readonly(
          "root",
          [](KOVAMappingTable& self) -> py::object {
            WriteGate::BeforeChange();  // the look-up may build the table's index
            KOVAMappingReference root;
            if (ZANFailed(self.GetRootReference(root))) return py::none();
            return py::cast(root);
          },
          "The root reference (the first that is not local), or None.")
      .def_property_readonly(
          "references",
          [](const py::object& self) {
            return ReferencesView{self, &self.cast<KOVAMappingTable&>()};
          },
          "The references, in table order: a live, read-only sequence of Reference.")
      .def_property_readonly(
          "objects",
          [](const KOVAMappingTable& self) {
            py::list result;
            for (const KOVAMappingReference& stored : ReferencesOf(self)) {
              result.append(py::cast(stored));
              for (const KOVAMappingInstance& held : InstancesOf(stored)) result.append(py::cast(held));
            }
            return result;
          },
          "A new list of every object in document order: each reference followed by its instances.")
      .def("__len__", &ObjectCount, "The number of objects, references and instances.")
      .def(
          "__iter__", [](const KOVAMappingTable& self) { return ContentSnapshot(self); },
          "Every object in document order, from a snapshot taken when the iteration starts.")
      .def("__repr__",
           [](const KOVAMappingTable& self) {
             std::size_t instances = 0;
             for (const KOVAMappingReference& stored : ReferencesOf(self)) instances += InstancesOf(stored).size();
             return "<Table: " + std::to_string(ReferencesOf(self).size()) + " references, " +
                    std::to_string(instances) + " instances>";
           })
      .def("find", &Find, py::kw_only(), py::arg("kova_id") = py::none(), py::arg("plexo_id") = py::none(),
           "The reference with that id when there is one, else the instance with it (the first under the "
           "earliest reference), else None. Give exactly one of kova_id and plexo_id.")
      .def("add_reference", &AddReference, py::arg("reference"),
           "Adds a reference (with the instances it holds). Raises Error (status 0x80004005) when the table holds "
           "the same reference or when it is a second reference that is not local; nothing changes then.")
      .def("add_instance", &AddInstance, py::arg("instance"), py::kw_only(), py::arg("under"),
           "Adds an instance under the table's reference that is the same as under. Raises Error when there is "
           "none or when it holds the same instance; nothing changes then.")
      .def("remove", &Remove, py::arg("item"), py::kw_only(), py::arg("under") = py::none(),
           "Removes a reference (with its instances), or an instance from the reference holding it (or from "
           "under). Raises Error when the table does not hold it; nothing changes then.")
      .def(
          "clear",
          [](KOVAMappingTable& self) {
            WriteGate::BeforeChange();
            self = KOVAMappingTable();
          },
          "Makes the table empty, at the current document version. Objects taken from it live on.");
}

}  // namespace kova::python
