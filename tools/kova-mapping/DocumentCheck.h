// What a document holds, or why it does not read: the one meaning of check, audit (the tool's and
// the Python package's) and their machine-readable records.
#ifndef KOVA_TOOLS_KOVA_MAPPING_DOCUMENTCHECK_H_
#define KOVA_TOOLS_KOVA_MAPPING_DOCUMENTCHECK_H_

#include <KOVAMappingServices/ZANStatus.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Documents.h"
#include "JsonLine.h"

namespace kova::tool {

// An object whose stored stamp is not in a known form (see StampForm).
struct OddStamp {
  std::string kovaId;
  bool isInstance = false;
  std::string stamp;         // the stored text, without its version prefix
  std::int32_t version = 0;  // the stamp version
  std::string problem;       // what is odd about it
};

struct DocumentSummary {
  bool ok = false;
  // The reader's status; for an input that is not UTF-8, 0x8007000D; none when the input could
  // not be read at all (the messages then hold the system's reason).
  std::optional<HRESULT> status;
  std::vector<std::string> messages;  // why it does not read; empty when ok
  bool inputError = false;            // the input could not be read, or is not UTF-8
  bool exception = false;             // the library raised an exception (the envelope's size)
  // What an ok document holds (0 and none otherwise).
  std::int32_t version = 0;
  std::size_t references = 0;
  std::size_t instances = 0;
  std::optional<std::string> root;
  std::vector<OddStamp> oddStamps;  // with DocumentCheckOptions::stamps only
  double seconds = 0;               // the time the read and the check took
};

struct DocumentCheckOptions {
  bool stamps = false;  // also list the objects whose stored stamp is not in a known form
};

// Why a stored stamp of that version is not in a known form, or nothing when it is: a known stamp
// is not empty, is base64 text (RFC 4648, with padding; a ':' left by a version of two digits is
// not), and has version 0 (derived from a CE stamp), 1 or 2.
std::optional<std::string> StampForm(std::string_view stamp, std::int32_t version);

// The summary of a read.
DocumentSummary Summarize(DocumentRead& read, const DocumentCheckOptions& options);
// Reads the file at path (ReadInput: "-" is standard input) and summarises it; never throws for
// bad input.
DocumentSummary CheckFile(const std::string& path, const DocumentCheckOptions& options);
// Summarises a document given as bytes, which must be UTF-8.
DocumentSummary CheckBytes(std::string_view bytes, const DocumentCheckOptions& options);

// "ok, version 8, 3 references, 4 instances, root GBX-100", "error 0x80004005: MESSAGE; ..." or,
// after an exception, "error: REASON" (the check command's line after "FILE: "; an input error is
// its message alone).
std::string SummaryText(const DocumentSummary& summary);
// The machine-readable record: file, ok, status (hex text or null), status_code (number or null),
// messages, version, references, instances, root (null when none or not ok), and with stamps,
// odd_stamps; seconds when timed.
JsonLine SummaryRecord(const std::string& file, const DocumentSummary& summary, bool withStamps, bool withSeconds);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_DOCUMENTCHECK_H_
