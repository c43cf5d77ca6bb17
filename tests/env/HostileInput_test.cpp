// Hostile mapping documents read with TranslateToMappingTable: every one gets the status its
// failure table names (or the size field's conversion failure), and the table is left in the state
// the reader promises. Small documents are in tests/data/hostile; large ones (50 MB strings,
// 100,000 levels of nesting, zlib bombs, huge declared sizes) are made here.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <gtest/gtest.h>
#include <zlib.h>

#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/env/EnvelopeTestUtil.h"
#include "tests/support/TestData.h"

namespace {

using kova::test::ReadDataFile;

constexpr int kUntouchedVersion = -42;

enum class Raises { Nothing, OutOfRange, InvalidArgument };

// What reading a document must give. version is the version the table records afterwards
// (kUntouchedVersion when the reader did not get as far as recording one).
struct Outcome {
  HRESULT status = S_OK;
  Raises raises = Raises::Nothing;
  bool ownerSet = false;
  int version = kUntouchedVersion;
  std::size_t references = 0;
  // Further checks of the table (ids, custom data) where they matter.
  std::function<void(KOVAMappingTable&)> check;
};

struct HostileCase {
  std::string name;
  std::function<std::string()> text;
  Outcome outcome;
};

void PrintTo(const HostileCase& c, std::ostream* out) { *out << c.name; }

// Outcomes named after the failure tables.
Outcome Untouched(HRESULT status) { return Outcome{status, Raises::Nothing, false, kUntouchedVersion, 0, {}}; }
Outcome NotLoaded() { return Untouched(ZAN_E_INVALIDDATA); }  // LoadFromString refuses it
Outcome EmptyOrNotObject() { return Untouched(E_FAIL); }      // "KOVA JSON EMPTY OR INVALID"
Outcome Raising(Raises raises) { return Outcome{S_OK, raises, false, kUntouchedVersion, 0, {}}; }
Outcome VersionUnreadable(HRESULT getter) { return Outcome{getter, Raises::Nothing, true, kUntouchedVersion, 0, {}}; }
Outcome Refused(HRESULT status, int version, std::size_t references = 0) {
  return Outcome{status, Raises::Nothing, true, version, references, {}};
}
Outcome Read(int version, std::size_t references, std::function<void(KOVAMappingTable&)> check = {}) {
  return Outcome{S_OK, Raises::Nothing, true, version, references, std::move(check)};
}

KOVAMappingReference FirstReference(KOVAMappingTable& table) { return table.GetReferences().front(); }

std::function<void(KOVAMappingTable&)> KovaIdIs(std::string expected) {
  return [expected = std::move(expected)](KOVAMappingTable& table) {
    EXPECT_EQ(FirstReference(table).GetKOVAID().ConvertToChar(), expected);
  };
}

// An id made of prefix and then one or more U+FFFD: what an ill-formed UTF-8 sequence becomes.
std::function<void(KOVAMappingTable&)> ReplacedAfter(std::string prefix, bool plexoId = false) {
  return [prefix = std::move(prefix), plexoId](KOVAMappingTable& table) {
    const KOVAMappingReference reference = FirstReference(table);
    const std::string id = (plexoId ? reference.GetPlexoID() : reference.GetKOVAID()).ConvertToChar();
    ASSERT_EQ(id.rfind(prefix, 0), 0u) << id;
    const std::string rest = id.substr(prefix.size());
    ASSERT_FALSE(rest.empty());
    ASSERT_EQ(rest.size() % 3, 0u) << id;
    for (std::size_t i = 0; i < rest.size(); i += 3) EXPECT_EQ(rest.substr(i, 3), "\xEF\xBF\xBD") << id;
  };
}

const std::string kRef = R"({"kOVAId":"R","PlexoId":"P","IsLocal":false,"KOVASynchroStamp":"V1:s"})";

std::string Doc12(const std::string& references, const std::string& extra = "") {
  return R"({"version":12,)" + extra + R"("References":[)" + references + "]}";
}

// The document of the truncation cases: every kind of structural point of a version 12 document.
const std::string kFull =
    R"({"version":12,"References":[{"kOVAId":"R1","PlexoId":"P1","IsLocal":false,"CustomData":"c d",)"
    R"("KOVASynchroStamp":"V2:abc","Instances":[{"kOVAId":"I1","PlexoId":"PI1","IsLocal":true,"RefId":"R1",)"
    R"("KOVASynchroStamp":"V1:def"}]}]})";

// The zlib stream of text, made with zlib itself at its default level.
std::string ZlibStream(const std::string& text) {
  uLongf length = compressBound(text.size());
  std::string compressed(length, '\0');
  if (compress(reinterpret_cast<Bytef*>(compressed.data()), &length, reinterpret_cast<const Bytef*>(text.data()),
               text.size()) != Z_OK) {
    throw std::runtime_error("zlib compress failed");
  }
  compressed.resize(length);
  return compressed;
}

std::string Envelope(const std::string& text, const std::string& declaredSize, const std::string& version = "12") {
  return kova::test::MakeEnvelope(version, declaredSize, ZlibStream(text));
}

std::string Envelope(const std::string& text) { return Envelope(text, std::to_string(text.size())); }

const std::string kOneRef = Doc12(kRef);
constexpr std::size_t k50MB = std::size_t{50} * 1024 * 1024;

std::vector<HostileCase> FileCases() {
  const auto file = [](const std::string& name) { return [name] { return ReadDataFile("hostile/" + name); }; };
  return {
      {"bom_twice", file("bom_twice.json"), NotLoaded()},
      {"bom_only", file("bom_only.json"), EmptyOrNotObject()},
      {"bom_inside", file("bom_inside.json"), NotLoaded()},
      {"bom_utf16le", file("bom_utf16le.json"), NotLoaded()},
      {"bom_then_blank", file("bom_then_blank.json"), EmptyOrNotObject()},
      {"nul_first", file("nul_first.json"), NotLoaded()},
      {"nul_after", file("nul_after.json"), NotLoaded()},
      {"nul_in_key", file("nul_in_key.json"), NotLoaded()},
      {"nul_in_value", file("nul_in_value.json"), NotLoaded()},
      {"nul_escaped_in_id", file("nul_escaped_in_id.json"),
       Read(12, 1,
            KovaIdIs(std::string("R\0"
                                 "1",
                                 3)))},
      {"duplicate_version", file("duplicate_version.json"), Read(12, 0)},
      {"duplicate_version_last_bad", file("duplicate_version_last_bad.json"), VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"duplicate_references", file("duplicate_references.json"), Read(12, 1, KovaIdIs("R"))},
      {"duplicate_islocal_last_string", file("duplicate_islocal_last_string.json"), Refused(E_FAIL, 12)},
      {"duplicate_kovaid", file("duplicate_kovaid.json"), Read(12, 1, KovaIdIs("second"))},
      {"utf8_key_bad_byte", file("utf8_key_bad_byte.json"), Refused(E_FAIL, 12)},
      {"utf8_value_bad_byte", file("utf8_value_bad_byte.json"), Read(12, 1, ReplacedAfter("R"))},
      {"utf8_value_overlong", file("utf8_value_overlong.json"), Read(12, 1, ReplacedAfter("R"))},
      {"utf8_value_surrogate", file("utf8_value_surrogate.json"), Read(12, 1, ReplacedAfter("R"))},
      {"utf8_value_cut_sequence", file("utf8_value_cut_sequence.json"), Read(12, 1, ReplacedAfter("R"))},
      {"utf8_value_lone_continuation", file("utf8_value_lone_continuation.json"),
       Read(12, 1, ReplacedAfter("P", true))},
      {"utf8_stamp_bad_byte", file("utf8_stamp_bad_byte.json"),
       Read(12, 1,
            [](KOVAMappingTable& table) {
              EXPECT_EQ(KOVAPrivateAccess::GetPrivate(FirstReference(table))->GetKSStamp().ConvertToChar(),
                        "\xEF\xBF\xBD");
              EXPECT_EQ(KOVAPrivateAccess::GetPrivate(FirstReference(table))->GetKSSVersion(), 1);
            })},
      {"utf8_version_key_bad_byte", file("utf8_version_key_bad_byte.json"), VersionUnreadable(ZAN_E_NOTFOUND)},
      {"escape_lone_surrogate", file("escape_lone_surrogate.json"), NotLoaded()},
      // A plain document holding V1:23: in a value: its first six characters go, and what is left
      // is neither base64 nor JSON.
      {"run_in_value", file("run_in_value.json"), NotLoaded()},
      // V7:1: has no size digits at the fixed position 4.
      {"run_in_key", file("run_in_key.json"), Raising(Raises::InvalidArgument)},
      {"one_digit_version_empty_size", file("one_digit_version_empty_size.txt"), Raising(Raises::InvalidArgument)},
      {"size_leading_zeros_zero", file("size_leading_zeros_zero.txt"), NotLoaded()},
      {"size_huge", file("size_huge.txt"), Raising(Raises::OutOfRange)},
      {"size_2147483648", file("size_2147483648.txt"), Raising(Raises::OutOfRange)},
      {"payload_not_base64", file("payload_not_base64.txt"), NotLoaded()},
      // The payload 1234 is left as it was and reads as a number, not an object.
      {"payload_digits", file("payload_digits.txt"), EmptyOrNotObject()},
      {"payload_base64_not_zlib", file("payload_base64_not_zlib.txt"), NotLoaded()},
      // Nothing after the prefix: the empty text that is left loads as an empty object.
      {"prefix_only", file("prefix_only.txt"), EmptyOrNotObject()},
      {"version_negative", file("version_negative.json"), Refused(E_FAIL, -12)},
      {"version_2147483648", file("version_2147483648.json"), VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"version_exponent", file("version_exponent.json"), VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"version_minus_zero", file("version_minus_zero.json"), Refused(E_FAIL, 0)},
      {"version_huge_exponent", file("version_huge_exponent.json"), VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"version_true", file("version_true.json"), VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"version_null", file("version_null.json"), VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"version_leading_zero", file("version_leading_zero.json"), NotLoaded()},
      {"islocal_number", file("islocal_number.json"), Refused(E_FAIL, 12)},
      {"trailing_comma", file("trailing_comma.json"), NotLoaded()},
      {"two_documents", file("two_documents.json"), NotLoaded()},
      {"single_quotes", file("single_quotes.json"), NotLoaded()},
      {"nan_version", file("nan_version.json"), NotLoaded()},
      {"references_null", file("references_null.json"), Refused(ZAN_E_TYPEMISMATCH, 12)},
      {"references_string", file("references_string.json"), Refused(ZAN_E_TYPEMISMATCH, 12)},
      {"instances_null", file("instances_null.json"), Refused(ZAN_E_TYPEMISMATCH, 12)},
      {"v6_references_null", file("v6_references_null.json"), Refused(E_FAIL, 6)},
      {"root_string", file("root_string.json"), EmptyOrNotObject()},
      {"root_number", file("root_number.json"), EmptyOrNotObject()},
      {"root_null", file("root_null.json"), EmptyOrNotObject()},
  };
}

// kFull cut just before and just after each structural character: never loads. Cut to nothing it
// is the empty text.
std::vector<HostileCase> TruncationCases() {
  std::vector<HostileCase> cases;
  std::set<std::size_t> cuts;
  for (std::size_t i = 0; i < kFull.size(); ++i) {
    if (std::string_view("{}[]:,\"").find(kFull[i]) == std::string_view::npos) continue;
    if (i > 0) cuts.insert(i);
    if (i + 1 < kFull.size()) cuts.insert(i + 1);
  }
  cases.reserve(cuts.size());
  for (const std::size_t cut : cuts) {
    cases.push_back({"truncated_at_" + std::to_string(cut), [cut] { return kFull.substr(0, cut); }, NotLoaded()});
  }
  cases.push_back({"truncated_to_nothing", [] { return std::string(); }, EmptyOrNotObject()});
  // The whole text reads: the cuts above are what breaks it.
  cases.push_back({"not_truncated", [] { return kFull; }, Read(12, 1, KovaIdIs("R1"))});
  // An envelope cut inside its payload: the rest of the payload is no JSON.
  for (const int eighth : {1, 3, 5, 7}) {
    cases.push_back({"envelope_truncated_" + std::to_string(eighth) + "_eighths",
                     [eighth] {
                       const std::string envelope = Envelope(kFull);
                       return envelope.substr(0, 12 + (envelope.size() - 12) * eighth / 8);
                     },
                     NotLoaded()});
  }
  return cases;
}

std::vector<HostileCase> GeneratedCases() {
  const std::string digits1000(1000, '7');
  return {
      // Nesting.
      {"nesting_100000_arrays_in_ignored_member",
       [] { return Doc12(kRef, R"("deep":)" + std::string(100000, '[') + std::string(100000, ']') + ","); },
       NotLoaded()},
      {"nesting_100000_objects_at_root",
       [] {
         std::string text;
         for (int i = 0; i < 100000; ++i) text += R"({"a":)";
         return text + "1" + std::string(100000, '}');
       },
       NotLoaded()},
      {"nesting_100000_in_references",
       [] { return R"({"version":12,"References":)" + std::string(100000, '[') + std::string(100000, ']') + "}"; },
       NotLoaded()},
      {"nesting_100000_unclosed", [] { return R"({"version":12,"References":)" + std::string(100000, '['); },
       NotLoaded()},
      {"nesting_5000_in_ignored_member",
       [] { return Doc12(kRef, R"("deep":)" + std::string(5000, '[') + std::string(5000, ']') + ","); },
       Read(12, 1, KovaIdIs("R"))},
      // Numbers of 1,000 digits.
      {"version_1000_digits", [digits1000] { return R"({"version":)" + digits1000 + R"(,"References":[]})"; },
       VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"version_minus_1000_digits", [digits1000] { return R"({"version":-)" + digits1000 + R"(,"References":[]})"; },
       VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"version_1000_decimals", [digits1000] { return R"({"version":12.)" + digits1000 + R"(,"References":[]})"; },
       VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      {"version_1000_leading_zeros",
       [] { return R"({"version":)" + std::string(1000, '0') + R"(12,"References":[]})"; }, NotLoaded()},
      {"number_1000_digits_ignored", [digits1000] { return Doc12(kRef, R"("n":)" + digits1000 + ","); },
       Read(12, 1, KovaIdIs("R"))},
      {"islocal_1000_digits",
       [digits1000] {
         return Doc12(R"({"kOVAId":"R","PlexoId":"P","IsLocal":)" + digits1000 + R"(,"KOVASynchroStamp":"V1:s"})");
       },
       Refused(E_FAIL, 12)},
      {"kovaid_1000_digits",
       [digits1000] {
         return Doc12(R"({"kOVAId":)" + digits1000 + R"(,"PlexoId":"P","IsLocal":false,"KOVASynchroStamp":"V1:s"})");
       },
       Refused(E_FAIL, 12)},
      {"customdata_1000_digits",
       [digits1000] {
         return Doc12(R"({"kOVAId":"R","PlexoId":"P","IsLocal":false,"CustomData":)" + digits1000 +
                      R"(,"KOVASynchroStamp":"V1:s"})");
       },
       Read(12, 1,
            [](KOVAMappingTable& table) { EXPECT_EQ(FirstReference(table).GetCustomData().ConvertToChar(), "null"); })},
      // 50 MB strings.
      {"customdata_50MB",
       [] {
         return Doc12(R"({"kOVAId":"R","PlexoId":"P","IsLocal":false,"CustomData":")" + std::string(k50MB, 'c') +
                      R"(","KOVASynchroStamp":"V1:s"})");
       },
       Read(
           12, 1,
           [](KOVAMappingTable& table) { EXPECT_EQ(FirstReference(table).GetCustomData().GetLengthInByte(), k50MB); })},
      {"kovaid_50MB",
       [] {
         return Doc12(R"({"kOVAId":")" + std::string(k50MB, 'k') +
                      R"(","PlexoId":"P","IsLocal":false,"KOVASynchroStamp":"V1:s"})");
       },
       Read(12, 1,
            [](KOVAMappingTable& table) {
              EXPECT_EQ(FirstReference(table).GetKOVAID().ConvertToChar(), std::string(k50MB, 'k'));
            })},
      {"key_50MB_ignored", [] { return Doc12(kRef, "\"" + std::string(k50MB, 'x') + "\":1,"); },
       Read(12, 1, KovaIdIs("R"))},
      {"string_50MB_unterminated", [] { return R"({"version":12,"References":[],"x":")" + std::string(k50MB, 'u'); },
       NotLoaded()},
      {"version_string_50MB", [] { return R"({"version":")" + std::string(k50MB, '1') + R"(","References":[]})"; },
       VersionUnreadable(ZAN_E_TYPEMISMATCH)},
      // Envelopes and their declared sizes.
      {"envelope_exact_size", [] { return Envelope(kOneRef); }, Read(12, 1, KovaIdIs("R"))},
      {"envelope_size_0", [] { return Envelope(kOneRef, "0"); }, NotLoaded()},
      {"envelope_size_1", [] { return Envelope(kOneRef, "1"); }, NotLoaded()},
      {"envelope_size_one_short", [] { return Envelope(kOneRef, std::to_string(kOneRef.size() - 1)); }, NotLoaded()},
      {"envelope_size_larger", [] { return Envelope(kOneRef, std::to_string(kOneRef.size() + 1000)); },
       Read(12, 1, KovaIdIs("R"))},
      {"envelope_size_2147483647", [] { return Envelope(kOneRef, "2147483647"); }, Read(12, 1, KovaIdIs("R"))},
      {"envelope_size_2147483648", [] { return Envelope(kOneRef, "2147483648"); }, Raising(Raises::OutOfRange)},
      {"envelope_size_1e30", [] { return Envelope(kOneRef, "1" + std::string(30, '0')); }, Raising(Raises::OutOfRange)},
      // One-digit versions: the size is read from position 4, so its first digit is skipped.
      {"envelope_one_digit_version_extra_digit",
       [] { return Envelope(kOneRef, "9" + std::to_string(kOneRef.size()), "9"); }, Read(12, 1, KovaIdIs("R"))},
      {"envelope_one_digit_version_size_cut", [] { return Envelope(kOneRef, std::to_string(kOneRef.size()), "9"); },
       NotLoaded()},
      {"envelope_version_0", [] { return Envelope(kOneRef, "1" + std::to_string(kOneRef.size()), "0"); },
       Read(12, 1, KovaIdIs("R"))},
      // zlib bombs: a small payload that inflates far beyond what it looks like.
      {"zlib_bomb_64MB_declared_max",
       [] { return Envelope(Doc12(kRef, R"("pad":")" + std::string(64u << 20, 'a') + R"(",)"), "2147483647"); },
       Read(12, 1, KovaIdIs("R"))},
      {"zlib_bomb_64MB_declared_small",
       [] { return Envelope(Doc12(kRef, R"("pad":")" + std::string(64u << 20, 'a') + R"(",)"), "1000"); }, NotLoaded()},
      {"zlib_bomb_64MB_blanks", [] { return Envelope(std::string(64u << 20, ' '), std::to_string(64u << 20)); },
       EmptyOrNotObject()},
      // Envelopes in odd places and holding odd texts.
      {"envelope_after_text", [] { return "garbage " + Envelope(kOneRef); }, NotLoaded()},
      {"envelope_then_garbage", [] { return Envelope(kOneRef) + "#garbage"; }, NotLoaded()},
      {"envelope_in_envelope", [] { return Envelope(Envelope(kOneRef)); }, NotLoaded()},
      {"envelope_of_invalid_json", [] { return Envelope(R"({"version":12,"References":[)"); }, NotLoaded()},
      {"envelope_of_empty_text", [] { return Envelope(""); }, NotLoaded()},
      // A stamp whose text after V1: is digits and ":" (as the writer writes it for such a stamp)
      // is an envelope prefix to the reader: out of range when the digits exceed 32 bits.
      {"stamp_looks_like_envelope",
       [] {
         return Doc12(R"({"kOVAId":"R","PlexoId":"P","IsLocal":false,"KOVASynchroStamp":"V1:)" + std::string(40, '1') +
                      R"(:s"})");
       },
       Raising(Raises::OutOfRange)},
      {"envelope_of_version_13", [] { return Envelope(R"({"version":13,"References":[]})"); }, Refused(E_FAIL, 13)},
  };
}

std::vector<HostileCase> AllCases() {
  std::vector<HostileCase> cases = FileCases();
  for (auto&& more : {TruncationCases(), GeneratedCases()}) cases.insert(cases.end(), more.begin(), more.end());
  return cases;
}

class HostileInput : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileInput, GetsItsStatusAndLeavesTheTableAsPromised) {
  const HostileCase& c = GetParam();
  const Outcome& expected = c.outcome;
  KOVAMappingTable table;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(kUntouchedVersion);
  const ZANBaseUnknown owner(std::make_shared<ZANComponent>());

  HRESULT status = S_OK;
  Raises raised = Raises::Nothing;
  {
    std::string text = c.text();
    ZANUnicodeString input(std::move(text));
    try {
      status = KOVAMappingParser::TranslateToMappingTable(std::move(input), owner, table);
    } catch (const std::out_of_range&) {
      raised = Raises::OutOfRange;
    } catch (const std::invalid_argument&) {
      raised = Raises::InvalidArgument;
    }
  }
  ASSERT_EQ(static_cast<int>(raised), static_cast<int>(expected.raises));
  if (raised == Raises::Nothing) {
    EXPECT_EQ(status, expected.status);
  }
  EXPECT_EQ(table.GetOwner() == owner, expected.ownerSet);
  EXPECT_EQ(KOVAPrivateAccess::GetPrivate(table)->GetVersion(), expected.version);
  ASSERT_EQ(table.GetReferences().size(), expected.references);
  if (expected.check) expected.check(table);
}

INSTANTIATE_TEST_SUITE_P(Corpus, HostileInput, ::testing::ValuesIn(AllCases()),
                         [](const ::testing::TestParamInfo<HostileCase>& info) { return info.param.name; });

TEST(HostileInputCorpus, HasAtLeastOneHundredDocuments) { EXPECT_GE(AllCases().size(), 100u); }

}  // namespace
