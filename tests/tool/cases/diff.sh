# diff: references and instances removed, added, moved and changed, then a summary.

run diff "$EXAMPLES/v12_conveyor.json" "$EXAMPLES/v12_conveyor.envelope"
expect_status 0
expect_no_err
expect_out <<'OUT'
summary: 0 added, 0 removed, 0 moved, 0 changed
OUT

# A later save of the conveyor: RLR-1010.2 removed, RLR-1010.3 and CVR-1040 added, ISO4762-M8x30.2
# moved from FRM-1020 to Motorträger-1030, and three objects changed. Its order differs too, which
# does not count.
cat >later.json <<'JSON'
{"version":12,"References":[
 {"CustomData":"{\"line\":\"L3\",\"plant\":\"Lyon\"}","IsLocal":false,"PlexoId":"prd-92a4f1c7d03e58b6","kOVAId":"CNV-1000","KOVASynchroStamp":"V2:92LLP0o6NEaqv3TXKC56TgVO8VYZhNr/Sx4c8+VJelQ=","Instances":[
  {"kOVAId":"RLR-1010.1","PlexoId":"ins-3b7e0d9a61c2f485","IsLocal":false,"RefId":"RLR-1010","KOVASynchroStamp":"V2:ozhMtBhzQ8kdVyoMMbh8/KP0Z9guhf5A/qGxgX9qIJ8="},
  {"kOVAId":"FRM-1020.1","PlexoId":"ins-5f2d98b04ea7c137","IsLocal":false,"RefId":"FRM-1020","KOVASynchroStamp":"V2:UKTjkCIf+s3Yu/gcvnO1wUFKz4jlQvJN82l6PL+Zc2U="},
  {"kOVAId":"RLR-1010.3","PlexoId":"ins-77aa0d9a61c2f485","IsLocal":false,"RefId":"RLR-1010","KOVASynchroStamp":"V2:ozhMtBhzQ8kdVyoMMbh8/KP0Z9guhf5A/qGxgX9qIJ8="},
  {"kOVAId":"Motorträger-1030.1","PlexoId":"ins-a16c37e8b25f90d4","IsLocal":false,"RefId":"Motorträger-1030","CustomData":"Ausführung rechts","KOVASynchroStamp":"V1:JXO7fwQ8UHHNsQsIOvjeMhDOoU1X9SgLo80qpiPVBE0="}]},
 {"IsLocal":true,"PlexoId":"prd-6e1f03b8c9d2a574","kOVAId":"FRM-1020","KOVASynchroStamp":"V2:l+K8qrR0COnebf/E+fPV+KWKVMszxDFUrWGZpfyTqdM=","Instances":[
  {"kOVAId":"ISO4762-M8x30.1","PlexoId":"ins-c49a7d2e03f8b651","IsLocal":true,"RefId":"ISO4762-M8x30","KOVASynchroStamp":"V1:Tp//4RyYDsInHRhTXJeVqbmpuKx33qY1TQuYaL6EmE4="}]},
 {"IsLocal":true,"PlexoId":"prd-0d6b2e9f47a1c853","kOVAId":"RLR-1010","KOVASynchroStamp":"V1:lbWizidscFWX57pgBewm7p0/T5/FcFAiMwvppWOCl90="},
 {"CustomData":"{\"supplier\":\"in-house\"}","IsLocal":true,"PlexoId":"prd-b8c3a65d1e0f4927","kOVAId":"Motorträger-1030","KOVASynchroStamp":"V2:vJ1jB73zt8BUme4f2E2NFxkgAOVxONx+K+KzMw/GFWg=","Instances":[
  {"kOVAId":"ISO4762-M8x30.2","PlexoId":"ins-28e5b1f6a7c094d3","IsLocal":true,"RefId":"ISO4762-M8x30","KOVASynchroStamp":"V1:gR2eOlrllfTKkwP3SLM4rS5/E3hlUIxUKSbNNfuRB9M="}]},
 {"IsLocal":true,"PlexoId":"prd-1c2d3e4f5a6b7c8d","kOVAId":"CVR-1040","KOVASynchroStamp":"V2:mg6ZEs5kBSikPYMd+PB0UcAcL92vOG71HY+0pEWINz8="}
]}
JSON
run diff "$EXAMPLES/v12_conveyor.json" later.json
expect_status 1
expect_no_err
expect_out <<'OUT'
- instance RLR-1010.2 (in CNV-1000)
+ reference CVR-1040
+ instance RLR-1010.3 (in CNV-1000)
> instance ISO4762-M8x30.2: FRM-1020 -> Motorträger-1030
~ reference RLR-1010: KOVASynchroStamp V2:lbWizidscFWX57pgBewm7p0/T5/FcFAiMwvppWOCl90= -> V1:lbWizidscFWX57pgBewm7p0/T5/FcFAiMwvppWOCl90=
~ instance FRM-1020.1: PlexoId ins-5f2d98b04ea7c136 -> ins-5f2d98b04ea7c137
~ instance Motorträger-1030.1: CustomData "Ausführung links" -> "Ausführung rechts"
summary: 2 added, 1 removed, 1 moved, 3 changed
OUT

# The other way round, from standard input, into a file.
run_stdin later.json diff - "$EXAMPLES/v12_conveyor.json" -o changes.txt
expect_status 1
expect_out </dev/null
expect_file changes.txt <<'OUT'
- reference CVR-1040
- instance RLR-1010.3 (in CNV-1000)
+ instance RLR-1010.2 (in CNV-1000)
> instance ISO4762-M8x30.2: Motorträger-1030 -> FRM-1020
~ reference RLR-1010: KOVASynchroStamp V1:lbWizidscFWX57pgBewm7p0/T5/FcFAiMwvppWOCl90= -> V2:lbWizidscFWX57pgBewm7p0/T5/FcFAiMwvppWOCl90=
~ instance FRM-1020.1: PlexoId ins-5f2d98b04ea7c137 -> ins-5f2d98b04ea7c136
~ instance Motorträger-1030.1: CustomData "Ausführung rechts" -> "Ausführung links"
summary: 1 added, 2 removed, 1 moved, 3 changed
OUT

# Every field of an object in one line; "null" custom data and an empty text are told apart.
printf '%s' '{"version":12,"References":[{"kOVAId":"R1","PlexoId":"P1","IsLocal":false,"KOVASynchroStamp":"V2:AB","Instances":[{"kOVAId":"I1","PlexoId":"P2","IsLocal":false,"RefId":"R9","KOVASynchroStamp":"V1:CD"}]}]}' >a.json
printf '%s' '{"version":12,"References":[{"kOVAId":"R1","PlexoId":"P1","IsLocal":true,"CustomData":"","KOVASynchroStamp":"V2:AB","Instances":[{"kOVAId":"I1","PlexoId":"P3","IsLocal":true,"RefId":"R8","CustomData":"x y","KOVASynchroStamp":"V2:CE"}]}]}' >b.json
run diff a.json b.json
expect_status 1
expect_out <<'OUT'
~ reference R1: IsLocal false -> true, CustomData null -> ""
~ instance I1: PlexoId P2 -> P3, IsLocal false -> true, RefId R9 -> R8, CustomData null -> "x y", KOVASynchroStamp V1:CD -> V2:CE
summary: 0 added, 0 removed, 0 moved, 2 changed
OUT

# Documents of different versions with the same content are equal.
run diff "$EXAMPLES/v8_gearbox.json" "$EXAMPLES/v8_gearbox.json"
expect_status 0
run convert "$EXAMPLES/v8_gearbox.json" -o gearbox12.json
run diff "$EXAMPLES/v8_gearbox.json" gearbox12.json
expect_status 0
expect_out <<'OUT'
summary: 0 added, 0 removed, 0 moved, 0 changed
OUT

# Errors: exit 2.
run diff "$EXAMPLES/v8_gearbox.json" "$EXAMPLES/broken_v11.json"
expect_status 2
expect_out </dev/null
expect_err <<ERR
kova-mapping: $EXAMPLES/broken_v11.json: error 0x80004005: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD KOVASynchroStamp
ERR
run diff missing.json "$EXAMPLES/v8_gearbox.json"
expect_status 2
expect_err <<'ERR'
kova-mapping: missing.json: not found
ERR
run_stdin a.json diff - -
expect_status 2
expect_err <<'ERR'
kova-mapping: -: standard input can be read only once
ERR
run diff a.json
expect_status 2
expect_err <<'ERR'
kova-mapping: NEW is required (run kova-mapping diff --help)
ERR
