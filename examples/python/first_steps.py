"""kovamapping in a few lines: read a document, look up and change an object, write it back, and
audit a folder of documents. Run: python3 first_steps.py [DOCUMENTS_FOLDER]"""

import pathlib
import sys
import tempfile

import kovamapping

folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent / "documents")

table = kovamapping.read(folder / "v8_gearbox.json")  # any version 6 to 12, plain or enveloped
print(f"version {table.version}, {len(table.references)} references, {len(table)} objects, root {table.root.kova_id}")

shaft = table.find(kova_id="SHF-210")  # a reference, or else an instance, with that id
shaft.stamp = "V2:bmV3IHN0YW1w"  # stored without its prefix, stamp version 2
print(repr(shaft))

with tempfile.TemporaryDirectory() as scratch:
    table.write(pathlib.Path(scratch) / "gearbox.json")  # version 12, written atomically
    again = kovamapping.read(pathlib.Path(scratch) / "gearbox.json")
    print("changes after a round trip:", kovamapping.diff(table, again))

for record in kovamapping.audit(sorted(folder.glob("*.json"))):
    print(f"{record.path.name}: {'ok' if record.ok else '; '.join(record.messages)}")
