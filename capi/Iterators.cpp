// Iterations: snapshots of handles taken through the const listing calls, which hand nothing out
// for change (the tables' look-ups then have nothing to check).
#include <KOVAMappingServices/kova_mapping.h>

#include <memory>
#include <utility>
#include <vector>

#include "Boundary.h"
#include "Handles.h"

using kova::capi::Failure;
using kova::capi::RefusedArgument;
using kova::capi::Required;
using kova::capi::Run;

namespace {

enum class Listing { kReferences, kInstances, kContent };

void TakeTable(const KOVAMappingTable& table, Listing listing, std::vector<kova::capi::Handle>& items) {
  const std::vector<KOVAMappingReference>& references = table.GetReferences();
  if (listing == Listing::kReferences) {
    items.reserve(references.size());
    for (const KOVAMappingReference& reference : references) items.emplace_back(reference);
    return;
  }
  size_t count = listing == Listing::kContent ? references.size() : 0;
  for (const KOVAMappingReference& reference : references) count += std::as_const(reference).GetInstances().size();
  items.reserve(count);
  for (const KOVAMappingReference& reference : references) {
    if (listing == Listing::kContent) items.emplace_back(reference);
    for (const KOVAMappingInstance& instance : std::as_const(reference).GetInstances()) items.emplace_back(instance);
  }
}

int32_t ListTable(const char* function, const kova_table* table, Listing listing, kova_iterator** out) {
  return Run(function, [&](Failure&) -> int32_t {
    const kova_table& listed = Required(table, "table");
    Required(out, "out");
    auto iterator = std::make_unique<kova_iterator>();
    TakeTable(listed.table, listing, iterator->items);
    *out = iterator.release();
    return KOVA_S_OK;
  });
}

}  // namespace

extern "C" {

int32_t kova_table_references(const kova_table* table, kova_iterator** out) {
  return ListTable("kova_table_references", table, Listing::kReferences, out);
}

int32_t kova_table_instances(const kova_table* table, kova_iterator** out) {
  return ListTable("kova_table_instances", table, Listing::kInstances, out);
}

int32_t kova_table_content(const kova_table* table, kova_iterator** out) {
  return ListTable("kova_table_content", table, Listing::kContent, out);
}

int32_t kova_reference_instances(const kova_object* reference, kova_iterator** out) {
  return Run("kova_reference_instances", [&](Failure&) -> int32_t {
    const kova_object& listed = Required(reference, "reference");
    if (listed.kind() != KOVA_REFERENCE) throw RefusedArgument("reference is an instance, not a reference");
    Required(out, "out");
    auto iterator = std::make_unique<kova_iterator>();
    const std::vector<KOVAMappingInstance>& instances = std::as_const(*listed.reference).GetInstances();
    iterator->items.reserve(instances.size());
    for (const KOVAMappingInstance& instance : instances) iterator->items.emplace_back(instance);
    *out = iterator.release();
    return KOVA_S_OK;
  });
}

int32_t kova_iterator_next(kova_iterator* iterator, kova_object** out) {
  return Run("kova_iterator_next", [&](Failure&) -> int32_t {
    kova_iterator& walked = Required(iterator, "iterator");
    Required(out, "out");
    if (walked.next >= walked.items.size()) {
      *out = nullptr;
      return KOVA_S_FALSE;
    }
    *out = kova::capi::NewKovaObject(walked.items[walked.next]);
    ++walked.next;
    return KOVA_S_OK;
  });
}

size_t kova_iterator_count(const kova_iterator* iterator) { return iterator != nullptr ? iterator->items.size() : 0; }

void kova_iterator_free(kova_iterator* iterator) { delete iterator; }

}  // extern "C"
