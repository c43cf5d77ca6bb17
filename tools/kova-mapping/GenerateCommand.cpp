// generate: a synthetic document for tests, benchmarks and load tests.
#include "GenerateCommand.h"

#include <KOVAMappingServices/KOVAMappingPrivateTable.h>

#include "Commands.h"
#include "Documents.h"
#include "Io.h"
#include "Status.h"

namespace kova::tool {

namespace {

ToolError InTheCommandsWords(const generator::BadOptions& error) {
  return ToolError("--" + error.option() + ": " + error.what());
}

}  // namespace

DocumentGenerator::DocumentGenerator(const GeneratorOptions& options) try : generator
  ::Generator(options) {}
catch (const generator::BadOptions& error) {
  throw InTheCommandsWords(error);
}

void WriteGeneratedDocument(const GeneratorOptions& options, const generator::Sink& sink) {
  try {
    generator::WriteDocument(options, sink);
  } catch (const generator::BadOptions& error) {
    throw InTheCommandsWords(error);
  }
}

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
