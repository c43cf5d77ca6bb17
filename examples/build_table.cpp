// Builds a small mapping table (a root assembly, a local part, three instances), stores versioned
// synchro stamps, looks objects up and prints the table's dump through the library's logger.
//
// Run with ActivateKOVALogger=1 to see the dump as diagnostic lines.
#include <KOVAMappingServices/KOVAMappingServices.h>

#include <iostream>

int main() {
  KOVAMappingTable table;

  // The root reference (not local) and a local part reference.
  KOVAMappingReference assembly("ASM-100", ZANPLMID_Simple("prd-7f3a"), "V2:3q2+7w==", "null", false);
  KOVAMappingReference bolt("BOLT-M6", "prd-91c0", "V1:mJ8k0A==", "{\"material\":\"steel\"}", true);
  if (table.AddReference(assembly) != S_OK || table.AddReference(bolt) != S_OK) return 1;

  // A second root is refused: a table holds one non-local reference at most.
  KOVAMappingReference other("ASM-200", "prd-0001", "x", "null", false);
  const HRESULT refused = table.AddReference(other);

  // Three bolts in the assembly; each instance names the reference it instantiates.
  for (const char* id : {"BOLT-M6.1", "BOLT-M6.2", "BOLT-M6.3"}) {
    KOVAMappingInstance instance(id, ZANUnicodeString("occ-") + id, "V2:Zm9vYmFy", "BOLT-M6", "null", false);
    if (table.AddInstance(instance, assembly) != S_OK) return 1;
  }

  // A stamp derived from an older CE stamp carries version 0.
  ZANUnicodeString ceDerived;
  if (KOVASynchroStampServices::GetKSSFromCES("CESv1(x'00AF31')", ceDerived) == S_OK) {
    KOVAMappingInstance found;
    if (table.GetInstanceFromKOVAId("BOLT-M6.2", found) == S_OK) found.SetKSStamp(ceDerived);
  }

  KOVAMappingReference root;
  table.GetRootReference(root);
  std::cout << "root: " << root.GetKOVAID() << ", second root refused: " << (refused == E_FAIL ? "yes" : "no")
            << ", objects: " << table.GetContent().size() << "\n";

  const ZANUnicodeString dump = KOVALogger::ToString(table);
  if (KOVALogger::IsActive()) {
    KOVALogger::log(dump, "MappingTable");
  } else {
    std::cout << dump << "(set ActivateKOVALogger to see this as diagnostic lines)\n";
  }
  return 0;
}
