// Mapping tables: life, documents, counts, the identity and root rules, look-ups.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/ZANBaseUnknown.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <string>
#include <utility>

#include "Boundary.h"
#include "Handles.h"
#include "Text.h"

using kova::capi::CallReasons;
using kova::capi::Failure;
using kova::capi::RefusedArgument;
using kova::capi::Required;
using kova::capi::RequiredKind;
using kova::capi::Run;
using kova::capi::TextIn;
using kova::capi::TextOut;

namespace {

// A look-up by id: a new handle in *out when found, *out untouched when not.
template <class Handle>
int32_t Find(const char* function, kova_table* table, const char* id, size_t length, kova_object** out,
             HRESULT (KOVAMappingTable::*lookup)(ZANUnicodeString, Handle&), const char* notFound) {
  return Run(function, [&](Failure& failure) -> int32_t {
    kova_table& searched = Required(table, "table");
    Required(out, "out");
    ZANUnicodeString key = TextIn(id, length, "id");
    Handle found;
    const HRESULT status = (searched.table.*lookup)(std::move(key), found);
    if (ZANFailed(status)) {
      failure.Explain(notFound);
      return status;
    }
    *out = new kova_object(found);
    return status;
  });
}

}  // namespace

extern "C" {

kova_table* kova_table_new(void) { return kova::capi::NewOrNull<kova_table>(); }

void kova_table_free(kova_table* table) { delete table; }

int32_t kova_table_clear(kova_table* table) {
  return Run("kova_table_clear", [&](Failure&) -> int32_t {
    Required(table, "table").table = KOVAMappingTable();
    return KOVA_S_OK;
  });
}

// ---- Documents ------------------------------------------------------------------------------

int32_t kova_table_read(kova_table* table, const char* text, size_t length) {
  return Run("kova_table_read", [&](Failure& failure) -> int32_t {
    kova_table& target = Required(table, "table");
    ZANUnicodeString document = kova::capi::DocumentIn(text, length, "text");
    CallReasons reasons;
    const HRESULT status =
        KOVAMappingParser::TranslateToMappingTable(std::move(document), ZANBaseUnknown(), target.table);
    if (ZANFailed(status)) {
      failure.Reasons(reasons.Reasons());
      failure.Explain("the document was refused");
    }
    return status;
  });
}

int32_t kova_table_write(kova_table* table, int compress, char** text, size_t* length) {
  return Run("kova_table_write", [&](Failure& failure) -> int32_t {
    kova_table& source = Required(table, "table");
    Required(text, "text");
    if (compress != 0 && compress != 1 && compress != -1) {
      throw RefusedArgument("compress is " + std::to_string(compress) + ", not 0, 1 or -1");
    }
    CallReasons reasons;
    // The writer gives plain JSON, which starts with '{', or the envelope, which starts with 'V',
    // as the compression switch says; the other form is made from it when asked for.
    ZANUnicodeString document = KOVAMappingParser::TranslateToString(source.table);
    const bool enveloped = !document.IsEmpty() && document.View().front() == 'V';
    if (compress == 0 && enveloped) {
      const HRESULT status = KOVAMappingParser::TryDecompressMT(document);
      if (ZANFailed(status)) {
        failure.Reasons(reasons.Reasons());
        failure.Explain("the written envelope did not open");
        return status;
      }
    } else if (compress == 1 && !enveloped) {
      // As the writer does: when compression fails, the plain text is given.
      ZANUnicodeString envelope;
      if (ZANSucceeded(KOVAMappingParser::CompressMTWithPrefix(document, envelope))) document = std::move(envelope);
    }
    TextOut(document.View(), text, length);
    return KOVA_S_OK;
  });
}

// ---- Counts and version ---------------------------------------------------------------------

size_t kova_table_reference_count(const kova_table* table) {
  return table != nullptr ? table->table.GetReferences().size() : 0;
}

size_t kova_table_instance_count(const kova_table* table) {
  if (table == nullptr) return 0;
  size_t count = 0;
  // Through the const calls: nothing is handed out for change, so later look-ups pay nothing.
  for (const KOVAMappingReference& reference : table->table.GetReferences()) {
    count += std::as_const(reference).GetInstances().size();
  }
  return count;
}

int32_t kova_table_version(const kova_table* table) {
  if (table == nullptr) return KOVA_E_INVALIDARG;
  // Reading the version changes nothing; the private access takes a mutable table.
  return KOVAPrivateAccess::GetPrivate(const_cast<KOVAMappingTable&>(table->table))->GetVersion();
}

// ---- Content ----------------------------------------------------------------------------------
// The table's calls take handles by reference; they are given copies (sharing the objects) so
// that the kova_object's own handle is never reassigned.

int32_t kova_table_add_reference(kova_table* table, kova_object* reference) {
  return Run("kova_table_add_reference", [&](Failure& failure) -> int32_t {
    kova_table& target = Required(table, "table");
    KOVAMappingReference added(RequiredKind(reference, "reference", KOVA_REFERENCE).Reference());
    const HRESULT status = target.table.AddReference(added);
    if (ZANFailed(status)) {
      failure.Explain(
          "the table has the same reference (equal kOVA ids, or else equal Plexo ids), or the reference is not local "
          "and the table has a root");
    }
    return status;
  });
}

int32_t kova_table_remove_reference(kova_table* table, kova_object* reference) {
  return Run("kova_table_remove_reference", [&](Failure& failure) -> int32_t {
    kova_table& target = Required(table, "table");
    KOVAMappingReference removed(RequiredKind(reference, "reference", KOVA_REFERENCE).Reference());
    const HRESULT status = target.table.RemoveReference(removed);
    if (ZANFailed(status)) failure.Explain("the table has no reference that is the same as this one");
    return status;
  });
}

int32_t kova_table_add_instance(kova_table* table, kova_object* instance, kova_object* reference) {
  return Run("kova_table_add_instance", [&](Failure& failure) -> int32_t {
    kova_table& target = Required(table, "table");
    KOVAMappingInstance added(RequiredKind(instance, "instance", KOVA_INSTANCE).Instance());
    KOVAMappingReference holder(RequiredKind(reference, "reference", KOVA_REFERENCE).Reference());
    const HRESULT status = target.table.AddInstance(added, holder);
    if (ZANFailed(status)) {
      failure.Explain(
          "the table has no reference that is the same as this one, or that reference already holds the same instance");
    }
    return status;
  });
}

int32_t kova_table_remove_instance(kova_table* table, kova_object* instance, kova_object* reference) {
  return Run("kova_table_remove_instance", [&](Failure& failure) -> int32_t {
    kova_table& target = Required(table, "table");
    KOVAMappingInstance removed(RequiredKind(instance, "instance", KOVA_INSTANCE).Instance());
    KOVAMappingReference holder(RequiredKind(reference, "reference", KOVA_REFERENCE).Reference());
    const HRESULT status = target.table.RemoveInstance(removed, holder);
    if (ZANFailed(status)) {
      failure.Explain(
          "the table has no reference that is the same as this one, or that reference holds no instance that is the "
          "same as this one");
    }
    return status;
  });
}

// ---- Look-ups -------------------------------------------------------------------------------

int32_t kova_table_find_reference_by_kova_id(kova_table* table, const char* id, size_t length, kova_object** out) {
  return Find<KOVAMappingReference>("kova_table_find_reference_by_kova_id", table, id, length, out,
                                    &KOVAMappingTable::GetReferenceFromKOVAId, "no reference has this kOVA id");
}

int32_t kova_table_find_reference_by_plexo_id(kova_table* table, const char* id, size_t length, kova_object** out) {
  return Find<KOVAMappingReference>("kova_table_find_reference_by_plexo_id", table, id, length, out,
                                    &KOVAMappingTable::GetReferenceFromPlexoId, "no reference has this Plexo id");
}

int32_t kova_table_find_instance_by_kova_id(kova_table* table, const char* id, size_t length, kova_object** out) {
  return Find<KOVAMappingInstance>("kova_table_find_instance_by_kova_id", table, id, length, out,
                                   &KOVAMappingTable::GetInstanceFromKOVAId, "no instance has this kOVA id");
}

int32_t kova_table_find_instance_by_plexo_id(kova_table* table, const char* id, size_t length, kova_object** out) {
  return Find<KOVAMappingInstance>("kova_table_find_instance_by_plexo_id", table, id, length, out,
                                   &KOVAMappingTable::GetInstanceFromPlexoId, "no instance has this Plexo id");
}

int32_t kova_table_root(kova_table* table, kova_object** out) {
  return Run("kova_table_root", [&](Failure& failure) -> int32_t {
    kova_table& searched = Required(table, "table");
    Required(out, "out");
    KOVAMappingReference root;
    const HRESULT status = searched.table.GetRootReference(root);
    if (ZANFailed(status)) {
      failure.Explain("the table has no root reference");
      return status;
    }
    *out = new kova_object(root);
    return status;
  });
}

int kova_table_has_root(kova_table* table) {
  if (table == nullptr) return 0;
  try {
    return table->table.HasRootReference() ? 1 : 0;
  } catch (...) {
    // Answering may bring the table's indexes up to date, which allocates; without memory the
    // question has no answer, and "no root" is the one that promises nothing.
    return 0;
  }
}

}  // extern "C"
