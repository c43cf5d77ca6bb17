// convert FILE: the document written again in the current version, plain or enveloped.
#include <KOVAMappingServices/KOVAMappingParser.h>

#include "Commands.h"
#include "Documents.h"
#include "Io.h"
#include "Status.h"

namespace kova::tool {

namespace {

// The writer's own text is either a JSON object or, under the compression switch, an envelope
// ("V" + version + ...).
bool IsEnvelope(const ZANUnicodeString& document) { return !document.IsEmpty() && document.View().front() == 'V'; }

}  // namespace

int RunConvert(const ConvertOptions& options) {
  const std::string text = ReadInput(options.file);
  Output out(options.output);
  DocumentRead read = ReadDocument(text);
  if (!read.Ok()) throw ToolError(options.file + ": " + read.ErrorText());

  ZANUnicodeString document = KOVAMappingParser::TranslateToString(read.table);
  // The writer wraps its text when "IPLX_ACTIVATE_MAPPING_COMPRESSION" is set: --plain opens it
  // again, --compress wraps it when it is not wrapped yet.
  if (options.plain && IsEnvelope(document)) document = UnpackText(document, options.file);
  if (options.compress && !IsEnvelope(document)) document = PackText(document, options.file);
  out.Write(document.View());
  out.Commit();
  return 0;
}

}  // namespace kova::tool
