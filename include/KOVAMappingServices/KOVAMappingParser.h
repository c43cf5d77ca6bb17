// KOVAMappingParser: reads and writes mapping documents, and packs and opens the compressed
// envelope ("V" + version + ":" + UTF-8 size + ":" + base64 of the zlib-compressed text).
//
// Thread safety: every function is static, keeps no state between calls and may run on several
// threads at once, each on its own table (a table is used by one thread at a time).
// Diagnostics: with "ActivateKOVALogger" set, or a KOVALogCapture on the calling thread, each call
// reports its failures (and, when someone takes them, the texts it read or wrote) as log lines.
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGPARSER_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGPARSER_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/ZANBaseUnknown.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>

class KOVA_EXPORT KOVAMappingParser {
 public:
  // Reads a mapping document of versions 6 to 12, plain or enveloped, into table. A text that is
  // not JSON leaves the table untouched (the parser's status); one that is not a non-empty object
  // too (E_FAIL). Otherwise the owner and the document's version are set first, and references
  // are added one by one as each is read whole: on a failure those added before stay in the table
  // (callers wanting all or nothing clear it on a failed status).
  static HRESULT TranslateToMappingTable(ZANUnicodeString text, const ZANBaseUnknown& owner, KOVAMappingTable& table);
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
  static HRESULT CompressMT(const ZANUnicodeString& text, ZANUnicodeString& out, std::uint64_t& size);
  static HRESULT DecompressMT(const ZANUnicodeString& payload, ZANUnicodeString& out, std::uint64_t& size);
  static std::uint64_t GetSizeRemovePrefix(ZANUnicodeString& text);
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGPARSER_H_
