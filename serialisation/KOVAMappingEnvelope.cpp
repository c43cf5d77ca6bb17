// The compressed envelope of a mapping document:
//   "V" + document version ("%d") + ":" + UTF-8 byte size of the text ("%I64u") + ":" + payload,
// where the payload is the base64 text of the zlib stream of the document's UTF-8 bytes.
#include <KOVAMappingServices/KOVAMappingParser.h>

#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/QORSysServices.h>
#include <KOVAMappingServices/ZANSysCompression.h>

#include "diagnostics/LogLines.h"
#include "platform/HugePages.h"
#include "platform/Utf8.h"
#include "serialisation/EnvelopePrefix.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kUncompressedSizeLabel = "UNCOMPRESSED SIZE IS: ";
constexpr std::string_view kCompressedSizeLabel = "COMPRESSED SIZE IS: ";

struct FreeDeleter {
  void operator()(void* buffer) const noexcept { std::free(buffer); }
};

using kova::diagnostics::LineKind;

// Every line of the envelope has no context. The failure lines are reasons, the others progress.
void Log(LineKind kind, const ZANUnicodeString& message) {
  if (KOVALogger::IsActive()) kova::diagnostics::Emit(kind, message, ZANUnicodeString());
}

// The whole envelope or document after its announcing line: passed on only when someone takes
// bulky lines.
void LogWholeText(const ZANUnicodeString& text) {
  if (KOVALogger::IsActive() && kova::diagnostics::BulkyLinesWanted()) {
    kova::diagnostics::Emit(LineKind::kBulky, text, ZANUnicodeString());
  }
}

// The size lines keep the form their readers know: the label is shown from the position given by
// the size onwards, and the number itself is not shown. A size beyond the label shows nothing.
void LogSizeLine(std::string_view label, std::uint64_t size) {
  if (!KOVALogger::IsActive()) return;
  Log(LineKind::kDetail,
      size <= label.size() ? ZANUnicodeString(label.substr(static_cast<std::size_t>(size))) : ZANUnicodeString());
}

}  // namespace

HRESULT KOVAMappingParser::CompressMT(const ZANUnicodeString& text, ZANUnicodeString& out, std::uint64_t& size) {
  std::size_t length = 0;
  text.ConvertToUTF8(nullptr, length);
  // Working buffers are written in full before they are read: they are not cleared first.
  auto utf8 = std::make_unique_for_overwrite<char[]>(length + 1);
  text.ConvertToUTF8(utf8.get(), length);

  std::uint64_t compressedLength = ZANSysCompressBound(length);
  auto target = std::make_unique_for_overwrite<unsigned char[]>(compressedLength);
  const HRESULT compression =
      ZANSysCompress(reinterpret_cast<const unsigned char*>(utf8.get()), length, target.get(), compressedLength);
  utf8.reset();
  // A failed compression leaves an empty stream, which is still encoded below: the envelope is
  // built all the same and only the log tells.
  if (ZANFailed(compression)) Log(LineKind::kReason, "COMPRESSION FAILED");

  size = length;
  LogSizeLine(kUncompressedSizeLabel, size);
  LogSizeLine(kCompressedSizeLabel, compressedLength);

  char* base64 = nullptr;
  const HRESULT status = QORSysConverter::ConvertToBase64(target.get(), compressedLength, base64);
  if (ZANSucceeded(status)) {
    const std::unique_ptr<char, FreeDeleter> encoded(base64);
    target.reset();
    // The base64 alphabet is ASCII, hence valid UTF-8.
    out = encoded ? ZANUnicodeString::FromValidUTF8(std::string_view(encoded.get())) : ZANUnicodeString();
  }
  return status;
}

HRESULT KOVAMappingParser::CompressMTWithPrefix(const ZANUnicodeString& text, ZANUnicodeString& out) {
  std::uint64_t size = 0;
  const HRESULT status = CompressMT(text, out, size);

  ZANUnicodeString version;
  version.BuildFromNum(static_cast<int>(KOVAMappingPrivateTable::GetCurrentVersion()), "%d");
  ZANUnicodeString sizeText;
  sizeText.BuildFromNum(static_cast<unsigned long long>(size), "%I64u");
  // The prefix goes in front whatever the status: when the encoding failed, out still holds what
  // the caller had put in it.
  out = "V" + version + ":" + sizeText + ":" + out;

  Log(LineKind::kDetail, "COMPRESSED STRING:");
  LogWholeText(out);
  return status;
}

namespace {

// Where an envelope's payload starts in narrow, and the size its prefix declares; nothing without
// a prefix.
struct Payload {
  std::size_t begin;
  std::uint64_t size;
};

std::optional<Payload> FindPayload(std::string_view narrow) {
  const std::optional<kova::EnvelopePrefixMatch> match = kova::FindEnvelopePrefix(narrow);
  if (!match) return std::nullopt;

  // The size digits are read from the fixed position 4 of the prefix up to its final ":", which
  // assumes a two-digit version (V12:, V11:): with V9:1234: the size read is 234. std::stoi
  // reads the leading digits of that window and throws std::invalid_argument when it starts with
  // ":" or is empty, std::out_of_range above 2147483647; either leaves the text as it was.
  const std::string_view prefix = narrow.substr(match->position, match->length);
  const int declared = std::stoi(std::string(prefix.substr(4, prefix.size() - 5)));
  const auto size = static_cast<std::uint64_t>(declared);

  // The first characters of the text go, as many as the prefix is long, wherever the prefix was
  // found; the prefix is ASCII, so its length in bytes is its length in characters.
  const std::size_t removed = std::min<std::size_t>(match->length, INT_MAX);
  return Payload{kova::utf8::OffsetOfCodePoint(narrow, removed), size};
}

// What follows the removed characters, kept whole, as a copy of bytes already known to be valid
// UTF-8.
ZANUnicodeString PayloadText(std::string_view narrow, const Payload& payload) {
  return ZANUnicodeString::FromValidUTF8(std::string_view(narrow.substr(payload.begin)));
}

}  // namespace

std::uint64_t KOVAMappingParser::GetSizeRemovePrefix(ZANUnicodeString& text) {
  // The narrow form of the text is its UTF-8 form: it is searched in place, without a copy.
  const std::optional<Payload> payload = FindPayload(text.View());
  if (!payload) return 0;
  text = PayloadText(text.View(), *payload);
  return payload->size;
}

namespace {

// Opens the payload (a C string) into out, a text of at most size bytes.
HRESULT DecompressPayload(const char* payload, ZANUnicodeString& out, std::uint64_t size) {
  unsigned char* decoded = nullptr;
  std::uint64_t decodedLength = 0;
  HRESULT status = QORSysConverter::ConvertFromBase64(payload, decoded, decodedLength);
  if (ZANFailed(status)) return status;
  std::unique_ptr<unsigned char, FreeDeleter> compressed(decoded);

  // The target holds exactly the declared size. When the declared size is one that a document
  // compresses from (at most kDirectRatio times the compressed bytes), the text is opened straight
  // into the string that the result keeps. A larger declaration (an unusual ratio, or a prefix
  // that lies) gets a target that is not cleared, so that it costs address space, not memory, and
  // only what is produced is copied out. Both ways decompress into the same number of bytes and
  // give the same text.
  constexpr std::uint64_t kDirectRatio = 16;
  std::string direct;
  std::unique_ptr<unsigned char[]> target;
  unsigned char* into = nullptr;
  if (size / kDirectRatio <= decodedLength) {
    direct.reserve(static_cast<std::size_t>(size));
    // Large texts fault in far fewer pages when the kernel may back them with huge pages.
    kova::json::AdviseHugePages(direct.data(), static_cast<std::size_t>(size));
    direct.resize(static_cast<std::size_t>(size));
    into = reinterpret_cast<unsigned char*>(direct.data());
  } else {
    target = std::make_unique_for_overwrite<unsigned char[]>(size);
    kova::json::AdviseHugePages(target.get(), static_cast<std::size_t>(size));
    into = target.get();
  }
  std::uint64_t produced = size;
  status = ZANSysUncompress(compressed.get(), decodedLength, into, produced);
  compressed.reset();

  if (ZANFailed(status)) {
    Log(LineKind::kReason, "DECOMPRESSION");
    switch (status) {
      case ZANZ_E_OUTOFMEMORY: Log(LineKind::kReason, "ZANZ_E_OUTOFMEMORY"); break;
      case ZANZ_E_INSUFFICIENTBUFFER: Log(LineKind::kReason, "ZANZ_E_INSUFFICIENTBUFFER"); break;
      case ZANZ_E_BADDATA: Log(LineKind::kReason, "ZANZ_E_BADDATA"); break;
      default: break;
    }
    return status;
  }

  if (target) {
    out = ZANUnicodeString(reinterpret_cast<const char*>(target.get()), static_cast<std::size_t>(produced));
    target.reset();
  } else {
    direct.resize(static_cast<std::size_t>(produced));
    out = ZANUnicodeString(std::move(direct));
  }
  Log(LineKind::kDetail, "DECOMPRESSED STRING:");
  LogWholeText(out);
  return status;
}

}  // namespace

HRESULT KOVAMappingParser::DecompressMT(const ZANUnicodeString& payload, ZANUnicodeString& out, std::uint64_t& size) {
  return DecompressPayload(payload.CastToCharPtr(), out, size);
}

HRESULT KOVAMappingParser::TryDecompressMT(ZANUnicodeString& text) {
  // As GetSizeRemovePrefix then DecompressMT, but the payload is decoded where it lies in text: the
  // text loses its prefix only when the payload does not open (or opening it throws).
  const std::string_view narrow = text.View();
  const std::optional<Payload> payload = FindPayload(narrow);
  if (!payload) return E_FAIL;
  if (payload->size == 0) {
    text = PayloadText(narrow, *payload);
    return E_FAIL;
  }
  ZANUnicodeString result;
  HRESULT status = S_OK;
  try {
    // The payload is a suffix of the text: its C string ends where the text's does.
    status = DecompressPayload(text.CastToCharPtr() + payload->begin, result, payload->size);
  } catch (...) {
    text = PayloadText(narrow, *payload);
    throw;
  }
  if (ZANSucceeded(status)) {
    text = std::move(result);
  } else {
    text = PayloadText(narrow, *payload);
  }
  return status;
}
