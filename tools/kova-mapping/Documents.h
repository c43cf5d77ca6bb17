// Reading mapping documents through the library, with the reader's diagnostics.
#ifndef KOVA_TOOLS_KOVA_MAPPING_DOCUMENTS_H_
#define KOVA_TOOLS_KOVA_MAPPING_DOCUMENTS_H_

#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kova::tool {

// The statuses a read reports when the library raised an exception instead of returning one: the
// envelope's size field beyond 2147483647 (0x8000000B), or without digits where it is read
// (0x8000FFFF). The C interface reports the same two.
inline constexpr HRESULT kStatusSizeOutOfRange = static_cast<HRESULT>(0x8000000Bu);
inline constexpr HRESULT kStatusSizeUnreadable = static_cast<HRESULT>(0x8000FFFFu);

struct DocumentRead {
  KOVAMappingTable table;             // what was read, also after a failure
  HRESULT status = S_OK;              // TranslateToMappingTable's status, or one of the two above
  std::vector<std::string> messages;  // the failure messages the library logged
  std::string exception;              // set when a library exception stopped the read

  bool Ok() const { return exception.empty() && ZANSucceeded(status); }
  // Why the read failed, one text each: the messages, or when none was logged the status's
  // meaning, or the exception's. Empty after a successful read.
  std::vector<std::string> Reasons() const;
  // "error 0x80004005: MESSAGE; MESSAGE" (the reasons), or "error: REASON" when an exception
  // stopped the read.
  std::string ErrorText() const;
};

// Reads a document of versions 6 to 12, plain or enveloped, with TranslateToMappingTable. Never
// throws for bad input: the envelope's size exceptions are reported in the result. The text is
// handed to the library without another copy.
DocumentRead ReadDocument(ZANUnicodeString text);
DocumentRead ReadDocument(const std::string& text);
inline DocumentRead ReadDocument(const char* text) { return ReadDocument(std::string(text)); }

// The envelope of text (CompressMTWithPrefix). Throws ToolError "NAME: cannot pack: REASON" when
// the library reports a failure, or logs that the compression itself failed (the envelope would
// then hold no document).
ZANUnicodeString PackText(const ZANUnicodeString& text, const std::string& name);

// The text held by the envelope in text (TryDecompressMT). Throws ToolError
// "NAME: cannot unpack: REASON" when there is no envelope or it does not open.
ZANUnicodeString UnpackText(const ZANUnicodeString& text, const std::string& name);

// The form of a written document.
enum class DocumentForm {
  kAsTheSwitchSays,  // the envelope when "IPLX_ACTIVATE_MAPPING_COMPRESSION" is set, else plain JSON
  kPlain,
  kEnvelope,
};

// The table written by TranslateToString (the current version), in the given form. Throws
// ToolError as PackText and UnpackText do, naming name.
ZANUnicodeString WriteDocument(KOVAMappingTable& table, DocumentForm form, const std::string& name);

// The version recorded on the table by the reader.
std::int32_t RecordedVersion(KOVAMappingTable& table);
// The kOVA id of the table's root reference, if it has one.
std::optional<std::string> RootId(KOVAMappingTable& table);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_DOCUMENTS_H_
