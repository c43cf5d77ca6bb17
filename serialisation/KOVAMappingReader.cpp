// Reading mapping documents of versions 6 to 12 into mapping tables.
//
// Unless someone takes the printed document, a document of versions 7 to 12 is read straight from
// the parser's tape: the text is parsed once and each object's fields are picked out where they
// lie, with no value tree in between. Any other document (another version, a version that is not
// a plain integer, text that does not parse at once), and every document while the environment
// switch is set or a capture of this thread wants every line, is loaded as a ZANOmxJsonObject and
// read from it. Both ways run the same reader (serialisation/ReaderCore.h)
// on the same fields, so they give the same table, statuses and log lines.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "diagnostics/LogLines.h"
#include "platform/JsonNode.h"
#include "platform/JsonTape.h"
#include "serialisation/ReaderCore.h"
#include "serialisation/ReaderSources.h"

namespace {

using kova::json::Node;
using kova::reader::Field;
using kova::reader::StampKey;
using kova::reader::TapeSource;
using kova::reader::TreeSource;

using MandatoryMap = std::map<ZANUnicodeString, std::int32_t>;

// What the root of a document on the tape tells before reading it.
struct TapePlan {
  int version = 0;
  Field<std::size_t> references;
};

// The plan for a document whose root is an object and whose "version" is a plain integer from 7
// to 12, or nothing for any other document.
std::optional<TapePlan> PlanFromTape(const TapeSource& source) {
  using kova::json::TapeDocument;
  const TapeDocument& tape = source.tape;
  if (tape.Type(TapeDocument::kTop) != '{') return std::nullopt;
  std::size_t version = 0;
  TapePlan plan;
  for (std::size_t i = TapeDocument::kTop + 1; tape.Type(i) != '}';) {
    const std::size_t value = i + 1;
    const std::string_view key = tape.String(i);
    if (key == "version") {
      version = value;
    } else if (key == "References") {
      plan.references = source.FieldAt(value);
    }
    i = tape.After(value);
  }
  if (version == 0 || tape.Type(version) != 'l') return std::nullopt;
  const std::int64_t number = tape.Integer(version);
  if (number < 7 || number > 12) return std::nullopt;
  plan.version = static_cast<int>(number);
  return plan;
}

// Appends padding zero bytes to text. When its buffer lacks the room, the text moves to one of
// exactly the size needed (growing in place could take up to twice that) and the old one goes.
void WithPadding(std::string& text, std::size_t padding) {
  if (text.capacity() - text.size() < padding) {
    std::string room;
    room.reserve(text.size() + padding);
    room.append(text);
    text = std::move(room);
  }
  text.append(padding, '\0');
}

// As TranslateToMappingTable from the version on, for a document planned from the tape.
HRESULT ReadFromTape(const TapeSource& source, const TapePlan& plan, const ZANBaseUnknown& owner,
                     KOVAMappingTable& table) {
  table.SetOwner(owner);
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(plan.version);
  const kova::reader::VersionKeys keys = kova::reader::KeysOfVersion(plan.version);
  return kova::reader::ParseReferences(source, plan.references, table, keys.references, keys.instances,
                                       keys.logInstanceFailure);
}

}  // namespace

HRESULT KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString text, const ZANBaseUnknown& owner,
                                                   KOVAMappingTable& table) {
  // An envelope is replaced by the text it holds; any other text is parsed as it is.
  TryDecompressMT(text);
  if (!kova::diagnostics::BulkyLinesWanted()) {
    // Nobody takes the printed document: the parser reads past the end of the text in blocks: the text is given room for that (moved
    // once into a buffer of just the size needed, when its own has no room), so that no second
    // copy of the document is alive while the tape is built.
    std::string bytes = std::move(text).TakeUTF8();
    const std::size_t size = bytes.size();
    WithPadding(bytes, kova::json::TapeDocument::kPadding);
    kova::json::TapeDocument tape;
    if (tape.ParseInPlace(std::string_view(bytes).substr(0, size))) {
      const TapeSource source{tape};
      if (const std::optional<TapePlan> plan = PlanFromTape(source)) {
        // The tape holds copies of every text: the document itself is no longer needed.
        std::string().swap(bytes);
        return ReadFromTape(source, *plan, owner, table);
      }
    }
    bytes.resize(size);
    text = ZANUnicodeString::FromValidUTF8(std::move(bytes));
  }
  ZANOmxJsonObject root;
  const HRESULT loaded = root.LoadFromString(text);
  // The tree holds copies of every text: the document's own copy is no longer needed.
  text = ZANUnicodeString();
  if (loaded < 0) return loaded;
  if (root.IsEmpty() || !root.IsValidJsonObject()) {
    kova::reader::LogFailure("KOVA JSON EMPTY OR INVALID");
    return E_FAIL;
  }
  table.SetOwner(owner);
  if (KOVALogger::IsActive() && kova::diagnostics::BulkyLinesWanted()) {
    kova::diagnostics::Emit(kova::diagnostics::LineKind::kBulky, root.PrettyPrint(), "Input Mapping Table JSON String");
  }
  return ParseMappingTable(root, table);
}

HRESULT KOVAMappingParser::ParseMappingTable(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  int version = -1;
  const HRESULT read = root.GetInteger("version", version);
  if (read < 0) {
    kova::reader::LogFailure("CANNOT READ VERSION ON KOVA JSON");
    return read;
  }
  // Recorded before any check, so a refused version is still seen on the table.
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(version);
  HRESULT status = E_FAIL;
  if (version <= 5) {
    kova::reader::LogFailure("UNSUPPORTED VERSION ( version < 6 )");
  } else if (version <= 12) {
    switch (version) {
      case 6: status = ParseRefV6(root, table); break;
      case 7: status = ParseRefV7(root, table); break;
      case 8: status = ParseRefV8(root, table); break;
      case 9: status = ParseRefV9(root, table); break;
      case 10: status = ParseRefV10(root, table); break;
      default: status = ParseRefV11(root, table); break;  // 11 and 12 are read alike
    }
  } else {
    // The words say 11 although 12 is read: documents and logs in the field carry this text.
    kova::reader::LogFailure("UNSUPPORTED VERSION ( version > 11 )");
  }
  if (KOVALogger::IsActive() && kova::diagnostics::BulkyLinesWanted()) {
    kova::diagnostics::Emit(kova::diagnostics::LineKind::kBulky, KOVALogger::ToString(table),
                            "MappingTable at the end of parsing");
  }
  return status;
}

bool KOVAMappingParser::GotAllMandatoryAttrs(const std::map<ZANUnicodeString, std::int32_t>& statuses) {
  bool all = true;
  for (const auto& [key, status] : statuses) {
    if (status < 0) {
      if (KOVALogger::IsActive()) KOVALogger::log(key, "UNVALUATED MANDATORY FIELD");
      all = false;
    }
  }
  return all;
}

std::int32_t KOVAMappingParser::GetStamp(const ZANOmxJsonObject& object, ZANUnicodeString& stamp) {
  return KOVAKSSVersioning::GetStampParser(object, stamp);
}

namespace {

// The reference reader of a version on a loaded root.
HRESULT ParseReferencesOf(const ZANOmxJsonObject& root, KOVAMappingTable& table, int version) {
  const std::shared_ptr<Node>& node = Node::Of(root);
  const Field<const Node*> references = TreeSource::FieldOf(node ? node->Find("References") : nullptr);
  const kova::reader::VersionKeys keys = kova::reader::KeysOfVersion(version);
  return kova::reader::ParseReferences(TreeSource{}, references, table, keys.references, keys.instances,
                                       keys.logInstanceFailure);
}

// The instance reader on a loaded object, for the instance readers of each version.
HRESULT ParseInstancesOf(const ZANOmxJsonObject& object, KOVAMappingReference& reference, StampKey stampKey) {
  const std::shared_ptr<Node>& node = Node::Of(object);
  if (!node) return ZAN_E_NOTFOUND;
  return kova::reader::ParseInstances(TreeSource{}, TreeSource::FieldOf(node->Find("Instances")), reference,
                                      stampKey);
}

}  // namespace

HRESULT KOVAMappingParser::ParseRefV7(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferencesOf(root, table, 7);
}

HRESULT KOVAMappingParser::ParseRefV8(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferencesOf(root, table, 8);
}

HRESULT KOVAMappingParser::ParseRefV9(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferencesOf(root, table, 9);
}

HRESULT KOVAMappingParser::ParseRefV10(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferencesOf(root, table, 10);
}

HRESULT KOVAMappingParser::ParseRefV11(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  return ParseReferencesOf(root, table, 11);
}

HRESULT KOVAMappingParser::ParseInstV7(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstancesOf(object, reference, StampKey::None);
}

HRESULT KOVAMappingParser::ParseInstV8(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstancesOf(object, reference, StampKey::None);
}

HRESULT KOVAMappingParser::ParseInstV10(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstancesOf(object, reference, StampKey::IsSetKSS);
}

HRESULT KOVAMappingParser::ParseInstV11(const ZANOmxJsonObject& object, KOVAMappingReference& reference) {
  return ParseInstancesOf(object, reference, StampKey::KOVASynchroStamp);
}

// Version 6: "References" is an object with at most one member, named by the reference's kOVA id;
// its instances are the members of the root's "RefInstances" object, named by their kOVA ids.
// Objects of version 6 carry neither "IsLocal" nor "CustomData".
HRESULT KOVAMappingParser::ParseRefV6(const ZANOmxJsonObject& root, KOVAMappingTable& table) {
  if (!root.Has("References")) return E_FAIL;
  ZANOmxJsonObject references;
  if (root.GetJsonObject("References", references) < 0) return E_FAIL;
  std::vector<ZANUnicodeString> names;
  references.GetKeys(names);
  if (names.size() > 1) return E_FAIL;
  if (names.empty()) return S_OK;
  const ZANUnicodeString& kovaId = names.front();
  ZANOmxJsonObject element;
  if (references.GetJsonObject(kovaId, element) < 0) return E_FAIL;
  ZANUnicodeString plexoId;
  MandatoryMap statuses;
  statuses[ZANUnicodeString("PlexoId")] = element.GetString("PlexoId", plexoId);
  if (!GotAllMandatoryAttrs(statuses)) return E_FAIL;
  if (kovaId.IsEmpty()) return E_FAIL;
  ZANUnicodeString stamp;
  const std::int32_t stampVersion = GetStamp(element, stamp);
  if (stampVersion < 0) return E_FAIL;
  KOVAMappingReference reference(kovaId, plexoId, stamp, "", false);
  KOVAPrivateAccess::GetPrivate(reference)->SetKSSVersion(stampVersion);
  if (root.Has("RefInstances") && ParseRefInstV6(root, reference) < 0) return E_FAIL;
  if (table.AddReference(reference) < 0) return E_FAIL;
  return S_OK;
}

HRESULT KOVAMappingParser::ParseRefInstV6(const ZANOmxJsonObject& root, KOVAMappingReference& reference) {
  ZANOmxJsonObject instances;
  if (root.GetJsonObject("RefInstances", instances) < 0) return E_FAIL;
  std::vector<ZANUnicodeString> names;
  instances.GetKeys(names);
  for (const ZANUnicodeString& kovaId : names) {
    ZANOmxJsonObject element;
    if (instances.GetJsonObject(kovaId, element) < 0) return E_FAIL;
    ZANUnicodeString plexoId;
    ZANUnicodeString refId;
    MandatoryMap statuses;
    statuses[ZANUnicodeString("PlexoId")] = element.GetString("PlexoId", plexoId);
    statuses[ZANUnicodeString("RefId")] = element.GetString("RefId", refId);
    if (!GotAllMandatoryAttrs(statuses)) return E_FAIL;
    if (kovaId.IsEmpty()) return E_FAIL;
    ZANUnicodeString stamp;
    const std::int32_t stampVersion = GetStamp(element, stamp);
    if (stampVersion < 0) return E_FAIL;
    KOVAMappingInstance instance(kovaId, plexoId, stamp, refId, "", false);
    KOVAPrivateAccess::GetPrivate(instance)->SetKSSVersion(stampVersion);
    if (reference.AddInstance(instance) < 0) return E_FAIL;
  }
  return S_OK;
}
