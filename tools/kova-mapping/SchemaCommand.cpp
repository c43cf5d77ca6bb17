// schema VERSION: the JSON Schema of mapping documents of one version, as installed under
// share/KOVAMappingServices/schemas/. The schemas are the files of schemas/, embedded at build time
// (cmake/EmbedSchemas.cmake), so the tool prints them byte for byte.
#include <string>
#include <string_view>

#include "Commands.h"
#include "Io.h"
#include "MappingSchemas.h"
#include "Status.h"

namespace kova::tool {

namespace {

// The embedded schema of version, or an empty view when there is none.
std::string_view SchemaOfVersion(int version) {
  for (const schemas::EmbeddedSchema& schema : schemas::kMappingDocumentSchemas) {
    if (schema.version == version) return schema.text;
  }
  return {};
}

}  // namespace

std::string SchemaVersionProblem(const std::string& text) {
  // Decimal digits only: "012", "0xc", "+12" or " 12" are not how a version is written.
  bool digits = !text.empty() && text.size() <= 2;
  for (const char c : text) digits = digits && c >= '0' && c <= '9';
  if (digits && text.front() != '0' && !SchemaOfVersion(std::stoi(text)).empty()) return {};
  return "\"" + text + "\" is not a mapping document version (6 to 12)";
}

int RunSchema(const SchemaOptions& options) {
  const std::string_view schema = SchemaOfVersion(options.version);
  if (schema.empty()) {
    throw ToolError("no schema of mapping documents of version " + std::to_string(options.version));
  }
  Output out(options.output);
  out.Write(schema);
  out.Commit();
  return 0;
}

}  // namespace kova::tool
