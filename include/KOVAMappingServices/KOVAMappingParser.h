// KOVAMappingParser: reads and writes mapping documents, and packs and opens the compressed
// envelope ("V" + version + ":" + UTF-8 size + ":" + base64 of the zlib-compressed text).
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGPARSER_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGPARSER_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/ZANBaseUnknown.h>
#include <KOVAMappingServices/ZANOmxJson.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>
#include <map>

class KOVA_EXPORT KOVAMappingParser {
 public:
  // Reads a mapping document of versions 6 to 12, plain or enveloped, into table. References
  // added before a failure stay in the table.
  static HRESULT TranslateToMappingTable(ZANUnicodeString text, const ZANBaseUnknown& owner,
                                         KOVAMappingTable& table);
  // Writes table as a document of the current version, enveloped when
  // "IPLX_ACTIVATE_MAPPING_COMPRESSION" was set when the library was loaded.
  static ZANUnicodeString TranslateToString(KOVAMappingTable& table);

  // out = the envelope of text, whatever the status; returns the base64 conversion's status.
  static HRESULT CompressMTWithPrefix(const ZANUnicodeString& text, ZANUnicodeString& out);
  // Opens an envelope found in text (its prefix is searched anywhere): on success text becomes
  // the text it holds. E_FAIL when there is no envelope. Throws std::out_of_range for a size above
  // 2147483647 and std::invalid_argument for a size without digits.
  static HRESULT TryDecompressMT(ZANUnicodeString& text);

 private:
  static HRESULT ParseMappingTable(const ZANOmxJsonObject& root, KOVAMappingTable& table);
  static HRESULT ParseRefV6(const ZANOmxJsonObject& root, KOVAMappingTable& table);
  static HRESULT ParseRefV7(const ZANOmxJsonObject& root, KOVAMappingTable& table);
  static HRESULT ParseRefV8(const ZANOmxJsonObject& root, KOVAMappingTable& table);
  static HRESULT ParseRefV9(const ZANOmxJsonObject& root, KOVAMappingTable& table);
  static HRESULT ParseRefV10(const ZANOmxJsonObject& root, KOVAMappingTable& table);
  static HRESULT ParseRefV11(const ZANOmxJsonObject& root, KOVAMappingTable& table);
  static HRESULT ParseRefInstV6(const ZANOmxJsonObject& root, KOVAMappingReference& reference);
  static HRESULT ParseInstV7(const ZANOmxJsonObject& object, KOVAMappingReference& reference);
  static HRESULT ParseInstV8(const ZANOmxJsonObject& object, KOVAMappingReference& reference);
  static HRESULT ParseInstV10(const ZANOmxJsonObject& object, KOVAMappingReference& reference);
  static HRESULT ParseInstV11(const ZANOmxJsonObject& object, KOVAMappingReference& reference);
  static bool GotAllMandatoryAttrs(const std::map<ZANUnicodeString, std::int32_t>& statuses);
  static std::int32_t GetStamp(const ZANOmxJsonObject& object, ZANUnicodeString& stamp);

  static HRESULT CompressMT(const ZANUnicodeString& text, ZANUnicodeString& out, std::uint64_t& size);
  static HRESULT DecompressMT(const ZANUnicodeString& payload, ZANUnicodeString& out, std::uint64_t& size);
  static std::uint64_t GetSizeRemovePrefix(ZANUnicodeString& text);
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGPARSER_H_
