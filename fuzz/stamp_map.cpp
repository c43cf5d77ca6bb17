// The map form of ComputeKOVASynchroStamp with fuzzed names and parameters of every kind (set and
// unset, lists, foreign types, null handles and null values). Stamp computation is allowed only
// when "DONOTUSE_ENABLEKSSGEN" is in the environment when the library loads: the target sets it
// and starts itself again when it is missing.
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnowledge.h>

#include <unistd.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "fuzz/FuzzSupport.h"

namespace {

const char* const kTypeNames[] = {"String", "Integer", "Real",   "Boolean",     "Time",         "Enumeration",
                                  "List",   "Mass",    "Length", "GRDInstance", "GRDReference", "NoSuchType"};

ZANIType_var Type(kova::fuzz::Reader& reader) {
  const std::uint8_t pick = reader.Byte();
  if (pick % 16 >= std::size(kTypeNames)) return nullptr;
  return ZANKnwBuilder::FindType(kTypeNames[pick % 16]);
}

ZANIKnwValue_var Value(kova::fuzz::Reader& reader) {
  switch (reader.Byte() % 7) {
    case 0: return ZANKnwBuilder::MakeStringValue(ZANUnicodeString(reader.Text(64)));
    case 1: return ZANKnwBuilder::MakeIntegerValue(reader.Int32());
    case 2: return ZANKnwBuilder::MakeRealValue(reader.Double());
    case 3: return ZANKnwBuilder::MakeBooleanValue(static_cast<ZANKnw::Boolean>(reader.Int32()));
    case 4: return ZANKnwBuilder::MakeTimeValue(ZANTime(reader.Int32()));
    case 5: return ZANKnwBuilder::MakeObjectValue(nullptr);
    default: return nullptr;
  }
}

ZANIKnwParm_var Parm(kova::fuzz::Reader& reader, int depth);

ZANIList_var List(kova::fuzz::Reader& reader, int depth) {
  std::vector<ZANBaseUnknown_var> elements;
  const int count = reader.Byte() % 5;
  for (int i = 0; i < count; ++i) {
    if (reader.Byte() % 8 == 0) {
      elements.push_back(nullptr);
    } else {
      elements.push_back(Parm(reader, depth + 1));
    }
  }
  return ZANKnwBuilder::MakeList(elements);
}

ZANIKnwParm_var Parm(kova::fuzz::Reader& reader, int depth) {
  const bool isSet = reader.Byte() % 4 != 0;
  switch (reader.Byte() % 11) {
    case 0: return ZANKnwBuilder::MakeStringParm(ZANUnicodeString(reader.Text(64)), isSet);
    case 1: return ZANKnwBuilder::MakeIntegerParm(reader.Int32(), isSet);
    case 2: return ZANKnwBuilder::MakeRealParm(reader.Double(), isSet, Type(reader));
    case 3: return ZANKnwBuilder::MakeBooleanParm(static_cast<ZANKnw::Boolean>(reader.Int32()), isSet);
    case 4: return ZANKnwBuilder::MakeTimeParm(ZANTime(reader.Int32()), isSet);
    case 5: return ZANKnwBuilder::MakeEnumParm(reader.Int32(), isSet, Type(reader));
    case 6:
      if (depth > 2) return nullptr;
      return ZANKnwBuilder::MakeListParm(List(reader, depth), isSet);
    case 7: return ZANKnwBuilder::MakeUnsetParm(Type(reader));
    case 8: return ZANKnwBuilder::MakeParm(Type(reader), Value(reader), isSet);
    case 9: return ZANKnwBuilder::MakeStringParm(ZANUnicodeString(reader.Text(64)), isSet, Type(reader));
    default: return nullptr;
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  if (std::getenv("DONOTUSE_ENABLEKSSGEN") == nullptr) {
    setenv("DONOTUSE_ENABLEKSSGEN", "1", 1);
    unsetenv("ActivateKOVALogger");
    execv("/proc/self/exe", *argv);
    kova::fuzz::Fail("could not start again with stamp computation enabled");
  }
  (void)argc;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kova::fuzz::Reader reader(data, size);
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes;
  bool hasNull = false;
  const int count = reader.Byte() % 9;
  for (int i = 0; i < count && !reader.Empty(); ++i) {
    ZANUnicodeString name(reader.Text(32));
    ZANIKnwParm_var parm = Parm(reader, 0);
    attributes[name] = parm;
  }
  for (const auto& [name, parm] : attributes) hasNull = hasNull || !parm;

  ZANUnicodeString stamp = "untouched";
  HRESULT status = S_OK;
  try {
    status = KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp);
  } catch (const ZANNullVarError&) {
    // A null value object inside a parameter: the platform's null-handle error, which the
    // computation does not catch.
    kova::fuzz::Check(stamp == ZANUnicodeString("untouched"), "a raised computation changed the stamp");
    return 0;
  }
  if (hasNull) {
    kova::fuzz::Check(status == E_FAIL, "a null parameter handle did not give E_FAIL");
  } else {
    kova::fuzz::Check(status == S_OK, "a map of parameters did not give a stamp");
  }
  if (status == S_OK) {
    kova::fuzz::Check(stamp.GetLengthInByte() == 44, "a stamp is not a base64 SHA-256 digest");
  } else {
    kova::fuzz::Check(stamp == ZANUnicodeString("untouched"), "a failed computation changed the stamp");
  }
  return 0;
}
