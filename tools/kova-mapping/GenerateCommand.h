// The generate command's generator: the shared one of generator/, with options no document can
// follow refused as ToolError in the words of the command's options
// ("--references: a version 6 document holds at most one reference").
#ifndef KOVA_TOOLS_KOVA_MAPPING_GENERATECOMMAND_H_
#define KOVA_TOOLS_KOVA_MAPPING_GENERATECOMMAND_H_

#include <KOVAGenerator/DocumentText.h>
#include <KOVAGenerator/Generator.h>

namespace kova::tool {

using GeneratorOptions = generator::Options;
using generator::Field;
using generator::FieldsOf;
using generator::GeneratedObject;

class DocumentGenerator : public generator::Generator {
 public:
  // Throws ToolError for options no document can follow.
  explicit DocumentGenerator(const GeneratorOptions& options);
};

// The generated document's compact JSON text, to sink piece by piece (generator::WriteDocument).
// Throws ToolError for options no document can follow.
void WriteGeneratedDocument(const GeneratorOptions& options, const generator::Sink& sink);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_GENERATECOMMAND_H_
