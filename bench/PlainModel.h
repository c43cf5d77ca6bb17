// A mapping model written the straightforward way, the yardstick of the workflow benchmarks: each
// object a std::shared_ptr, two std::unordered_map<std::string, ...> per container (a table's
// references, a reference's instances, and all instances of the table) updated eagerly on every
// change. It has none of the library's rules (no either-id identity, no first match, no root rule):
// ids are assumed unique.
#ifndef KOVA_BENCH_PLAINMODEL_H_
#define KOVA_BENCH_PLAINMODEL_H_

#include <KOVAMappingServices/KOVAMappingTable.h>

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace kova::bench {

struct PlainReference;

struct PlainObject {
  std::string kova;
  std::string plexo;
  std::string stamp;
  bool local = false;
};

struct PlainInstance : PlainObject {
  PlainReference* owner = nullptr;
};

template <class T>
struct PlainMaps {
  std::unordered_map<std::string, std::shared_ptr<T>> byKova;
  std::unordered_map<std::string, std::shared_ptr<T>> byPlexo;
  void Add(const std::shared_ptr<T>& object) {
    byKova.emplace(object->kova, object);
    byPlexo.emplace(object->plexo, object);
  }
  void Remove(const T& object) {
    byKova.erase(object.kova);
    byPlexo.erase(object.plexo);
  }
};

struct PlainReference : PlainObject {
  std::vector<std::shared_ptr<PlainInstance>> instances;
  PlainMaps<PlainInstance> maps;
};

class PlainTable {
 public:
  // The same references and instances, with the same ids, as a table's content (GetContent(), each
  // element marked as reference or instance).
  PlainTable(const std::vector<KOVAMappingObject>& content, const std::vector<bool>& isReference) {
    std::shared_ptr<PlainReference> current;
    for (std::size_t i = 0; i <= content.size(); ++i) {
      if (i == content.size() || isReference[i]) {
        if (current) AddReference(current);
        if (i == content.size()) break;
        current = std::make_shared<PlainReference>();
        Fill(*current, content[i]);
        continue;
      }
      auto one = std::make_shared<PlainInstance>();
      Fill(*one, content[i]);
      one->owner = current.get();
      current->instances.push_back(one);
      current->maps.Add(one);
    }
  }

  std::shared_ptr<PlainInstance> FindInstanceByKova(const std::string& id) const { return Find(instances_.byKova, id); }
  std::shared_ptr<PlainInstance> FindInstanceByPlexo(const std::string& id) const {
    return Find(instances_.byPlexo, id);
  }
  std::shared_ptr<PlainReference> FindReferenceByKova(const std::string& id) const {
    return Find(references_.byKova, id);
  }

  void SetPlexo(PlainInstance& instance, const std::string& id) {
    Rekey(instance, &PlainObject::plexo, &PlainMaps<PlainInstance>::byPlexo, id);
  }
  void SetKova(PlainInstance& instance, const std::string& id) {
    Rekey(instance, &PlainObject::kova, &PlainMaps<PlainInstance>::byKova, id);
  }
  void SetKova(PlainReference& reference, const std::string& id) {
    auto shared = references_.byKova.extract(reference.kova);
    reference.kova = id;
    shared.key() = id;
    references_.byKova.insert(std::move(shared));
  }

  void AddReference(const std::shared_ptr<PlainReference>& reference) {
    references.push_back(reference);
    references_.Add(reference);
    for (const auto& instance : reference->instances) instances_.Add(instance);
  }
  void RemoveReference(const PlainReference& reference) {
    const auto at = std::find_if(references.begin(), references.end(),
                                 [&](const std::shared_ptr<PlainReference>& r) { return r.get() == &reference; });
    if (at == references.end()) return;
    for (const auto& instance : reference.instances) instances_.Remove(*instance);
    references_.Remove(reference);
    references.erase(at);
  }

  std::vector<std::shared_ptr<PlainReference>> references;

 private:
  using InstanceMap = std::unordered_map<std::string, std::shared_ptr<PlainInstance>>;

  // Gives instance the id in field, moving it in its reference's map and the table's.
  void Rekey(PlainInstance& instance, std::string PlainObject::*field, InstanceMap PlainMaps<PlainInstance>::*map,
             const std::string& id) {
    (instance.owner->maps.*map).erase(instance.*field);
    auto shared = (instances_.*map).extract(instance.*field);
    instance.*field = id;
    (instance.owner->maps.*map).emplace(id, shared.mapped());
    shared.key() = id;
    (instances_.*map).insert(std::move(shared));
  }

  template <class Object>
  static void Fill(PlainObject& plain, const Object& object) {
    plain.kova = object.GetKOVAID().ConvertToChar();
    plain.plexo = object.GetPlexoID().ConvertToChar();
    plain.local = object.GetIsLocal();
  }
  template <class T>
  static std::shared_ptr<T> Find(const std::unordered_map<std::string, std::shared_ptr<T>>& map,
                                 const std::string& id) {
    const auto found = map.find(id);
    return found == map.end() ? nullptr : found->second;
  }

  PlainMaps<PlainReference> references_;
  PlainMaps<PlainInstance> instances_;
};

}  // namespace kova::bench

#endif  // KOVA_BENCH_PLAINMODEL_H_
