// Text dumps of mapping objects and tables, for diagnostic lines.
#include <KOVAMappingServices/KOVALogger.h>

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include "model/MappingIndex.h"

#include <string>

namespace {

void AppendNumber(std::string& out, std::int32_t value) { out.append(std::to_string(value)); }

// "{ kOVAId: K PlexoId: P IsLocal: B" — the pieces common to instances and references.
void AppendHead(std::string& out, const KOVAMappingPrivateObject& object) {
  out.append("{ kOVAId: ").append(object.GetKOVAID().View());
  out.append(" PlexoId: ").append(object.GetPlexoID().View());
  out.append(" IsLocal: ").append(object.GetIsLocal() ? "true" : "false");
}

// " KOVASynchroStamp: V<version>:<stamp> }\n"
void AppendTail(std::string& out, const KOVAMappingPrivateObject& object) {
  out.append(" KOVASynchroStamp: V");
  AppendNumber(out, object.GetKSSVersion());
  out.push_back(':');
  out.append(object.GetKSStamp().View());
  out.append(" }\n");
}

void AppendInstance(std::string& out, const KOVAMappingInstance& instance) {
  const auto object = KOVAPrivateAccess::GetPrivate(instance);
  AppendHead(out, *object);
  out.append(" RefId: ").append(object->GetRefID().View());
  AppendTail(out, *object);
}

void AppendReference(std::string& out, const KOVAMappingReference& reference) {
  const auto object = KOVAPrivateAccess::GetPrivate(reference);
  AppendHead(out, *object);
  AppendTail(out, *object);
  const std::vector<KOVAMappingInstance>& instances = kova::model::IndexAccess::Instances(*object);
  if (instances.empty()) return;
  out.append("\t\tInstances:[\n");
  for (const KOVAMappingInstance& instance : instances) {
    out.append("\t\t");
    AppendInstance(out, instance);
  }
  out.append("\t\t]\n");
}

}  // namespace

ZANUnicodeString KOVALogger::ToString(KOVAMappingInstance& instance) {
  std::string out;
  AppendInstance(out, instance);
  return ZANUnicodeString::FromValidUTF8(std::move(out));
}

ZANUnicodeString KOVALogger::ToString(KOVAMappingReference& reference) {
  std::string out;
  AppendReference(out, reference);
  return ZANUnicodeString::FromValidUTF8(std::move(out));
}

ZANUnicodeString KOVALogger::ToString(KOVAMappingTable& table) {
  std::string out;
  // "version:" without a blank here, unlike the ": " of the object lines.
  out.append("{ version:");
  AppendNumber(out, KOVAPrivateAccess::GetPrivate(table)->GetVersion());
  out.append("\n\tReferences:[\n");
  for (const KOVAMappingReference& reference :
       kova::model::IndexAccess::References(*KOVAPrivateAccess::GetPrivate(table))) {
    out.push_back('\t');
    AppendReference(out, reference);
  }
  out.append("\t]\n}\n");
  return ZANUnicodeString::FromValidUTF8(std::move(out));
}
