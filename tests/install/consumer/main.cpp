// Builds a table through the installed headers and library and checks its dump.
#include <KOVAMappingServices/KOVAMappingServices.h>

#include <iostream>

int main() {
  KOVAMappingTable table;
  KOVAMappingReference root("R1", "P1", "V2:AB", "null", false);
  if (table.AddReference(root) != S_OK) return 1;
  KOVAMappingInstance instance("I1", "P2", "CD", "R1", "null", false);
  if (table.AddInstance(instance, root) != S_OK) return 2;
  KOVAPrivateAccess::GetPrivate(table)->SetVersion(12);
  const ZANUnicodeString expected(
      "{ version:12\n\tReferences:[\n"
      "\t{ kOVAId: R1 PlexoId: P1 IsLocal: false KOVASynchroStamp: V2:AB }\n"
      "\t\tInstances:[\n"
      "\t\t{ kOVAId: I1 PlexoId: P2 IsLocal: false RefId: R1 KOVASynchroStamp: V3:CD }\n"
      "\t\t]\n\t]\n}\n");
  if (!(KOVALogger::ToString(table) == expected)) {
    std::cerr << "unexpected dump:\n" << KOVALogger::ToString(table);
    return 3;
  }
  std::cout << "consumer ok\n";
  return 0;
}
