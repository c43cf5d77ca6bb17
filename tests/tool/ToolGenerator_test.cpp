// The streamed text of generated documents against the same documents built with the library's
// JSON object model.
#include <KOVAMappingServices/KOVAMappingServices.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>

#include "GenerateCommand.h"
#include "Status.h"

namespace kova::tool {
namespace {

// The document built with Put operations: root "version", "References" and, in version 6,
// "RefInstances"; "Instances" on references when there are instances.
std::string ModelText(const GeneratorOptions& options) {
  DocumentGenerator generator(options);
  std::vector<Field> fields;
  const auto put = [&](ZANOmxJsonObject& object) {
    for (const Field& field : fields) {
      const ZANUnicodeString key(field.key);
      if (const auto* text = std::get_if<std::string_view>(&field.value)) {
        object.PutString(key, ZANUnicodeString(*text));
      } else {
        object.PutBoolean(key, std::get<bool>(field.value));
      }
    }
  };
  ZANOmxJsonObject root;
  root.PutInteger("version", options.version);
  if (options.version == 6) {
    ZANOmxJsonObject references;
    ZANOmxJsonObject refInstances;
    bool anyReference = false;
    generator.Generate(
        [&](const GeneratedObject& reference) {
          FieldsOf(reference, 6, false, fields);
          ZANOmxJsonObject object;
          put(object);
          references.PutJsonObject(ZANUnicodeString(reference.kovaId), object);
          anyReference = true;
        },
        [&](const GeneratedObject& instance) {
          FieldsOf(instance, 6, true, fields);
          ZANOmxJsonObject object;
          put(object);
          refInstances.PutJsonObject(ZANUnicodeString(instance.kovaId), object);
        });
    root.PutJsonObject("References", references);
    if (anyReference) root.PutJsonObject("RefInstances", refInstances);
  } else {
    ZANOmxJsonArray references;
    std::optional<ZANOmxJsonObject> current;
    ZANOmxJsonArray instances;
    const auto close = [&] {
      if (!current) return;
      if (instances.Length() > 0) current->PutJsonArray("Instances", instances);
      references.PutJsonObject(*current);
    };
    generator.Generate(
        [&](const GeneratedObject& reference) {
          close();
          FieldsOf(reference, options.version, false, fields);
          current.emplace();
          put(*current);
          instances = ZANOmxJsonArray();
        },
        [&](const GeneratedObject& instance) {
          FieldsOf(instance, options.version, true, fields);
          ZANOmxJsonObject object;
          put(object);
          instances.PutJsonObject(object);
        });
    close();
    root.PutJsonArray("References", references);
  }
  return root.ToString().ConvertToChar();
}

std::string StreamedText(const GeneratorOptions& options, int* pieces = nullptr) {
  std::string text;
  WriteGeneratedDocument(options, [&](std::string_view piece) {
    text.append(piece);
    if (pieces != nullptr) ++*pieces;
  });
  return text;
}

class ToolGeneratorText : public ::testing::TestWithParam<std::tuple<int, int, int>> {};

TEST_P(ToolGeneratorText, IsTheJsonModelsTextForTheSameMembers) {
  const auto [version, references, instances] = GetParam();
  for (const std::uint32_t seed : {1u, 2u, 4000000000u}) {
    GeneratorOptions options;
    options.version = version;
    options.references = references;
    options.instances = instances;
    options.seed = seed;
    EXPECT_EQ(StreamedText(options), ModelText(options)) << "version " << version << " seed " << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryVersion, ToolGeneratorText,
                         ::testing::Values(std::make_tuple(6, 0, 0), std::make_tuple(6, 1, 0), std::make_tuple(6, 1, 9),
                                           std::make_tuple(7, 0, 3), std::make_tuple(7, 4, 0), std::make_tuple(7, 6, 5),
                                           std::make_tuple(8, 6, 5), std::make_tuple(9, 6, 5),
                                           std::make_tuple(10, 6, 5), std::make_tuple(11, 6, 5),
                                           std::make_tuple(12, 1, 1), std::make_tuple(12, 6, 5)));

TEST(ToolGenerator, StreamsLargeDocumentsInPiecesWithTheSameText) {
  GeneratorOptions options;
  options.references = 60;
  options.instances = 300;  // about 18,000 objects, several pieces
  int pieces = 0;
  const std::string streamed = StreamedText(options, &pieces);
  EXPECT_GT(pieces, 1);
  EXPECT_EQ(streamed, ModelText(options));
}

TEST(ToolGenerator, ReadsBackWithTheCountsAsked) {
  for (int version = 7; version <= 12; ++version) {
    GeneratorOptions options;
    options.version = version;
    options.references = 7;
    options.instances = 4;
    KOVAMappingTable table;
    ASSERT_EQ(
        KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(StreamedText(options)), ZANBaseUnknown(), table),
        S_OK)
        << "version " << version;
    EXPECT_EQ(table.GetReferences().size(), 7u);
    EXPECT_EQ(table.GetInstances().size(), 28u);
    KOVAMappingReference root;
    ASSERT_EQ(table.GetRootReference(root), S_OK);
    EXPECT_EQ(root.GetKOVAID(), ZANUnicodeString("Assembly-1"));
  }
}

TEST(ToolGenerator, RefusesWhatNoDocumentHolds) {
  GeneratorOptions options;
  options.version = 6;
  options.references = 2;
  EXPECT_THROW(DocumentGenerator{options}, ToolError);
  options.version = 13;
  options.references = 1;
  EXPECT_THROW(DocumentGenerator{options}, ToolError);
  options.version = 12;
  options.instances = -1;
  EXPECT_THROW(DocumentGenerator{options}, ToolError);
}

}  // namespace
}  // namespace kova::tool
