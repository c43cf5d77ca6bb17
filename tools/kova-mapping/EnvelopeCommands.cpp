// pack FILE / unpack FILE: the compressed envelope of any text, and the text of an envelope.
#include "Commands.h"
#include "Documents.h"
#include "Io.h"

namespace kova::tool {

int RunPack(const EnvelopeOptions& options) {
  const ZANUnicodeString text(ReadInput(options.file));
  Output out(options.output);
  out.Write(PackText(text, options.file).View());
  out.Commit();
  return 0;
}

int RunUnpack(const EnvelopeOptions& options) {
  const ZANUnicodeString text(ReadInput(options.file));
  Output out(options.output);
  out.Write(UnpackText(text, options.file).View());
  out.Commit();
  return 0;
}

}  // namespace kova::tool
