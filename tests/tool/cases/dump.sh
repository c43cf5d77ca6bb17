# dump: the library's dump of the table, then one line for each object with custom data.

run dump "$EXAMPLES/v8_gearbox.json"
expect_status 0
expect_no_err
expect_out <<'OUT'
{ version:8
\tReferences:[
\t{ kOVAId: GBX-100 PlexoId: prd-4bdb6e725c26c314 IsLocal: false KOVASynchroStamp: V2:TpuyJsEsVRzXg6LonX8yG6pRY6+PPtbaqmI7y+JEakA= }
\t\tInstances:[
\t\t{ kOVAId: SHF-210.1 PlexoId: ins-156889694c8c0563 IsLocal: false RefId: SHF-210 KOVASynchroStamp: V2:xxyms/yCgzZF/wmCe328gCLHcikstqClUTMoD4KTwks= }
\t\t{ kOVAId: GR-311.1 PlexoId: ins-d6ed27d0e077e337 IsLocal: false RefId: GR-311 KOVASynchroStamp: V2:rrT/9tXtOwREMMc+T+DIe8YEP3LU0TEJxeU4cFFxDBA= }
\t\t{ kOVAId: GR-311.2 PlexoId: ins-02f86720c6bfa270 IsLocal: false RefId: GR-311 KOVASynchroStamp: V1:R2oiVpbPWig93zV+PE/T/RMMZjPuub4Y1w/gydJut+w= }
\t\t]
\t{ kOVAId: SHF-210 PlexoId: prd-66cb07bf2889824d IsLocal: true KOVASynchroStamp: V2:Z8FkxEtjT7IuYBfx5e/Z7vNdiFk5p9PSC7QHsBDVWlY= }
\t\tInstances:[
\t\t{ kOVAId: DIN6885-A6x6x20.1 PlexoId: ins-0089adb2ddf37e7e IsLocal: true RefId: DIN6885-A6x6x20 KOVASynchroStamp: V1:pFsYrkDvbRy+xEdmQndWpP3Eh147wfsu2HMY3sc1UlI= }
\t\t]
\t{ kOVAId: GR-311 PlexoId: prd-e4d206b0eb78709b IsLocal: true KOVASynchroStamp: V2:380YozKr8Sg7YT9vmk0xpnXOAy198rLpN4vwq6a15qE= }
\t]
}
custom GBX-100: {"project":"P-7731","owner":"design-office-2"}
custom GR-311.2: mirrored
OUT

# Version 6 objects have empty custom data (shown), and a CE stamp alone gives the stamp derived
# from it, stamp version 0.
derived="$(printf '%s' "cestampCESv1(x'd4bf9f590afe8d12624cb0b9b37ef9478f673e83')" | digest64)"
run_stdin "$EXAMPLES/v6_bracket.json" dump -
expect_status 0
expect_out <<OUT
{ version:6
\tReferences:[
\t{ kOVAId: BRK-2041 PlexoId: prd-bd3803810935aa52 IsLocal: false KOVASynchroStamp: V2:hLNQhn6cBoKw3TE17sDpbsYmcW7k1mg3yz4m5OU6rAY= }
\t\tInstances:[
\t\t{ kOVAId: ISO4762-M6x20.1 PlexoId: ins-40c0771df085b79e IsLocal: false RefId: ISO4762-M6x20 KOVASynchroStamp: V1:+lLqMTFPzdEUXwpERWFfrDhL1tbL0EkhLwOR3yZgNU0= }
\t\t{ kOVAId: ISO4762-M6x20.2 PlexoId: ins-a3ffe502a675e983 IsLocal: false RefId: ISO4762-M6x20 KOVASynchroStamp: V0:$derived }
\t\t]
\t]
}
custom BRK-2041: 
custom ISO4762-M6x20.1: 
custom ISO4762-M6x20.2: 
OUT

# A failed read: what was read, the error on standard error, exit 1.
run dump -o dumped.txt "$EXAMPLES/broken_v11.json"
expect_status 1
expect_out </dev/null
expect_err <<ERR
kova-mapping: $EXAMPLES/broken_v11.json: error 0x80004005: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD KOVASynchroStamp
ERR
expect_file dumped.txt <<'OUT'
{ version:11
\tReferences:[
\t{ kOVAId: TBL-300 PlexoId: prd-f3b6e0a4c7d1289e IsLocal: false KOVASynchroStamp: V2:mg6ZEs5kBSikPYMd+PB0UcAcL92vOG71HY+0pEWINz8= }
\t\tInstances:[
\t\t{ kOVAId: LEG-310.1 PlexoId: ins-9d0c4b7f2e8a1653 IsLocal: false RefId: LEG-310 KOVASynchroStamp: V2:hLNQhn6cBoKw3TE17sDpbsYmcW7k1mg3yz4m5OU6rAY= }
\t\t]
\t]
}
OUT

run dump "$DOCS/malformed.json"
expect_status 1
expect_out <<'OUT'
{ version:12
\tReferences:[
\t]
}
OUT
expect_err <<ERR
kova-mapping: $DOCS/malformed.json: error 0x8007000D: invalid data (malformed JSON or base64)
ERR

# Custom data stays on its line: control characters are shown as \u00XX.
printf '%s' '{"version":12,"References":[{"kOVAId":"R1","PlexoId":"P1","IsLocal":false,"KOVASynchroStamp":"V2:AB","CustomData":"line 1\nline 2\tend"}]}' >multiline.json
run dump multiline.json
expect_status 0
expect_out <<'OUT'
{ version:12
\tReferences:[
\t{ kOVAId: R1 PlexoId: P1 IsLocal: false KOVASynchroStamp: V2:AB }
\t]
}
custom R1: line 1\u000Aline 2\u0009end
OUT

run dump missing.json
expect_status 1
expect_out </dev/null
expect_err <<'ERR'
kova-mapping: missing.json: not found
ERR
