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

// The document of a table written straight to text, member by member: "version", then
// "References", each reference's "CustomData" (unless "null"), "IsLocal", "PlexoId", "kOVAId",
// "KOVASynchroStamp" (unless the stamp is empty) and "Instances" (unless there are none), each
// instance's "kOVAId", "PlexoId", "IsLocal", "RefId", "CustomData" and "KOVASynchroStamp" (same
// rules). What the JSON object model refuses is left out here as well: texts longer than it
// holds, and elements beyond the largest array.
class StreamedDocument {
 public:
  StreamedDocument(kova::json::Layout layout, std::size_t expectedSize) : writer_(layout, expectedSize) {}

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

  kova::json::TextWriter writer_;
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

}  // namespace

ZANUnicodeString KOVAMappingParser::TranslateToString(KOVAMappingTable& table) {
  const KOVAMappingPrivateTable& data = *KOVAPrivateAccess::GetPrivate(table);
  const std::size_t expectedSize = ExpectedDocumentSize(data);
  if (kova::diagnostics::BulkyLinesWanted()) {
    kova::diagnostics::Emit(
        kova::diagnostics::LineKind::kBulky,
        ZANUnicodeString::FromValidUTF8(StreamedDocument(kova::json::Layout::kIndented, expectedSize * 2).Write(data)),
        "JSON generated from MappingTable");
  }
  ZANUnicodeString text =
      ZANUnicodeString::FromValidUTF8(StreamedDocument(kova::json::Layout::kCompact, expectedSize).Write(data));
  if (kova::CompressionSwitchOn()) {
    ZANUnicodeString envelope;
    // A failed compression falls back to the plain document.
    if (CompressMTWithPrefix(text, envelope) >= 0) return envelope;
  }
  return text;
}
