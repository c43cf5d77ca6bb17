// The attribute set of the stamp benchmark: 20 attributes of mixed types (strings, reals with a
// unit, integers, booleans, times and unset values), shared by the benchmark suite and the
// profiling driver so that both measure the same work.
#ifndef KOVA_BENCH_STAMPATTRIBUTES_H_
#define KOVA_BENCH_STAMPATTRIBUTES_H_

#include <KOVAMappingServices/ZANKnowledge.h>

#include <map>
#include <string>

namespace kova::bench {

inline std::map<ZANUnicodeString, ZANIKnwParm_var> TwentyAttributes() {
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes;
  for (int i = 0; i < 20; ++i) {
    const ZANUnicodeString name("Attr" + std::to_string(100 + i));
    ZANIKnwParm_var parm;
    switch (i % 6) {
      case 0: parm = ZANKnwBuilder::MakeStringParm(ZANUnicodeString("value-" + std::to_string(i))); break;
      case 1: parm = ZANKnwBuilder::MakeRealParm(2.5 * i, true, ZANKnwBuilder::FindType("Mass")); break;
      case 2: parm = ZANKnwBuilder::MakeIntegerParm(-42 * i); break;
      case 3: parm = ZANKnwBuilder::MakeBooleanParm(i % 2); break;
      case 4: parm = ZANKnwBuilder::MakeTimeParm(ZANTime(1700000000 + i)); break;
      default: parm = ZANKnwBuilder::MakeUnsetParm(ZANKnwBuilder::FindType("String")); break;
    }
    attributes.emplace(name, parm);
  }
  return attributes;
}

}  // namespace kova::bench

#endif  // KOVA_BENCH_STAMPATTRIBUTES_H_
