#include "Documents.h"

#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/ZANBaseUnknown.h>

#include <stdexcept>
#include <utility>

#include "Status.h"

namespace kova::tool {

namespace {

// What a status means when the reader logged nothing about it.
std::string ReadStatusMeaning(HRESULT status) {
  switch (status) {
    case E_FAIL: return "document rejected";
    case ZAN_E_TYPEMISMATCH: return "wrong type (\"References\", \"Instances\" or one of their elements)";
    default: return StatusMeaning(status);
  }
}

}  // namespace

std::vector<std::string> DocumentRead::Reasons() const {
  if (!exception.empty()) return {exception};
  if (ZANSucceeded(status)) return {};
  if (messages.empty()) return {ReadStatusMeaning(status)};
  return messages;
}

std::string DocumentRead::ErrorText() const {
  if (!exception.empty()) return "error: " + exception;
  std::string text = "error " + FormatStatus(status) + ": ";
  const std::vector<std::string> reasons = Reasons();
  for (std::size_t i = 0; i < reasons.size(); ++i) {
    if (i > 0) text.append("; ");
    text.append(reasons[i]);
  }
  return text;
}

DocumentRead ReadDocument(ZANUnicodeString text) {
  DocumentRead read;
  // The reader's failure reasons, taken through the API for this call only.
  KOVALogCapture capture;
  try {
    read.status = KOVAMappingParser::TranslateToMappingTable(std::move(text), ZANBaseUnknown(), read.table);
  } catch (const std::out_of_range& error) {
    read.status = kStatusSizeOutOfRange;
    read.exception = DescribeLibraryException(error);
  } catch (const std::invalid_argument& error) {
    read.status = kStatusSizeUnreadable;
    read.exception = DescribeLibraryException(error);
  }
  read.messages = capture.Reasons();
  return read;
}

DocumentRead ReadDocument(const std::string& text) { return ReadDocument(ZANUnicodeString(text)); }

ZANUnicodeString PackText(const ZANUnicodeString& text, const std::string& name) {
  ZANUnicodeString envelope;
  HRESULT status = S_OK;
  std::vector<std::string> messages;
  {
    KOVALogCapture capture;
    status = KOVAMappingParser::CompressMTWithPrefix(text, envelope);
    messages = capture.Reasons();
  }
  if (ZANFailed(status)) {
    throw ToolError(name + ": cannot pack: error " + FormatStatus(status) + ": " + StatusMeaning(status), status);
  }
  for (const std::string& message : messages) {
    if (message == "COMPRESSION FAILED") throw ToolError(name + ": cannot pack: the compression failed");
  }
  return envelope;
}

ZANUnicodeString UnpackText(const ZANUnicodeString& text, const std::string& name) {
  ZANUnicodeString opened = text;
  HRESULT status = S_OK;
  try {
    status = KOVAMappingParser::TryDecompressMT(opened);
  } catch (const std::out_of_range& error) {
    throw ToolError(name + ": cannot unpack: " + DescribeLibraryException(error), kStatusSizeOutOfRange);
  } catch (const std::invalid_argument& error) {
    throw ToolError(name + ": cannot unpack: " + DescribeLibraryException(error), kStatusSizeUnreadable);
  }
  if (ZANSucceeded(status)) return opened;
  std::string reason;
  if (status == E_FAIL) {
    // The prefix is removed before its size is looked at: a text that changed had an envelope
    // whose size field is 0.
    reason = opened == text ? "no envelope found" : "the envelope's size field is 0";
  } else if (status == ZAN_E_INVALIDDATA) {
    reason = "the envelope's payload is not base64";
  } else if (status == ZANZ_E_INSUFFICIENTBUFFER) {
    reason = "insufficient buffer (the envelope's size field is smaller than the text it holds)";
  } else {
    reason = StatusMeaning(status);
  }
  throw ToolError(name + ": cannot unpack: error " + FormatStatus(status) + ": " + reason, status);
}

ZANUnicodeString WriteDocument(KOVAMappingTable& table, DocumentForm form, const std::string& name) {
  ZANUnicodeString document = KOVAMappingParser::TranslateToString(table);
  // The writer's own text is a JSON object or, under the compression switch, an envelope ("V" +
  // version + ...): the other form is made from it when asked for.
  const bool enveloped = !document.IsEmpty() && document.View().front() == 'V';
  if (form == DocumentForm::kPlain && enveloped) return UnpackText(document, name);
  if (form == DocumentForm::kEnvelope && !enveloped) return PackText(document, name);
  return document;
}

std::int32_t RecordedVersion(KOVAMappingTable& table) { return KOVAPrivateAccess::GetPrivate(table)->GetVersion(); }

std::optional<std::string> RootId(KOVAMappingTable& table) {
  KOVAMappingReference root;
  if (ZANFailed(table.GetRootReference(root))) return std::nullopt;
  return root.GetKOVAID().ConvertToChar();
}

}  // namespace kova::tool
