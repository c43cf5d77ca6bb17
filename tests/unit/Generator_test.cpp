// The shared generator of synthetic content (generator/): its counts, its determinism, the texts
// the round-trip tests rely on, and documents the library reads and writes back as they are.
#include <KOVAGenerator/DocumentText.h>
#include <KOVAGenerator/Table.h>
#include <KOVAMappingServices/KOVAMappingParser.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace {

using kova::generator::GeneratedObject;
using kova::generator::Options;
using kova::generator::Shape;
using kova::generator::Texts;

struct Counts {
  std::int64_t references = 0;
  std::vector<std::int64_t> instances;  // under each reference
};

Counts CountsOf(const Options& options) {
  Counts counts;
  kova::generator::Generator(options).Generate(
      [&](const GeneratedObject&) {
        ++counts.references;
        counts.instances.push_back(0);
      },
      [&](const GeneratedObject&) { ++counts.instances.back(); });
  return counts;
}

std::string Text(const Options& options) {
  std::string text;
  kova::generator::WriteDocument(options, [&](std::string_view piece) { text.append(piece); });
  return text;
}

TEST(Generator, ShapesHoldTheirCounts) {
  Options grid;
  grid.references = 3;
  grid.instances = 4;
  EXPECT_EQ(CountsOf(grid).instances, (std::vector<std::int64_t>{4, 4, 4}));
  EXPECT_EQ(CountsOf(kova::generator::BenchmarkDocument(Shape::kOneReference, 25, 1)).instances,
            (std::vector<std::int64_t>{24}));
  EXPECT_EQ(CountsOf(kova::generator::BenchmarkDocument(Shape::kTenPerReference, 25, 1)).instances,
            (std::vector<std::int64_t>{10, 10, 2}));
  EXPECT_EQ(CountsOf(kova::generator::BenchmarkDocument(Shape::kTenPerReference, 0, 1)).instances,
            (std::vector<std::int64_t>{0}));
  std::set<std::int64_t> references;
  std::set<std::int64_t> instances;
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    const Counts drawn = CountsOf(kova::generator::HostileTable(seed, 4, 3));
    references.insert(drawn.references);
    instances.insert(drawn.instances.begin(), drawn.instances.end());
  }
  EXPECT_EQ(references, (std::set<std::int64_t>{0, 1, 2, 3, 4}));
  EXPECT_EQ(instances, (std::set<std::int64_t>{0, 1, 2, 3}));
}

TEST(Generator, TheSameOptionsGiveTheSameTextAndAnotherSeedAnother) {
  for (const Texts texts : {Texts::kParts, Texts::kNumbered, Texts::kHostile}) {
    Options options;
    options.references = 5;
    options.instances = 4;
    options.texts = texts;
    const std::string first = Text(options);
    EXPECT_EQ(Text(options), first);
    options.seed = 2;
    EXPECT_NE(Text(options), first);
  }
}

TEST(Generator, RefusesWhatNoDocumentHolds) {
  const auto option = [](const Options& options) {
    try {
      kova::generator::Check(options);
    } catch (const kova::generator::BadOptions& error) {
      return error.option() + ": " + error.what();
    }
    return std::string("accepted");
  };
  Options options;
  EXPECT_EQ(option(options), "accepted");
  options.version = 5;
  EXPECT_EQ(option(options), "version: documents have versions 6 to 12, not 5");
  options.version = 6;
  options.references = 2;
  EXPECT_EQ(option(options), "references: a version 6 document holds at most one reference");
  EXPECT_EQ(option(kova::generator::BenchmarkDocument(Shape::kTenPerReference, -1, 1)),
            "objects: the count cannot be negative");
  options = kova::generator::BenchmarkDocument(Shape::kTenPerReference, 12, 1);
  options.version = 6;
  EXPECT_EQ(option(options), "references: a version 6 document holds at most one reference");
  EXPECT_THROW(kova::generator::Generator{options}, kova::generator::BadOptions);
}

// What the round-trip tests count on: escapes, U+0000, characters of every UTF-8 length, ids that
// collide, stamps of versions 0 to 9, custom data none, empty and text.
TEST(Generator, HostileTextsMixEverythingRoundTripsMustKeep) {
  std::set<std::string> seen;
  std::set<char> stampVersions;
  int refused = 0;
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    const Options options = kova::generator::HostileTable(seed, 8, 6);
    const auto note = [&](const GeneratedObject& object) {
      for (const std::string& id : {object.kovaId, object.plexoId}) {
        if (id.find('\0') != std::string::npos) seen.insert("NUL");
        if (id.find('"') != std::string::npos) seen.insert("quote");
        if (id.find('\\') != std::string::npos) seen.insert("backslash");
        if (id.find('\n') != std::string::npos) seen.insert("line feed");
        if (id.find("\xC3\xA9") != std::string::npos) seen.insert("two bytes");
        if (id.find("\xE2\x82\xAC") != std::string::npos) seen.insert("three bytes");
        if (id.find("\xF0\x9F\x98\x80") != std::string::npos) seen.insert("four bytes");
      }
      ASSERT_GE(object.stamp.size(), 4u) << object.stamp;
      EXPECT_EQ(object.stamp.substr(0, 1) + object.stamp.substr(2, 1), "V:") << object.stamp;
      stampVersions.insert(object.stamp[1]);
      seen.insert(object.customData == "null" ? "no custom data"
                  : object.customData.empty() ? "empty custom data"
                                              : "custom data");
    };
    kova::generator::Generator(options).Generate(note, note);
    const kova::generator::GeneratedTable table = kova::generator::BuildTable(options);
    refused += table.refusedReferences + table.refusedInstances;
  }
  EXPECT_EQ(seen, (std::set<std::string>{"NUL", "quote", "backslash", "line feed", "two bytes", "three bytes",
                                         "four bytes", "no custom data", "empty custom data", "custom data"}));
  EXPECT_EQ(stampVersions.size(), 10u);
  EXPECT_GT(refused, 50);  // ids collide
}

// The benchmark documents are the text the library's own writer gives for what it reads from them,
// and list every instance and reference id they hold.
TEST(Generator, NumberedDocumentsAreTheWritersText) {
  for (const Shape shape : {Shape::kOneReference, Shape::kTenPerReference}) {
    const kova::generator::GeneratedDocument document =
        kova::generator::MakeDocument(kova::generator::BenchmarkDocument(shape, 500, 12345));
    KOVAMappingTable table;
    ASSERT_EQ(KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(document.text), ZANBaseUnknown(), table),
              S_OK);
    EXPECT_EQ(KOVAMappingParser::TranslateToString(table).View(), document.text);
    EXPECT_EQ(document.objects, 500u);
    EXPECT_EQ(table.GetInstances().size(), document.instanceKovaIds.size());
    EXPECT_EQ(table.GetReferences().size(), document.referencePlexoIds.size());
    KOVAMappingInstance instance;
    EXPECT_EQ(table.GetInstanceFromKOVAId(ZANUnicodeString(document.instanceKovaIds.back()), instance), S_OK);
    KOVAMappingReference reference;
    EXPECT_EQ(table.GetReferenceFromPlexoId(ZANUnicodeString(document.referencePlexoIds.back()), reference), S_OK);
  }
}

}  // namespace
