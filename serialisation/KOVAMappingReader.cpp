// Reading mapping documents of versions 6 to 12 into mapping tables.
//
// The text is parsed once, and every version is read from that parse by one reader
// (serialisation/ReaderCore.h), whether the log is on or off. What the log shows of the input
// comes from the text itself, printed by the library's JSON writer.
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <string>
#include <string_view>
#include <utility>

#include "diagnostics/LogLines.h"
#include "platform/JsonWrite.h"
#include "platform/ParsedJson.h"
#include "serialisation/ReaderCore.h"

namespace {

using kova::diagnostics::BulkyLinesWanted;
using kova::diagnostics::Emit;
using kova::diagnostics::LineKind;
using kova::reader::LogFailure;

// The version of a document and the reader it picks; the table at the end goes to the log once a
// version was read, whatever the reader's outcome.
HRESULT ReadVersionAndReferences(const kova::json::ParsedJson& parsed, std::string& text, KOVAMappingTable& table,
                                 bool printed) {
  int version = -1;
  const HRESULT read = parsed.ReadInteger(text, "version", version);
  // The parse holds copies of every text: the document's own copy is no longer needed.
  std::string().swap(text);
  if (ZANFailed(read)) {
    LogFailure("CANNOT READ VERSION ON KOVA JSON");
    return read;
  }
  // Recorded before any check, so a refused version is still seen on the table.
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(version);
  HRESULT status = E_FAIL;
  if (version <= 5) {
    LogFailure("UNSUPPORTED VERSION ( version < 6 )");
  } else if (version <= 12) {
    status = kova::reader::ReadReferences(parsed.Top().get_object().value_unsafe(), version, table);
  } else {
    // The words say 11 although 12 is read: documents and logs in the field carry this text.
    LogFailure("UNSUPPORTED VERSION ( version > 11 )");
  }
  if (printed) Emit(LineKind::kBulky, KOVALogger::ToString(table), "MappingTable at the end of parsing");
  return status;
}

}  // namespace

HRESULT KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString text, const ZANBaseUnknown& owner,
                                                   KOVAMappingTable& table) {
  // An envelope is replaced by the text it holds; any other text is parsed as it is.
  TryDecompressMT(text);
  std::string bytes = std::move(text).TakeUTF8();
  kova::json::ParsedJson parsed;
  const HRESULT loaded = parsed.Parse(bytes);
  if (ZANFailed(loaded)) return loaded;
  simdjson::dom::object root;
  if (parsed.Blank() || parsed.Top().get_object().get(root) != simdjson::SUCCESS || root.size() == 0) {
    LogFailure("KOVA JSON EMPTY OR INVALID");
    return E_FAIL;
  }
  table.SetOwner(owner);
  const bool printed = KOVALogger::IsActive() && BulkyLinesWanted();
  if (printed) {
    Emit(LineKind::kBulky, ZANUnicodeString::FromValidUTF8(kova::json::PrettyText(bytes)),
         "Input Mapping Table JSON String");
  }
  return ReadVersionAndReferences(parsed, bytes, table, printed);
}
