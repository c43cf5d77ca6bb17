// convert FILE: the document written again in the current version, plain or enveloped.
#include "Commands.h"
#include "Documents.h"
#include "Io.h"
#include "Status.h"

namespace kova::tool {

int RunConvert(const ConvertOptions& options) {
  const std::string text = ReadInput(options.file);
  Output out(options.output);
  DocumentRead read = ReadDocument(text);
  if (!read.Ok()) throw ToolError(options.file + ": " + read.ErrorText());

  // The writer wraps its text when "IPLX_ACTIVATE_MAPPING_COMPRESSION" is set: --plain opens it
  // again, --compress wraps it when it is not wrapped yet.
  const DocumentForm form = options.plain      ? DocumentForm::kPlain
                            : options.compress ? DocumentForm::kEnvelope
                                               : DocumentForm::kAsTheSwitchSays;
  out.Write(WriteDocument(read.table, form, options.file).View());
  out.Commit();
  return 0;
}

}  // namespace kova::tool
