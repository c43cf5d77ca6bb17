#include "DocumentCheck.h"

#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <chrono>
#include <utility>

#include "Io.h"
#include "Status.h"
#include "Text.h"

namespace kova::tool {

namespace {

bool IsBase64Character(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

// Whether text is RFC 4648 base64 with padding: groups of four characters, '=' only at the end.
bool IsBase64(std::string_view text) {
  if (text.empty() || text.size() % 4 != 0) return false;
  std::size_t padding = 0;
  while (padding < 2 && text[text.size() - 1 - padding] == '=') ++padding;
  for (std::size_t i = 0; i < text.size() - padding; ++i) {
    if (!IsBase64Character(text[i])) return false;
  }
  return true;
}

void AddOddStamp(std::vector<OddStamp>& odd, const KOVAMappingPrivateObject& object, bool isInstance) {
  const ZANUnicodeString stamp = object.GetKSStamp();
  const std::int32_t version = object.GetKSSVersion();
  if (std::optional<std::string> problem = StampForm(stamp.View(), version)) {
    odd.push_back(
        {object.GetKOVAID().ConvertToChar(), isInstance, stamp.ConvertToChar(), version, std::move(*problem)});
  }
}

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

}  // namespace

std::optional<std::string> StampForm(std::string_view stamp, std::int32_t version) {
  if (stamp.empty()) return "no stamp";
  if (!IsBase64(stamp)) return "not base64";
  if (version < 0 || version > 2) return "stamp version " + std::to_string(version);
  return std::nullopt;
}

DocumentSummary Summarize(DocumentRead& read, const DocumentCheckOptions& options) {
  DocumentSummary summary;
  summary.ok = read.Ok();
  summary.status = read.status;
  summary.messages = read.Reasons();
  summary.exception = !read.exception.empty();
  if (!summary.ok) return summary;
  summary.version = RecordedVersion(read.table);
  summary.root = RootId(read.table);
  const KOVAMappingTable& table = read.table;
  summary.references = table.GetReferences().size();
  for (const KOVAMappingReference& reference : table.GetReferences()) {
    const std::vector<KOVAMappingInstance>& instances = reference.GetInstances();
    summary.instances += instances.size();
    if (!options.stamps) continue;
    AddOddStamp(summary.oddStamps, *KOVAPrivateAccess::GetPrivate(reference), false);
    for (const KOVAMappingInstance& instance : instances) {
      AddOddStamp(summary.oddStamps, *KOVAPrivateAccess::GetPrivate(instance), true);
    }
  }
  return summary;
}

DocumentSummary CheckFile(const std::string& path, const DocumentCheckOptions& options) {
  const Clock::time_point start = Clock::now();
  DocumentSummary summary;
  std::optional<ZANUnicodeString> text;
  try {
    text = ZANUnicodeString::FromValidUTF8(ReadInput(path));
  } catch (const ToolError& error) {
    summary.inputError = true;
    if (error.osError() == 0) summary.status = error.status();
    summary.messages.emplace_back(error.what());
  } catch (const std::bad_alloc&) {
    summary.inputError = true;
    summary.messages.emplace_back(path + ": out of memory");
  }
  if (text) {
    DocumentRead read = ReadDocument(std::move(*text));
    summary = Summarize(read, options);
  }
  summary.seconds = SecondsSince(start);
  return summary;
}

DocumentSummary CheckBytes(std::string_view bytes, const DocumentCheckOptions& options) {
  const Clock::time_point start = Clock::now();
  DocumentSummary summary;
  ZANUnicodeString text(bytes);
  if (text.View() != bytes) {
    summary.inputError = true;
    summary.status = ZAN_E_INVALIDDATA;
    summary.messages.push_back("not UTF-8 (invalid byte at offset " +
                               std::to_string(FindInvalidUtf8(bytes).value_or(0)) + ")");
  } else {
    DocumentRead read = ReadDocument(std::move(text));
    summary = Summarize(read, options);
  }
  summary.seconds = SecondsSince(start);
  return summary;
}

std::string SummaryText(const DocumentSummary& summary) {
  if (summary.ok) {
    return "ok, version " + std::to_string(summary.version) + ", " + std::to_string(summary.references) +
           " references, " + std::to_string(summary.instances) + " instances, " +
           (summary.root ? "root " + OneLine(*summary.root) : std::string("no root"));
  }
  if (summary.inputError) return summary.messages.empty() ? std::string() : summary.messages.front();
  std::string text = summary.status && !summary.exception ? "error " + FormatStatus(*summary.status) + ": " : "error: ";
  for (std::size_t i = 0; i < summary.messages.size(); ++i) {
    if (i > 0) text += "; ";
    text += summary.messages[i];
  }
  return text;
}

JsonLine SummaryRecord(const std::string& file, const DocumentSummary& summary, bool withStamps, bool withSeconds) {
  JsonLine record;
  record.String("file", file).Bool("ok", summary.ok);
  if (summary.status) {
    record.String("status", FormatStatus(*summary.status))
        .Number("status_code", static_cast<std::uint32_t>(*summary.status));
  } else {
    record.Null("status").Null("status_code");
  }
  record.Strings("messages", summary.messages);
  if (summary.ok) {
    record.Number("version", summary.version);
  } else {
    record.Null("version");
  }
  record.Number("references", static_cast<std::int64_t>(summary.references))
      .Number("instances", static_cast<std::int64_t>(summary.instances))
      .OptionalString("root", summary.root);
  if (withStamps) {
    std::vector<std::string> odd;
    for (const OddStamp& stamp : summary.oddStamps) {
      odd.push_back(JsonLine()
                        .String("kova_id", stamp.kovaId)
                        .String("kind", stamp.isInstance ? "instance" : "reference")
                        .String("stamp", stamp.stamp)
                        .Number("stamp_version", stamp.version)
                        .String("problem", stamp.problem)
                        .Text());
    }
    record.Raw("odd_stamps", JsonArray(odd));
  }
  if (withSeconds) record.Real("seconds", summary.seconds);
  return record;
}

}  // namespace kova::tool
