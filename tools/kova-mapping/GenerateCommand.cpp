// generate: a synthetic document for tests, benchmarks and load tests.
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>

#include "Commands.h"
#include "Documents.h"
#include "Generator.h"
#include "Io.h"

namespace kova::tool {

int RunGenerate(const GenerateOptions& options) {
  GeneratorOptions generator;
  generator.references = options.references;
  generator.instances = options.instances;
  generator.version = options.version != 0 ? options.version : KOVAMappingPrivateTable::GetCurrentVersion();
  generator.seed = options.seed;
  DocumentGenerator check(generator);  // refuses bad options before the output is opened

  Output out(options.output);
  if (options.compress) {
    std::string text;
    WriteGeneratedDocument(generator, [&](std::string_view piece) { text.append(piece); });
    out.Write(PackText(ZANUnicodeString::FromValidUTF8(std::move(text)), "generated document").View());
  } else {
    WriteGeneratedDocument(generator, [&](std::string_view piece) { out.Write(piece); });
  }
  out.Commit();
  return 0;
}

}  // namespace kova::tool
