// Writing mapping tables as mapping documents of the current version.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <climits>
#include <cstddef>
#include <string>
#include <string_view>

#include "diagnostics/LogLines.h"
#include "model/MappingIndex.h"
#include "platform/JsonNode.h"
#include "platform/JsonWrite.h"
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

// The same document written straight to text, member by member in the order the tree above gets
// them, through the writer the tree's text comes from. Used when no log wants the tree printed.
// What the tree refuses is left out here as well: texts longer than a tree holds, and elements
// beyond the largest array.
class StreamedDocument {
 public:
  explicit StreamedDocument(std::size_t expectedSize) : writer_(expectedSize) {}

  std::string Write(const KOVAMappingPrivateTable& table) {
    writer_.StartObject();
    writer_.Key("version");
    writer_.Integer(KOVAMappingPrivateTable::GetCurrentVersion());
    writer_.Key("References");
    writer_.StartArray();
    std::size_t count = 0;
    for (const KOVAMappingReference& reference : kova::model::IndexAccess::References(table)) {
      if (count++ >= kMaxElements) break;
      Reference(reference);
    }
    writer_.EndArray();
    writer_.EndObject();
    return writer_.Take();
  }

 private:
  static constexpr std::size_t kMaxElements = static_cast<std::size_t>(INT_MAX);

  void String(std::string_view key, const ZANUnicodeString& value) {
    if (value.GetLengthInByte() > kova::json::kMaxLength) return;
    writer_.Key(key);
    writer_.String(value.View());
  }

  void Bool(std::string_view key, bool value) {
    writer_.Key(key);
    writer_.Bool(value);
  }

  void CustomData(const KOVAMappingPrivateObject& data) {
    const ZANUnicodeString customData = data.GetCustomData();
    if (!(customData == kNull)) String("CustomData", customData);
  }

  void Stamp(const KOVAMappingPrivateObject& data) {
    const ZANUnicodeString stamp = data.GetKSStamp();
    if (!stamp.IsEmpty()) {
      String("KOVASynchroStamp", KOVAKSSVersioning::ComputeKSSWithVersion(stamp, data.GetKSSVersion()));
    }
  }

  void Instance(const KOVAMappingInstance& instance) {
    const auto data = KOVAPrivateAccess::GetPrivate(instance);
    writer_.StartObject();
    String("kOVAId", data->GetKOVAID());
    String("PlexoId", data->GetPlexoID());
    Bool("IsLocal", data->GetIsLocal());
    String("RefId", data->GetRefID());
    CustomData(*data);
    Stamp(*data);
    writer_.EndObject();
  }

  void Reference(const KOVAMappingReference& reference) {
    const auto data = KOVAPrivateAccess::GetPrivate(reference);
    writer_.StartObject();
    CustomData(*data);
    Bool("IsLocal", data->GetIsLocal());
    String("PlexoId", data->GetPlexoID());
    String("kOVAId", data->GetKOVAID());
    Stamp(*data);
    const auto& instances = kova::model::IndexAccess::Instances(*data);
    bool any = false;
    std::size_t count = 0;
    for (const KOVAMappingInstance& instance : instances) {
      if (count++ >= kMaxElements) break;
      if (!any) {
        writer_.Key("Instances");
        writer_.StartArray();
        any = true;
      }
      Instance(instance);
    }
    if (any) writer_.EndArray();
    writer_.EndObject();
  }

  kova::json::CompactWriter writer_;
};

// Room to reserve for the text of table: a mapping object with ids, stamp and custom data of
// usual lengths takes about 200 bytes, so 256 an object spares the copies and fresh memory of
// growing the text step by step. Reserved room that is never written costs no memory.
std::size_t ExpectedDocumentSize(const KOVAMappingPrivateTable& table) {
  constexpr std::size_t kBytesPerObject = 256;
  std::size_t objects = 0;
  for (const KOVAMappingReference& reference : kova::model::IndexAccess::References(table)) {
    objects += 1 + kova::model::IndexAccess::Instances(reference).size();
  }
  return 64 + objects * kBytesPerObject;
}

// The tree of the document, printed to the log before its text is taken.
ZANUnicodeString TreeText(KOVAMappingTable& table) {
  ZANOmxJsonObject root;
  root.PutInteger("version", KOVAMappingPrivateTable::GetCurrentVersion());
  ZANOmxJsonArray references;
  for (const KOVAMappingReference& reference :
       kova::model::IndexAccess::References(*KOVAPrivateAccess::GetPrivate(table))) {
    references.PutJsonObject(ReferenceObject(reference));
  }
  root.PutJsonArray("References", references);
  kova::diagnostics::Emit(kova::diagnostics::LineKind::kBulky, root.PrettyPrint(), "JSON generated from MappingTable");
  return root.ToString();
}

}  // namespace

ZANUnicodeString KOVAMappingParser::TranslateToString(KOVAMappingTable& table) {
  // The tree is built only for the log's print of it; otherwise the text is written directly.
  const KOVAMappingPrivateTable& data = *KOVAPrivateAccess::GetPrivate(table);
  const ZANUnicodeString text =
      kova::diagnostics::BulkyLinesWanted()
          ? TreeText(table)
          : ZANUnicodeString::FromValidUTF8(StreamedDocument(ExpectedDocumentSize(data)).Write(data));
  if (kova::CompressionSwitchOn()) {
    ZANUnicodeString envelope;
    // A failed compression falls back to the plain document.
    if (CompressMTWithPrefix(text, envelope) >= 0) return envelope;
  }
  return text;
}
