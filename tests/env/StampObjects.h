// Objects and attribute values shared by the stamp computation tests.
#ifndef KOVA_TESTS_ENV_STAMPOBJECTS_H_
#define KOVA_TESTS_ENV_STAMPOBJECTS_H_

#include <KOVAMappingServices/ZANKnowledge.h>

#include <list>
#include <map>

namespace kova::test {

// Expected stamps, each computed outside the library with
//   printf %s 'STAMP TEXT' | openssl dgst -sha256 -binary | base64
// ''
inline constexpr const char* kEmptyTextStamp = "47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU=";
// 'Mass:SET:2.5Name:SET:A1Rev:UNSET:'
inline constexpr const char* kWorkedExampleStamp = "a/3KXSD2G2yh+uHwLnTlDE/yXQhwvfV1JIPkCXlLWfY=";
// 'a:UNSET:b:SET:7'
inline constexpr const char* kUnsetAThenSevenBStamp = "aGfjOMGP5VObG6BplE7Yt7PctTC8kwSIHbZGcg70J0I=";
// 'Mass:SET:2.5'
inline constexpr const char* kMassTwoPointFiveStamp = "Gdns7pQY5ZrnydaCQ6F82yxnyPg2mrK0P0yLE66ZouA=";
// 'Mass:SET:2.5Mass:SET:2.5Name:SET:A1Rev:UNSET:'
inline constexpr const char* kDuplicateMassStamp = "JWP3jI3Lw6JR6EeUuBT8iWQdi8ky4U16HoSyJg/x44U=";
// 'Mass:SET:2.5Missing:SET:A1'
inline constexpr const char* kShiftedByMissingNameStamp = "RdxXyX8vj6QZlfu8IWcb44SnSG9+gIC9CNXv4mu+yaA=";
// printf %s 'Name:SET:Größe' | head -c 14 | ...  (14 characters, 16 bytes: only 14 bytes digested)
inline constexpr const char* kNonAsciiStamp = "LupZU8Ew/rSAAOly9XLILseok2YLXKkNS6EUiLciAbw=";
// 'Name:SET:Größe' digested whole (what the stamp must NOT be)
inline constexpr const char* kNonAsciiWholeBytesStamp = "GuCeomm9Ji//lP/fy7JOoSyMDe3wpww32OqnTBw7d1A=";
// printf 'B:SET:TRUEE:SET:2I:SET:-42L:SET:1\a2\a3R:SET:3.0S:SET:xT:SET:1000' | ...
inline constexpr const char* kEveryKindStamp = "wx4jCQUH38tIZk/0CTB6710/Ss2LeYxqcXp4I/HNheo=";
// 'B:UNSET:a:UNSET:'
inline constexpr const char* kUpperBeforeLowerStamp = "iEp5JpOQWRiSaTPI/BcuieyUFQ79+JkkSzEhjd7Em7k=";

inline ZANIType_var StandardType(const char* name) { return ZANKnwBuilder::FindType(name); }

// Mass (set, real 2.5), Name (set, string A1), Rev (unset string).
inline std::map<ZANUnicodeString, ZANIKnwParm_var> WorkedExampleAttributes() {
  return {{"Mass", ZANKnwBuilder::MakeRealParm(2.5, true, StandardType("Mass"))},
          {"Name", ZANKnwBuilder::MakeStringParm("A1")},
          {"Rev", ZANKnwBuilder::MakeUnsetParm(StandardType("String"))}};
}

inline ZANBaseUnknown_var WorkedExampleObject(const char* typeName = "GRDReference") {
  return ZANKnwBuilder::MakeObject(StandardType(typeName), WorkedExampleAttributes());
}

inline std::list<ZANUnicodeString> WorkedExampleNames() { return {"Mass", "Name", "Rev"}; }

// B, E, I, L, R, S, T: one attribute of every kind, all set.
inline std::map<ZANUnicodeString, ZANIKnwParm_var> EveryKindAttributes() {
  const ZANIList_var list = ZANKnwBuilder::MakeList(
      {ZANKnwBuilder::MakeIntegerParm(1), ZANKnwBuilder::MakeIntegerParm(2), ZANKnwBuilder::MakeIntegerParm(3)});
  return {{"B", ZANKnwBuilder::MakeBooleanParm(1)},      {"E", ZANKnwBuilder::MakeEnumParm(2)},
          {"I", ZANKnwBuilder::MakeIntegerParm(-42)},    {"L", ZANKnwBuilder::MakeListParm(list)},
          {"R", ZANKnwBuilder::MakeRealParm(3.0)},       {"S", ZANKnwBuilder::MakeStringParm("x")},
          {"T", ZANKnwBuilder::MakeTimeParm(ZANTime(1))}};
}

}  // namespace kova::test

#endif  // KOVA_TESTS_ENV_STAMPOBJECTS_H_
