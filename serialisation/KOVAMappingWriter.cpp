// Writing mapping tables as mapping documents of the current version.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include "model/MappingIndex.h"
#include "serialisation/CompressionSwitch.h"

namespace {

const ZANUnicodeString kNull("null");

// "CustomData" unless it is the text "null" (an absent key reads back as "null"), then
// "KOVASynchroStamp" in versioned form unless the stamp is empty.
void PutCustomData(ZANOmxJsonObject& object, const KOVAMappingPrivateObject& data) {
  ZANUnicodeString customData = data.GetCustomData();
  if (!(customData == kNull)) object.PutString("CustomData", customData);
}

void PutStamp(ZANOmxJsonObject& object, const KOVAMappingPrivateObject& data) {
  const ZANUnicodeString stamp = data.GetKSStamp();
  if (!stamp.IsEmpty()) {
    object.PutString("KOVASynchroStamp", KOVAKSSVersioning::ComputeKSSWithVersion(stamp, data.GetKSSVersion()));
  }
}

ZANOmxJsonObject InstanceObject(const KOVAMappingInstance& instance) {
  const auto data = KOVAPrivateAccess::GetPrivate(instance);
  ZANOmxJsonObject object;
  object.PutString("kOVAId", data->GetKOVAID());
  object.PutString("PlexoId", data->GetPlexoID());
  object.PutBoolean("IsLocal", data->GetIsLocal());
  object.PutString("RefId", data->GetRefID());
  PutCustomData(object, *data);
  PutStamp(object, *data);
  return object;
}

ZANOmxJsonObject ReferenceObject(const KOVAMappingReference& reference) {
  const auto data = KOVAPrivateAccess::GetPrivate(reference);
  ZANOmxJsonObject object;
  PutCustomData(object, *data);
  object.PutBoolean("IsLocal", data->GetIsLocal());
  object.PutString("PlexoId", data->GetPlexoID());
  object.PutString("kOVAId", data->GetKOVAID());
  PutStamp(object, *data);
  ZANOmxJsonArray instances;
  for (const KOVAMappingInstance& instance : kova::model::IndexAccess::Instances(*data)) instances.PutJsonObject(InstanceObject(instance));
  if (instances.Length() > 0) object.PutJsonArray("Instances", instances);
  return object;
}

}  // namespace

ZANUnicodeString KOVAMappingParser::TranslateToString(KOVAMappingTable& table) {
  ZANOmxJsonObject root;
  root.PutInteger("version", KOVAMappingPrivateTable::GetCurrentVersion());
  ZANOmxJsonArray references;
  for (const KOVAMappingReference& reference :
       kova::model::IndexAccess::References(*KOVAPrivateAccess::GetPrivate(table))) {
    references.PutJsonObject(ReferenceObject(reference));
  }
  root.PutJsonArray("References", references);
  if (KOVALogger::IsActive()) KOVALogger::log(root.PrettyPrint(), "JSON generated from MappingTable");
  const ZANUnicodeString text = root.ToString();
  if (kova::CompressionSwitchOn()) {
    ZANUnicodeString envelope;
    // A failed compression falls back to the plain document.
    if (CompressMTWithPrefix(text, envelope) >= 0) return envelope;
  }
  return text;
}
