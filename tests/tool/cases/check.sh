# check: one line a document, exit 0 when all read, 1 otherwise.

cd "$EXAMPLES" || exit 1
run check v6_bracket.json v8_gearbox.json v10_pump.json v12_conveyor.json v12_conveyor.envelope
expect_status 0
expect_no_err
expect_out <<'OUT'
v6_bracket.json: ok, version 6, 1 references, 2 instances, root BRK-2041
v8_gearbox.json: ok, version 8, 3 references, 4 instances, root GBX-100
v10_pump.json: ok, version 10, 2 references, 2 instances, root PMP-500
v12_conveyor.json: ok, version 12, 4 references, 6 instances, root CNV-1000
v12_conveyor.envelope: ok, version 12, 4 references, 6 instances, root CNV-1000
OUT

run check broken_v11.json v8_gearbox.json
expect_status 1
expect_no_err
expect_out <<'OUT'
broken_v11.json: error 0x80004005: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD KOVASynchroStamp
v8_gearbox.json: ok, version 8, 3 references, 4 instances, root GBX-100
OUT
cd "$WORK" || exit 1

# Standard input, and -o.
run_stdin "$EXAMPLES/v10_pump.json" check -
expect_status 0
expect_out <<'OUT'
-: ok, version 10, 2 references, 2 instances, root PMP-500
OUT

cd "$EXAMPLES" || exit 1
run check -o "$WORK/result.txt" v6_bracket.json
expect_status 0
expect_out </dev/null
cd "$WORK" || exit 1
expect_file result.txt <<'OUT'
v6_bracket.json: ok, version 6, 1 references, 2 instances, root BRK-2041
OUT

# Every failure of the reader, with the library's status and messages.
cd "$DOCS" || exit 1
run check malformed.json empty.json blank.json array_root.json no_version.json version_string.json version_5.json \
  version_13.json v12_no_references.json v12_references_object.json v12_instance_missing_refid.json \
  v12_reference_missing_ids.json v7_instance_missing_plexoid.json v6_two_references.json v12_empty_references.json \
  bom_v12.json
expect_status 1
expect_no_err
expect_out <<'OUT'
malformed.json: error 0x8007000D: invalid data (malformed JSON or base64)
empty.json: error 0x80004005: KOVA JSON EMPTY OR INVALID
blank.json: error 0x80004005: KOVA JSON EMPTY OR INVALID
array_root.json: error 0x80004005: KOVA JSON EMPTY OR INVALID
no_version.json: error 0x80070490: CANNOT READ VERSION ON KOVA JSON
version_string.json: error 0x8007065D: CANNOT READ VERSION ON KOVA JSON
version_5.json: error 0x80004005: UNSUPPORTED VERSION ( version < 6 )
version_13.json: error 0x80004005: UNSUPPORTED VERSION ( version > 11 )
v12_no_references.json: error 0x80004005: document rejected
v12_references_object.json: error 0x8007065D: wrong type ("References", "Instances" or one of their elements)
v12_instance_missing_refid.json: error 0x80004005: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD RefId
v12_reference_missing_ids.json: error 0x80004005: UNVALUATED MANDATORY FIELD KOVASynchroStamp; UNVALUATED MANDATORY FIELD PlexoId; UNVALUATED MANDATORY FIELD kOVAId
v7_instance_missing_plexoid.json: error 0x80004005: UNVALUATED MANDATORY FIELD PlexoId; PROBLEM PARSING INSTANCES
v6_two_references.json: error 0x80004005: document rejected
v12_empty_references.json: ok, version 12, 0 references, 0 instances, no root
bom_v12.json: ok, version 12, 1 references, 1 instances, root Réf-1
OUT
cd "$WORK" || exit 1

# Envelopes that do not open: the reader then parses what is left of the text.
sed 's/^V12:2144:/V12:100:/' "$EXAMPLES/v12_conveyor.envelope" >small.envelope
printf 'V12:64:%s' "$(printf 'not a zlib stream' | base64 -w0)" >baddata.envelope
printf 'V12:99999999999:eJwDAAAAAAE=' >huge.envelope
run check small.envelope baddata.envelope huge.envelope
expect_status 1
expect_out <<'OUT'
small.envelope: error 0x8007000D: DECOMPRESSION; ZANZ_E_INSUFFICIENTBUFFER
baddata.envelope: error 0x8007000D: DECOMPRESSION; ZANZ_E_BADDATA
huge.envelope: error: the envelope's size field is out of range (above 2147483647)
OUT

# Inputs that are not readable documents: one line on standard error each, and the others still
# checked.
mkdir folder
printf '{"version": 12, "References": [], "note": "caf\xe9"}' >latin1.json
run check missing.json folder latin1.json "$EXAMPLES/v10_pump.json"
expect_status 1
expect_out <<OUT
$EXAMPLES/v10_pump.json: ok, version 10, 2 references, 2 instances, root PMP-500
OUT
expect_err <<'ERR'
kova-mapping: missing.json: not found
kova-mapping: folder: is a directory
kova-mapping: latin1.json: not UTF-8 (invalid byte at offset 46)
ERR

if [ "$(id -u)" -ne 0 ]; then
  cp "$EXAMPLES/v10_pump.json" locked.json
  chmod 000 locked.json
  run check locked.json
  expect_status 1
  expect_err <<'ERR'
kova-mapping: locked.json: permission denied
ERR
fi

run_stdin "$EXAMPLES/v10_pump.json" check - -
expect_status 1
expect_out <<'OUT'
-: ok, version 10, 2 references, 2 instances, root PMP-500
OUT
expect_err <<'ERR'
kova-mapping: -: standard input can be read only once
ERR

# With "ActivateKOVALogger" set by the user, the library's own lines still reach standard output.
printf '{"version":12,"References":[{"kOVAId":"R1","PlexoId":"P1","IsLocal":false}]}' >nostamp.json
ActivateKOVALogger= run check nostamp.json
expect_status 1
expect_no_err
expect_out <<'OUT'
[PrdKOVALog][Input Mapping Table JSON String]{
    "version": 12,
    "References": [
        {
            "kOVAId": "R1",
            "PlexoId": "P1",
            "IsLocal": false
        }
    ]
}
[PrdKOVALog][UNVALUATED MANDATORY FIELD]KOVASynchroStamp
[PrdKOVALog][MappingTable at the end of parsing]{ version:12
\tReferences:[
\t]
}

nostamp.json: error 0x80004005: UNVALUATED MANDATORY FIELD KOVASynchroStamp
OUT
